// SPDX-License-Identifier: MIT
#pragma once

#include "QUORPoint3D.h"

/// The vectors and turns that a camera model is made of.
namespace QUORViewGeometry {

QUORPoint3D operator+(const QUORPoint3D& a, const QUORPoint3D& b);
QUORPoint3D operator-(const QUORPoint3D& a, const QUORPoint3D& b);
QUORPoint3D operator*(const QUORPoint3D& a, double factor);

double length(const QUORPoint3D& a);
/// Of unit length; a zero vector stays as it is.
QUORPoint3D normalised(const QUORPoint3D& a);
/// Shortened to `radius` where it is longer.
QUORPoint3D pulledInside(const QUORPoint3D& a, double radius);
bool isFinite(const QUORPoint3D& a);

struct View {
    QUORPoint3D position;
    QUORPoint3D direction;
};

/// The view rotated by degrees about an axis through a point.
View turned(const View& view, const QUORPoint3D& centre, const QUORPoint3D& axis, double degrees);

} // namespace QUORViewGeometry
