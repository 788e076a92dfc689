// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <cstddef>
#include <vector>

/// A square of heights in metres, row by row. A plain value.
struct QUORTerrainGrid {
    /// Posts per side of a tile after reduction.
    static constexpr int REDUCED_SIDE = 601;

    explicit QUORTerrainGrid(int postsPerSide)
        : side(postsPerSide), heights(static_cast<std::size_t>(postsPerSide) * postsPerSide, 0.0) {}

    double& at(int row, int column) { return heights[static_cast<std::size_t>(row) * side + column]; }
    double at(int row, int column) const { return heights[static_cast<std::size_t>(row) * side + column]; }

    /// An SRTM file's posts, `postsPerSide` to the square, averaged to REDUCED_SIDE; the first row is the
    /// north edge. The bytes must be complete.
    static QUORTerrainGrid reduceSrtm(const QByteArray& bytes, int postsPerSide);
    /// The same for a whole DTED level 1 file, headers included.
    static QUORTerrainGrid reduceDted1(const QByteArray& bytes);
    /// Every `step`th post, the first row at the south edge.
    QUORTerrainGrid thin(int step) const;

    int side;
    std::vector<double> heights;
};
