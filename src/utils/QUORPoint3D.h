// SPDX-License-Identifier: MIT
#pragma once

/// A point or vector in the projected scene, in metres: the radar site at the origin, x east, y north,
/// z up.
struct QUORPoint3D {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    bool operator==(const QUORPoint3D&) const = default;
};
