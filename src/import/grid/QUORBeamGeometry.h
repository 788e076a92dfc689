// SPDX-License-Identifier: MIT
#pragma once

/// Where a beam is in the air of a standard atmosphere, in which it bends as if it were straight over an
/// earth of 4/3 of the true radius. After Doviak and Zrnic, Doppler Radar and Weather Observations, 2nd
/// edition, section 2.2.3. Angles in radians, the rest in metres; heights are over the antenna, ground
/// distances along the surface of the sea.
class QUORBeamGeometry {
public:
    static constexpr double EARTH_RADIUS = 6371000.0;
    static constexpr double EFFECTIVE_RADIUS = EARTH_RADIUS * 4.0 / 3.0;

    explicit QUORBeamGeometry(double antennaAltitude) : _antenna(EFFECTIVE_RADIUS + antennaAltitude) {}

    struct Direction {
        double elevation;
        double range;
    };
    /// How the antenna sees a point.
    Direction see(double groundDistance, double height) const;
    /// Height of a beam at a range along it.
    double height(double range, double elevation) const;
    double groundDistance(double range, double elevation) const;
    /// Range at which a beam is over a point so far away; negative where it never is.
    double range(double groundDistance, double elevation) const;

private:
    double _antenna;
};
