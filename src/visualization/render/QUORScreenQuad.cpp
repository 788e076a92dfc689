// SPDX-License-Identifier: MIT
#include "QUORScreenQuad.h"

#include <algorithm>

bool QUORScreenQuad::isApartFrom(const QUORScreenQuad& other) const {
    for (std::size_t i = 0; i < _corners.size(); ++i) {
        const auto& a = _corners[i];
        const auto& b = _corners[(i + 1) % _corners.size()];
        const auto reach = [&](const QUORScreenQuad& quad) {
            const auto across = [&](const auto& p) {
                return (p[0] - a[0]) * (b[1] - a[1]) - (p[1] - a[1]) * (b[0] - a[0]);
            };
            const auto [least, most] = std::ranges::minmax_element(quad._corners, {}, across);
            return std::array{across(*least), across(*most)};
        };
        const auto own = reach(*this);
        const auto others = reach(other);
        if (own[1] <= others[0] || others[1] <= own[0]) {
            return true;
        }
    }
    return false;
}

bool QUORScreenQuad::overlaps(const QUORScreenQuad& other) const {
    return !isApartFrom(other) && !other.isApartFrom(*this);
}

bool QUORScreenQuad::isWithin(double width, double height) const {
    return std::ranges::all_of(_corners, [&](const auto& corner) {
        return corner[0] >= 0.0 && corner[0] <= width && corner[1] >= 0.0 && corner[1] <= height;
    });
}
