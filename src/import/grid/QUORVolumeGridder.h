// SPDX-License-Identifier: MIT
#pragma once

#include "QUORGridResampler.h"
#include "QUORGridShape.h"
#include "QUORInterpolation.h"
#include "QUORRadarData.h"

#include <optional>
#include <vector>

/// Brings whatever a volume consists of, sweeps or a grid of its own, to the grid of the products.
class QUORVolumeGridder {
public:
    /// Keeps a reference to the data. Throws a QUORImportError when they cannot have the grid asked for.
    QUORVolumeGridder(const QUORRadarData& data, const QUORGridRequest& request, QUORBetweenBeams between);

    const QUORGridShape& getShape() const { return _shape; }
    QStringList getWarnings() const { return _resampler ? _resampler->getWarnings() : QStringList(); }
    bool hasSweeps() const { return !_resampler; }

    /// Of a quantity that the data have; x fastest, then y, then z.
    std::vector<float> grid(QUORRadarQuantity quantity) const;
    /// One level at that height above the antenna, metres.
    std::vector<float> gridLevel(QUORRadarQuantity quantity, double height) const;
    /// The lowest sweep as seen from above.
    std::vector<float> projectLowest(QUORRadarQuantity quantity) const;

private:
    const QUORRadarData& _data;
    QUORBetweenBeams _between;
    std::optional<QUORGridResampler> _resampler;
    QUORGridShape _shape;
};
