// SPDX-License-Identifier: MIT
#include "QUORInterpolation.h"

#include "QUORRadarData.h"

#include <cmath>

namespace {

/// No echo has no power.
double powerOf(float decibel) {
    return std::pow(10.0, double(decibel) / 10.0);
}

} // namespace

float QUORInterpolation::combine(float below, float above, double weight, double nyquist) const {
    const float nearer = weight < 0.5 ? below : above;
    if (_inPower) {
        const double mean = (1.0 - weight) * powerOf(below) + weight * powerOf(above);
        return mean > 0.0 ? float(10.0 * std::log10(mean)) : QUORRadarValue::NO_ECHO;
    }
    const bool isEdge = QUORRadarValue::isNoEcho(below) || QUORRadarValue::isNoEcho(above);
    const bool mayBeFolded =
        _quantity == QUORRadarQuantity::Velocity && !(std::abs(double(below) - double(above)) < nyquist);
    return isEdge || mayBeFolded ? nearer : float((1.0 - weight) * double(below) + weight * double(above));
}
