// SPDX-License-Identifier: MIT
#include "ReferenceGridder.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double DEGREE = M_PI / 180.0;
constexpr double EFFECTIVE_EARTH = 6371000.0 * 4.0 / 3.0;

/// Height over the antenna of a beam, after the textbook formula (2.28b).
double heightOf(double range, double elevation, double antenna) {
    const double radius = EFFECTIVE_EARTH + antenna;
    return std::sqrt(range * range + radius * radius + 2.0 * range * radius * std::sin(elevation)) - radius;
}

/// Where a beam of that elevation is over a point of the ground: by the law of sines.
double rangeOver(double ground, double elevation, double antenna) {
    const double angle = ground / EFFECTIVE_EARTH;
    return (EFFECTIVE_EARTH + antenna) * std::sin(angle) / std::cos(elevation + angle);
}

/// The elevation of the beam that hits a height over a point of the ground.
double elevationTo(double ground, double height, double antenna) {
    double low = -10.0 * DEGREE;
    double high = M_PI / 2.0 - ground / EFFECTIVE_EARTH - 1e-12;
    for (int i = 0; i < 80; ++i) {
        const double middle = (low + high) / 2.0;
        (heightOf(rangeOver(ground, middle, antenna), middle, antenna) < height ? low : high) = middle;
    }
    return (low + high) / 2.0;
}

double turnBetween(double a, double b) {
    return std::abs(std::remainder(a - b, 360.0));
}

double power(float value) {
    return value == QUORRadarValue::NO_ECHO ? 0.0 : std::pow(10.0, double(value) / 10.0);
}

} // namespace

ReferenceGridder::ReferenceGridder(const QUORRadarData& data, QUORRadarQuantity quantity, bool inPower)
    : _data(data), _quantity(quantity), _inPower(inPower) {}

float ReferenceGridder::sampleSweep(const QUORRadarSweep& sweep, double azimuth, double range,
                                    double& elevation) const {
    std::size_t best = 0;
    for (std::size_t ray = 1; ray < sweep.azimuths.size(); ++ray) {
        if (turnBetween(sweep.azimuths[ray], azimuth) < turnBetween(sweep.azimuths[best], azimuth)) {
            best = ray;
        }
    }
    elevation = double(sweep.elevations[best]);
    // The test's sweeps have rays of one degree, and so have the beams.
    if (turnBetween(sweep.azimuths[best], azimuth) > 0.75) {
        elevation = 1000.0;
        return QUORRadarValue::NO_DATA;
    }
    const QUORRadarMoment& moment = *sweep.find(_quantity);
    int gate = -1;
    for (int i = 0; i < moment.gates; ++i) {
        const double middle = moment.firstGate + i * moment.gateSpacing;
        if (range >= middle - moment.gateSpacing / 2.0 && range < middle + moment.gateSpacing / 2.0) {
            gate = i;
        }
    }
    if (gate < 0) {
        return QUORRadarValue::NO_DATA;
    }
    const quint16 code = moment.codes[best * std::size_t(moment.gates) + std::size_t(gate)];
    const bool needsEcho = _quantity == QUORRadarQuantity::Velocity || _quantity == QUORRadarQuantity::Width;
    return code == 1 && needsEcho ? QUORRadarValue::NO_DATA : moment.value(code);
}

std::vector<ReferenceGridder::Sample> ReferenceGridder::samplesAt(double azimuth, double range) const {
    std::vector<Sample> samples;
    for (const QUORRadarSweep& sweep : _data.sweeps) {
        if (sweep.find(_quantity) != nullptr) {
            double elevation = 0.0;
            const float value = sampleSweep(sweep, azimuth, range, elevation);
            if (elevation < 900.0) {
                samples.push_back({elevation, sweep.nyquist, value});
            }
        }
    }
    std::sort(samples.begin(), samples.end(),
              [](const Sample& a, const Sample& b) { return a.elevation < b.elevation; });
    return samples;
}

float ReferenceGridder::between(const Sample& a, const Sample& b, double elevation) const {
    const double part = (elevation - a.elevation) / (b.elevation - a.elevation);
    const float nearer = part < 0.5 ? a.value : b.value;
    if (_quantity == QUORRadarQuantity::Reflectivity && _inPower) {
        const double mean = power(a.value) * (1.0 - part) + power(b.value) * part;
        return mean == 0.0 ? QUORRadarValue::NO_ECHO : float(10.0 * std::log10(mean));
    }
    if (std::isinf(a.value) || std::isinf(b.value)) {
        return nearer;
    }
    if (_quantity == QUORRadarQuantity::Velocity &&
        std::abs(a.value - b.value) >= std::min(a.nyquist, b.nyquist)) {
        return nearer;
    }
    return float(a.value * (1.0 - part) + b.value * part);
}

float ReferenceGridder::at(double x, double y, double z) const {
    const double ground = std::sqrt(x * x + y * y);
    double azimuth = std::atan2(x, y) / DEGREE;
    const double antenna = _data.site.altitude;
    const double elevation = elevationTo(ground, z, antenna);
    const double range = ground > 0.0 ? rangeOver(ground, elevation, antenna) : z;
    const std::vector<Sample> samples = samplesAt(azimuth, range);
    const double degrees = elevation / DEGREE;
    const Sample* below = nullptr;
    const Sample* above = nullptr;
    for (const Sample& sample : samples) {
        if (sample.elevation <= degrees) {
            below = &sample;
        } else if (above == nullptr) {
            above = &sample;
        }
    }
    const auto holds = [](const Sample* sample) { return sample != nullptr && !std::isnan(sample->value); };
    if (holds(below) && holds(above) && above->elevation - below->elevation <= 10.0) {
        return between(*below, *above, degrees);
    }
    if (holds(below) && degrees - below->elevation <= 0.5) {
        return below->value;
    }
    return holds(above) && above->elevation - degrees <= 0.5 ? above->value : QUORRadarValue::NO_DATA;
}
