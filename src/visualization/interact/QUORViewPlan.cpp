// SPDX-License-Identifier: MIT
#include "QUORViewPlan.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double DEGREE = std::numbers::pi / 180.0;
/// Half of the camera's vertical angle.
constexpr double HALF_ANGLE = 15.0 * DEGREE;
constexpr double MARGIN = 1.05;
/// A camera that looks exactly down has no upper side.
constexpr double STEEPEST = 89.99994;

double dot(const QUORPoint3D& a, const QUORPoint3D& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

} // namespace

using namespace QUORViewGeometry;

View QUORViewPlan::toView() const {
    const double steep = std::min(pitch, STEEPEST) * DEGREE;
    const double turn = heading * DEGREE;
    const QUORPoint3D direction{std::sin(turn) * std::cos(steep), std::cos(turn) * std::cos(steep),
                                -std::sin(steep)};
    return {direction * -distance, direction};
}

QUORViewPlan QUORViewPlan::of(const View& view) {
    const QUORPoint3D direction = normalised(view.direction);
    const double degrees = std::atan2(direction.x, direction.y) / DEGREE;
    return {degrees < 0.0 ? degrees + 360.0 : degrees,
            std::asin(std::clamp(-direction.z, -1.0, 1.0)) / DEGREE, length(view.position)};
}

double QUORViewPlan::findFit(const QUORPoint3D& size, double pictureWidth, double pictureHeight) const {
    const QUORPoint3D forward = toView().direction;
    const QUORPoint3D right{std::cos(heading * DEGREE), -std::sin(heading * DEGREE), 0.0};
    const QUORPoint3D up{right.y * forward.z - right.z * forward.y, right.z * forward.x - right.x * forward.z,
                         right.x * forward.y - right.y * forward.x};
    const double vertical = std::tan(HALF_ANGLE);
    const double horizontal = vertical * pictureWidth / pictureHeight;
    double fit = 0.0;
    for (int corner = 0; corner < 8; ++corner) {
        const QUORPoint3D point{(corner & 1 ? 0.5 : -0.5) * size.x, (corner & 2 ? 0.5 : -0.5) * size.y,
                                corner & 4 ? size.z : 0.0};
        const double across =
            std::max(std::abs(dot(point, right)) / horizontal, std::abs(dot(point, up)) / vertical);
        fit = std::max(fit, across * MARGIN - dot(point, forward));
    }
    return fit;
}
