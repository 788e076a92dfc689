// SPDX-License-Identifier: MIT
#pragma once

#include "QUORBeamGeometry.h"
#include "QUORGridShape.h"
#include "QUORInterpolation.h"
#include "QUORRadarData.h"

#include <vector>

/// Brings the sweeps of a volume to a Cartesian grid.
///
/// A point is looked at from the antenna: its elevation lies between two sweeps, in each of which the nearest
/// ray and the nearest gate at its range give a value. Between the two it is linear in elevation. An echo
/// beside no echo ends midway; beside missing data, and above the highest and below the lowest sweep, it
/// reaches half a beam width from the middle of its beam and no farther. Sweeps more than ten degrees apart
/// are not joined, velocities that may have been folded between the two are not averaged, and the nearer one
/// is taken. A point has no data where the nearest ray is farther away than a gap in a scan.
///
/// Does not change; threads of its own are joined before a call returns.
class QUORPolarGridder {
public:
    /// Keeps references to the data.
    QUORPolarGridder(const QUORRadarData& data, QUORRadarQuantity quantity,
                     QUORBetweenBeams between = QUORBetweenBeams::Decibel);
    ~QUORPolarGridder();

    /// x fastest, then y, then z.
    std::vector<float> grid(const QUORGridShape& shape) const;
    /// One level at that height above the antenna, metres.
    std::vector<float> gridLevel(const QUORGridShape& shape, double height) const;
    /// The lowest sweep as seen from above.
    std::vector<float> projectLowest(const QUORGridShape& shape) const;

    /// The sweeps in use, from the lowest: one for each elevation.
    std::vector<const QUORRadarSweep*> getSweeps() const;

    /// Sweeps nearer than that count as one elevation, degrees.
    static constexpr double SAME_ELEVATION = 0.15;
    /// Sweeps farther apart than that are not joined, degrees.
    static constexpr double WIDEST_GAP = 10.0;
    static constexpr double USUAL_BEAM_WIDTH = 1.0;

private:
    class Turn;
    struct Column;

    void gridRows(const QUORGridShape& shape, double firstHeight, int levels, int firstRow, int lastRow,
                  float* out) const;
    std::vector<float> gridLevels(const QUORGridShape& shape, double firstHeight, int levels) const;
    float between(const Column& column, double elevation, double range, std::size_t& above) const;

    QUORInterpolation _interpolation;
    QUORBeamGeometry _geometry;
    double _halfBeam; ///< radians
    std::vector<Turn> _turns;
};
