// SPDX-License-Identifier: MIT
#pragma once

#include "QUORRadarQuantity.h"

/// How values between two beams, or two levels, are found for reflectivity.
enum class QUORBetweenBeams {
    Decibel, ///< along the logarithmic values, as echo tops are measured
    Power,   ///< along the linear reflectivity factor
};

/// What lies between two values one above the other, neither of which is "no data".
class QUORInterpolation {
public:
    QUORInterpolation(QUORRadarQuantity quantity, QUORBetweenBeams between)
        : _quantity(quantity),
          _inPower(between == QUORBetweenBeams::Power && quantity == QUORRadarQuantity::Reflectivity) {}

    /// `weight` 0 is the value below, 1 the one above. Linear; but an echo beside no echo ends midway (in
    /// power it fades), and velocities that differ by the Nyquist velocity or more, or of which it is not
    /// known (0), may have been folded: the nearer one is taken.
    float combine(float below, float above, double weight, double nyquist) const;

    /// Where nothing was found to measure there is no such quantity either.
    bool needsEcho() const {
        return _quantity == QUORRadarQuantity::Velocity || _quantity == QUORRadarQuantity::Width;
    }

private:
    QUORRadarQuantity _quantity;
    bool _inPower;
};
