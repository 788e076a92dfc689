// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <optional>

struct QUORRadarData;

/// Points and steps (metres) of a product along x (east), y (north) and z (up). Level k lies k steps above
/// the antenna; for polar data the radar stands at half the points.
struct QUORGridShape {
    std::array<int, 3> points{0, 0, 0};
    std::array<double, 3> steps{0.0, 0.0, 0.0};
    /// The radar along x and y, in steps from the first point.
    std::array<double, 2> radar{0.0, 0.0};

    std::size_t cells() const { return std::size_t(points[0]) * std::size_t(points[1]); }
    std::size_t count() const { return cells() * std::size_t(points[2]); }
    double x(int i) const { return (i - radar[0]) * steps[0]; }
    double y(int j) const { return (j - radar[1]) * steps[1]; }
    double z(int k) const { return k * steps[2]; }
    void centre() { radar = {0.5 * points[0], 0.5 * points[1]}; }

    static constexpr int MOST_POINTS = 4000;
    static constexpr int MOST_LEVELS = 400;
    static constexpr double MOST_CELLS = 64e6;
    /// Empty, or why no product can have this shape.
    const char* error() const;
};

/// What the user asks for; the rest follows from the data.
struct QUORGridRequest {
    std::optional<std::array<int, 3>> points;
    std::optional<std::array<double, 3>> steps; ///< metres
    std::optional<double> range;                ///< metres from the radar to the middle of each side
    std::optional<double> height;               ///< metres from the antenna to the top

    bool isEmpty() const { return !points && !steps && !range && !height; }
    /// A square plane around the radar and its levels, whether a product can have them or not.
    QUORGridShape propose(const QUORRadarData& data) const;
    /// Throws a QUORImportError when the shape asked for cannot be made.
    QUORGridShape choose(const QUORRadarData& data) const;
};
