// SPDX-License-Identifier: MIT
#pragma once

#include "QUORPoint3D.h"

#include <QString>

#include <memory>
#include <optional>

/// A named camera position and viewing direction, in scene coordinates (metres), or a direction alone from
/// which every product fits into the picture.
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

    /// A direction to see the whole product from, in place of position and direction.
    struct Fit {
        /// Degrees: the direction looked to, clockwise from north, and how far below the horizon.
        double heading = 0.0;
        double pitch = 40.0;
    };
    const std::optional<Fit>& getFit() const { return _fit; }
    void setFit(const std::optional<Fit>& fit) { _fit = fit; }

    /// To the log, at debug level.
    void printViewAngle() const;

private:
    QString _name;
    QUORPoint3D _cameraPosition;
    QUORPoint3D _cameraDirection;
    std::optional<Fit> _fit;
};
