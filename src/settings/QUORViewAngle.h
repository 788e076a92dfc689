// SPDX-License-Identifier: MIT
#pragma once

#include "QUORPoint3D.h"

#include <QString>

#include <memory>

/// A named camera position and viewing direction, in scene coordinates (metres).
class QUORViewAngle {
public:
    using Ptr = std::shared_ptr<QUORViewAngle>;
    using CPtr = std::shared_ptr<const QUORViewAngle>;

    QString getName() const { return _name; }
    void setName(const QString& name) { _name = name; }
    QUORPoint3D getCameraPosition() const { return _cameraPosition; }
    void setCameraPosition(const QUORPoint3D& position) { _cameraPosition = position; }
    QUORPoint3D getCameraDirection() const { return _cameraDirection; }
    void setCameraDirection(const QUORPoint3D& direction) { _cameraDirection = direction; }

    /// To the log, at debug level.
    void printViewAngle() const;

private:
    QString _name;
    QUORPoint3D _cameraPosition;
    QUORPoint3D _cameraDirection;
};
