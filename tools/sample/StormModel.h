// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

/// A made-up storm around a radar: a supercell with a vault under its overhanging core and an anvil, a
/// squall line, and the stratiform rain behind it with a bright band where snow melts. Positions are metres
/// from the radar (x east, y north, z up), times seconds from the first step. Pure: the same seed gives the
/// same storm.
class StormModel {
public:
    struct Air {
        double reflectivity; ///< dBZ; not a number where the radar sees nothing
        double velocity;     ///< m/s away from the radar, not folded
        double width;        ///< m/s
    };

    /// `reach` is the distance from the radar within which the storm's parts are spread.
    StormModel(std::uint32_t seed, double reach);

    Air at(double x, double y, double z, double time) const;

private:
    struct Vector {
        double x, y, z;
    };
    /// A place as the supercell sees it, kilometres: along its motion, to the left of it, and up.
    struct CellPlace {
        double along, left, up;
    };

    CellPlace inCell(double x, double y, double z, double time) const;
    double supercell(const CellPlace& place, double time) const;
    double lineFront(double y, double time) const;
    double squallLine(double x, double y, double z, double time) const;
    double stratiform(double x, double y, double z, double time) const;
    double texture(double x, double y, double z) const;
    double rotation(const CellPlace& place, double time) const;
    Vector wind(const CellPlace& place, double time) const;

    std::uint32_t _seed;
    double _reach;
};
