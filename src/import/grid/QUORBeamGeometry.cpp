// SPDX-License-Identifier: MIT
#include "QUORBeamGeometry.h"

#include <cmath>

QUORBeamGeometry::Direction QUORBeamGeometry::see(double groundDistance, double height) const {
    const double angle = groundDistance / EFFECTIVE_RADIUS;
    const double across = (_antenna + height) * std::sin(angle);
    // The difference of two long lines, without the loss of digits.
    const double half = std::sin(angle / 2.0);
    const double up = height - (_antenna + height) * 2.0 * half * half;
    return {std::atan2(up, across), std::hypot(up, across)};
}

double QUORBeamGeometry::height(double range, double elevation) const {
    return std::sqrt(range * range + _antenna * _antenna + 2.0 * range * _antenna * std::sin(elevation)) -
           _antenna;
}

double QUORBeamGeometry::groundDistance(double range, double elevation) const {
    return EFFECTIVE_RADIUS * std::atan2(range * std::cos(elevation), _antenna + range * std::sin(elevation));
}

double QUORBeamGeometry::range(double groundDistance, double elevation) const {
    const double angle = groundDistance / EFFECTIVE_RADIUS;
    const double cosine = std::cos(elevation + angle);
    return cosine > 0.0 ? _antenna * std::sin(angle) / cosine : -1.0;
}
