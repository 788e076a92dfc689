// SPDX-License-Identifier: MIT
#include "QUORGridShape.h"

#include "QUORBeamGeometry.h"
#include "QUORImportError.h"
#include "QUORRadarData.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double RADIAN = std::numbers::pi / 180.0;
/// What lies farther or higher is in few beams and in no storm; a wider grid is asked for.
constexpr double FARTHEST = 250000.0;
constexpr double HIGHEST = 16000.0;
constexpr double USUAL_POINTS = 240.0;
constexpr double USUAL_LEVELS = 32.0;

/// The nearest length that people use for grid steps.
double roundStep(double step) {
    constexpr std::array mantissas{1.0, 1.25, 1.5, 2.0, 2.5, 3.0, 4.0, 5.0, 6.0, 8.0, 10.0};
    const double decade = std::pow(10.0, std::floor(std::log10(std::max(step, 1.0))));
    const auto distance = [&](double mantissa) { return std::abs(std::log(mantissa * decade / step)); };
    return decade * *std::min_element(mantissas.begin(), mantissas.end(),
                                      [&](double a, double b) { return distance(a) < distance(b); });
}

struct Reach {
    double range = 0.0;
    double height = 0.0;
};

Reach reachOf(const QUORRadarData& data) {
    Reach reach;
    const QUORBeamGeometry geometry(data.site.altitude);
    for (const QUORRadarSweep& sweep : data.sweeps) {
        for (const QUORRadarMoment& moment : sweep.moments) {
            reach.range = std::max(
                reach.range, geometry.groundDistance(moment.farthestRange(), sweep.fixedAngle * RADIAN));
        }
    }
    const double range = std::min(reach.range, FARTHEST);
    for (const QUORRadarSweep& sweep : data.sweeps) {
        const double elevation = sweep.fixedAngle * RADIAN;
        for (const QUORRadarMoment& moment : sweep.moments) {
            const double within = geometry.range(range, elevation);
            const double farthest =
                within > 0.0 ? std::min(moment.farthestRange(), within) : moment.farthestRange();
            reach.height = std::max(reach.height, geometry.height(farthest, elevation));
        }
    }
    return {range, std::clamp(reach.height, 100.0, HIGHEST)};
}

/// Of a file's own grid; steps of the grid where they are even.
Reach reachOf(const QUORRadarGrid& grid) {
    return {std::max({std::abs(grid.x.front()), std::abs(grid.x.back()), std::abs(grid.y.front()),
                      std::abs(grid.y.back())}),
            std::max(grid.z.back(), 100.0)};
}

} // namespace

const char* QUORGridShape::error() const {
    for (const int axis : {0, 1, 2}) {
        const auto a = std::size_t(axis);
        if (points[a] < 2 || points[a] > (axis == 2 ? MOST_LEVELS : MOST_POINTS)) {
            return "a grid has 2 to 4000 points along x and y and 2 to 400 levels";
        }
        if (!(steps[a] >= 0.01 && steps[a] <= 1e6)) {
            return "steps are from a centimetre to 1000 km";
        }
    }
    return double(cells()) * points[2] > MOST_CELLS ? "the grid has more than 64 million points" : "";
}

QUORGridShape QUORGridRequest::propose(const QUORRadarData& data) const {
    Reach reach = data.grid ? reachOf(*data.grid) : reachOf(data);
    reach.range = range.value_or(reach.range);
    reach.height = height.value_or(reach.height);
    QUORGridShape shape;
    for (const std::size_t axis : {0U, 1U, 2U}) {
        const double extent = axis == 2 ? reach.height : 2.0 * reach.range;
        const double usual = axis == 2 ? USUAL_LEVELS : USUAL_POINTS;
        if (steps) {
            shape.steps[axis] = (*steps)[axis];
        } else if (points) {
            const int intervals = (*points)[axis] - (axis == 2 ? 1 : 0);
            shape.steps[axis] = roundStep(extent / std::max(intervals, 1));
        } else {
            shape.steps[axis] = roundStep(extent / usual);
        }
        if (points) {
            shape.points[axis] = (*points)[axis];
        } else if (axis == 2) {
            shape.points[axis] = int(std::min(std::ceil(extent / shape.steps[axis] - 1e-6), 1e6)) + 1;
        } else {
            shape.points[axis] = 2 * int(std::min(std::ceil(extent / 2.0 / shape.steps[axis] - 1e-6), 1e6));
        }
    }
    shape.centre();
    return shape;
}

QUORGridShape QUORGridRequest::choose(const QUORRadarData& data) const {
    const QUORGridShape shape = propose(data);
    if (const char* reason = shape.error(); *reason != '\0') {
        throw QUORRequestError(QString::fromLatin1(reason));
    }
    return shape;
}
