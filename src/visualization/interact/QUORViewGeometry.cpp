// SPDX-License-Identifier: MIT
#include "QUORViewGeometry.h"

#include <vtkNew.h>
#include <vtkTransform.h>

#include <array>
#include <cmath>

namespace QUORViewGeometry {

QUORPoint3D operator+(const QUORPoint3D& a, const QUORPoint3D& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

QUORPoint3D operator-(const QUORPoint3D& a, const QUORPoint3D& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

QUORPoint3D operator*(const QUORPoint3D& a, double factor) {
    return {a.x * factor, a.y * factor, a.z * factor};
}

double length(const QUORPoint3D& a) {
    return std::hypot(a.x, a.y, a.z);
}

QUORPoint3D normalised(const QUORPoint3D& a) {
    const double size = length(a);
    return size > 0.0 ? a * (1.0 / size) : a;
}

QUORPoint3D pulledInside(const QUORPoint3D& a, double radius) {
    const double size = length(a);
    return size > radius ? a * (radius / size) : a;
}

bool isFinite(const QUORPoint3D& a) {
    return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z);
}

View turned(const View& view, const QUORPoint3D& centre, const QUORPoint3D& axis, double degrees) {
    vtkNew<vtkTransform> transform;
    transform->Translate(centre.x, centre.y, centre.z);
    transform->RotateWXYZ(degrees, axis.x, axis.y, axis.z);
    transform->Translate(-centre.x, -centre.y, -centre.z);
    std::array<double, 3> p{view.position.x, view.position.y, view.position.z};
    std::array<double, 3> d{view.direction.x, view.direction.y, view.direction.z};
    transform->TransformPoint(p.data(), p.data());
    transform->TransformVector(d.data(), d.data());
    return {{p[0], p[1], p[2]}, {d[0], d[1], d[2]}};
}

} // namespace QUORViewGeometry
