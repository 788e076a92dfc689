// SPDX-License-Identifier: MIT
#pragma once

#include "QUORGridShape.h"
#include "QUORInterpolation.h"
#include "QUORRadarData.h"

#include <vector>

/// Brings a Cartesian volume of a file to the grid of the products.
///
/// A grid with even steps on the map of the products is kept as it is; its levels are put where their heights
/// over the antenna are whole steps. Everything else is resampled: the nearest point of the file in its
/// plane, and between its levels as between two beams. What lies outside the file's grid has no data.
class QUORGridResampler {
public:
    /// Keeps references to the data. Throws a QUORImportError when they cannot have the grid asked for.
    QUORGridResampler(const QUORRadarData& data, const QUORGridRequest& request);

    const QUORGridShape& getShape() const { return _shape; }
    const QStringList& getWarnings() const { return _warnings; }

    /// x fastest, then y, then z.
    std::vector<float> grid(QUORRadarQuantity quantity, QUORBetweenBeams between) const;
    /// One level at that height above the antenna, metres.
    std::vector<float> gridLevel(QUORRadarQuantity quantity, double height, QUORBetweenBeams between) const;

private:
    /// A height of the products between two levels of the file.
    struct Level {
        std::size_t below;
        std::size_t above;
        double weight;
    };

    void replace(const QUORGridShape& asked, bool plane, bool levels);
    void keepPlane();
    void coverPlane();
    void chooseLevels();
    void findColumns();
    std::optional<Level> findLevel(double height) const;
    void fill(const std::vector<float>& from, const QUORInterpolation& interpolation, double height,
              float* to) const;
    const std::vector<float>& valuesOf(QUORRadarQuantity quantity) const;

    const QUORRadarData& _data;
    const QUORRadarGrid& _grid;
    QUORGridShape _shape;
    QStringList _warnings;
    /// Of each column of the product: the column of the file, or NOWHERE.
    std::vector<std::size_t> _columns;
};
