// SPDX-License-Identifier: MIT
#include "QUORViewFit.h"

#include "QUORViewPlan.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <optional>

using namespace QUORViewGeometry;

namespace {

/// Half of the camera's vertical angle.
constexpr double HALF_ANGLE = 15.0 * std::numbers::pi / 180.0;
/// The camera's model never stands lower, metres.
constexpr double LOWEST_CAMERA = 2000.0;
/// Between the box and the picture's edge, and what it has to stay clear of; from -1 to 1 across a picture.
constexpr double MARGIN = 0.03;
/// How far the box may be moved from the middle of the picture, and in what steps that is tried.
constexpr double FARTHEST_SHIFT = 0.6;
constexpr int SHIFTS = 4;
constexpr int REFINEMENTS = 4;
constexpr int HALVINGS = 20;
/// A farther camera has to gain that much: a box in the middle looks better.
constexpr double WORTH = 0.995;

struct Flat {
    double x = 0.0;
    double y = 0.0;
};

double cross(const Flat& a, const Flat& b, const Flat& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// Counter-clockwise, by Andrew's monotone chain.
std::vector<Flat> hullOf(std::array<Flat, 8> points) {
    std::ranges::sort(points,
                      [](const Flat& a, const Flat& b) { return a.x < b.x || (a.x == b.x && a.y < b.y); });
    std::vector<Flat> hull;
    const auto grow = [&hull](auto first, auto last) {
        const std::size_t start = hull.size();
        for (; first != last; ++first) {
            while (hull.size() >= start + 2 && cross(hull[hull.size() - 2], hull.back(), *first) <= 0.0) {
                hull.pop_back();
            }
            hull.push_back(*first);
        }
        hull.pop_back();
    };
    grow(points.begin(), points.end());
    grow(points.rbegin(), points.rend());
    return hull;
}

/// Whether some edge of the hull, or side of the area, parts the two.
bool isClear(const std::vector<Flat>& hull, const QUORPictureArea& area) {
    const double left = 2.0 * area.left - 1.0 - MARGIN;
    const double right = 2.0 * area.right - 1.0 + MARGIN;
    const double bottom = 2.0 * area.bottom - 1.0 - MARGIN;
    const double top = 2.0 * area.top - 1.0 + MARGIN;
    const auto all = [&hull](auto isBeyond) { return std::ranges::all_of(hull, isBeyond); };
    if (all([&](const Flat& p) { return p.x < left; }) || all([&](const Flat& p) { return p.x > right; }) ||
        all([&](const Flat& p) { return p.y < bottom; }) || all([&](const Flat& p) { return p.y > top; })) {
        return true;
    }
    const std::array<Flat, 4> corners{Flat{left, bottom}, {right, bottom}, {right, top}, {left, top}};
    for (std::size_t i = 0; i < hull.size(); ++i) {
        const Flat& a = hull[i];
        const Flat& b = hull[(i + 1) % hull.size()];
        if (std::ranges::all_of(corners, [&](const Flat& p) { return cross(a, b, p) < 0.0; })) {
            return true;
        }
    }
    return false;
}

/// One direction of looking at one box in one picture.
class Search {
public:
    Search(const QUORPoint3D& lower, const QUORPoint3D& upper, double heading, double pitch,
           const QUORViewFit::Picture& picture)
        : _picture(picture),
          _direction(QUORViewPlan{heading, pitch, 1.0}.toView().direction),
          _middle((lower + upper) * 0.5),
          _radius(std::max(0.5 * length(upper - lower), 1.0)),
          _halfHeight(std::tan(HALF_ANGLE)),
          _halfWidth(_halfHeight * picture.width / picture.height) {
        const double flat = std::hypot(_direction.x, _direction.y);
        _right = {_direction.y / flat, -_direction.x / flat, 0.0};
        _up = {_right.y * _direction.z, -_right.x * _direction.z,
               _right.x * _direction.y - _right.y * _direction.x};
        for (int corner = 0; corner < 8; ++corner) {
            _corners.at(std::size_t(corner)) = {corner & 1 ? upper.x : lower.x,
                                                corner & 2 ? upper.y : lower.y,
                                                corner & 4 ? upper.z : lower.z};
        }
    }

    std::optional<View> find(bool heedsTaken) const {
        Flat middle;
        std::optional<double> best = findDistance(middle, heedsTaken);
        double step = FARTHEST_SHIFT / SHIFTS;
        for (int round = 0; round <= REFINEMENTS; ++round) {
            const int reach = round == 0 ? SHIFTS : 1;
            const Flat around = middle;
            for (int i = -reach; i <= reach; ++i) {
                for (int j = -reach; j <= reach; ++j) {
                    const Flat shift{around.x + i * step, around.y + j * step};
                    const std::optional<double> distance = findDistance(shift, heedsTaken);
                    if (distance && (!best || *distance < *best * WORTH)) {
                        best = distance;
                        middle = shift;
                    }
                }
            }
            step *= 0.5;
        }
        return best ? std::optional(viewFrom(middle, *best)) : std::nullopt;
    }

private:
    /// The box's middle comes to lie at the shift.
    View viewFrom(const Flat& shift, double distance) const {
        QUORPoint3D position = _middle - _direction * distance - _right * (shift.x * _halfWidth * distance) -
                               _up * (shift.y * _halfHeight * distance);
        position.z = std::max(position.z, LOWEST_CAMERA);
        return {position, _direction};
    }

    bool isGood(const Flat& shift, double distance, bool heedsTaken) const {
        const View view = viewFrom(shift, distance);
        std::array<Flat, 8> seen;
        for (std::size_t i = 0; i < seen.size(); ++i) {
            const QUORPoint3D way = _corners[i] - view.position;
            const double depth = dot(way, _direction);
            if (depth <= 0.0) {
                return false;
            }
            seen[i] = {dot(way, _right) / (depth * _halfWidth), dot(way, _up) / (depth * _halfHeight)};
            if (std::max(std::abs(seen[i].x), std::abs(seen[i].y)) > 1.0 - MARGIN) {
                return false;
            }
        }
        if (!heedsTaken) {
            return true;
        }
        const std::vector<Flat> hull = hullOf(seen);
        return std::ranges::all_of(_picture.taken,
                                   [&](const QUORPictureArea& area) { return isClear(hull, area); });
    }

    std::optional<double> findDistance(const Flat& shift, bool heedsTaken) const {
        double far = 40.0 * _radius;
        if (!isGood(shift, far, heedsTaken)) {
            return std::nullopt;
        }
        double near = 0.0;
        for (int i = 0; i < HALVINGS; ++i) {
            const double distance = 0.5 * (near + far);
            (isGood(shift, distance, heedsTaken) ? far : near) = distance;
        }
        return far;
    }

    static double dot(const QUORPoint3D& a, const QUORPoint3D& b) {
        return a.x * b.x + a.y * b.y + a.z * b.z;
    }

    const QUORViewFit::Picture& _picture;
    QUORPoint3D _direction;
    QUORPoint3D _right;
    QUORPoint3D _up;
    QUORPoint3D _middle;
    double _radius;
    double _halfHeight;
    double _halfWidth;
    std::array<QUORPoint3D, 8> _corners{};
};

} // namespace

QUORViewFit::QUORViewFit(const QUORPoint3D& lower, const QUORPoint3D& upper) : _lower(lower), _upper(upper) {}

View QUORViewFit::find(double heading, double pitch, const Picture& picture) const {
    const Search search(_lower, _upper, heading, pitch, picture);
    std::optional<View> view = search.find(true);
    if (!view) {
        view = search.find(false);
    }
    return view.value_or(QUORViewPlan{heading, pitch, length(_upper - _lower)}.toView());
}
