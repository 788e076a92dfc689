// SPDX-License-Identifier: MIT
#pragma once

#include <array>

/// A convex quadrangle of a picture, in pixels: what a label takes there, however it is turned.
class QUORScreenQuad {
public:
    /// In order round the quadrangle.
    using Corners = std::array<std::array<double, 2>, 4>;

    explicit QUORScreenQuad(const Corners& corners) : _corners(corners) {}
    QUORScreenQuad(double left, double right, double bottom, double top)
        : _corners{{{left, bottom}, {right, bottom}, {right, top}, {left, top}}} {}

    /// Touching is not overlapping.
    bool overlaps(const QUORScreenQuad& other) const;
    /// Whether it lies in a picture of that size to its last corner.
    bool isWithin(double width, double height) const;

private:
    /// Whether a line along one of this one's sides has the other beyond it.
    bool isApartFrom(const QUORScreenQuad& other) const;

    Corners _corners;
};
