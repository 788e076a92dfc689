// SPDX-License-Identifier: MIT
#pragma once

#include "QUORPoint3D.h"

class QUORFile;

/// Where the points of a product's grid stand in the scene: point (i, j, k) at `origin` plus i, j and k
/// steps. Scene metres, with the radar at the scene's origin and heights above sea level times the vertical
/// scale.
struct QUORGridPlacement {
    QUORPoint3D origin;
    QUORPoint3D step;

    /// Of a file from which a grid can be built.
    static QUORGridPlacement ofVolume(const QUORFile& file, double verticalScale);
    /// Of a 2D product, whose step upwards is 1.
    static QUORGridPlacement ofLayer(const QUORFile& file, double verticalScale);

    /// Grid coordinates of a place in the scene; whole numbers are points.
    QUORPoint3D toGrid(const QUORPoint3D& scene) const;
    QUORPoint3D toScene(const QUORPoint3D& grid) const;
};
