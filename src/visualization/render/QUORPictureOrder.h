// SPDX-License-Identifier: MIT
#pragma once

#include "QUORExportSettings.h"

#include <QString>

#include <optional>

/// One picture of a scene: from where it is seen, how large it is and where it goes. A plain value.
struct QUORPictureOrder {
    /// A view that is given by angles in place of a preset.
    struct Angles {
        /// Degrees: the direction looked to, clockwise from north, and how far below the horizon.
        double heading = 0.0;
        double pitch = 0.0;
        /// Metres from the site; without it the whole product is in the picture.
        std::optional<double> distance;
    };

    /// Absolute.
    QString path;
    /// The name of a view angle preset.
    QString viewAngle;
    /// The name of a display state preset, for whoever applies it before the scene is built.
    QString displayState;
    std::optional<Angles> angles;
    /// Pixels.
    int width = 0;
    int height = 0;
    QUORExportSettings::OutputFormat format = QUORExportSettings::Tiff;

    // What became of it.

    bool isWritten = false;
    /// Why not, where the reason is known; it is in the log too.
    QString error;
};
