// SPDX-License-Identifier: MIT
#pragma once

#include "QUORPictureOrder.h"

#include <QJsonObject>
#include <QString>

#include <vector>

/// One product file and the pictures that are wanted of it. Travels to the process that draws as JSON.
struct RenderTask {
    struct Picture {
        QUORPictureOrder order;
        /// The name of a display state preset.
        QString state;
    };

    /// Absolute.
    QString input;
    /// Path of the 2D product, "auto" or "none".
    QString with;
    std::vector<Picture> pictures;

    QJsonObject toJson() const;
    static RenderTask fromJson(const QJsonObject& json);
};
