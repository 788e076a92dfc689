// SPDX-License-Identifier: MIT
#pragma once

#include "QUORGridShape.h"
#include "QUORRadarData.h"

/// The second opinion on gridding: one cell at a time, every ray of every sweep looked at, the way of the
/// beam found by halving intervals. Slow, plain, and without a line of the gridder.
class ReferenceGridder {
public:
    ReferenceGridder(const QUORRadarData& data, QUORRadarQuantity quantity, bool inPower);

    float at(double x, double y, double z) const;

private:
    struct Sample {
        double elevation;
        double nyquist;
        float value;
    };
    std::vector<Sample> samplesAt(double azimuth, double range) const;
    float sampleSweep(const QUORRadarSweep& sweep, double azimuth, double range, double& elevation) const;
    float between(const Sample& a, const Sample& b, double elevation) const;

    const QUORRadarData& _data;
    QUORRadarQuantity _quantity;
    bool _inPower;
};
