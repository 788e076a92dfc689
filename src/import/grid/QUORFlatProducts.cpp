// SPDX-License-Identifier: MIT
#include "QUORFlatProducts.h"

#include "QUORRadarData.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double LEAST_LIQUID_WATER = 0.5;

double factorOf(float reflectivity) {
    return QUORRadarValue::isNoEcho(reflectivity)
               ? 0.0
               : std::pow(10.0, std::min(double(reflectivity), QUORFlatProducts::LIQUID_WATER_CAP) / 10.0);
}

} // namespace

std::vector<float> QUORFlatProducts::maximum(const QUORGridShape& shape,
                                             std::span<const float> reflectivity) {
    std::vector<float> highest(reflectivity.begin(), reflectivity.begin() + std::ptrdiff_t(shape.cells()));
    for (std::size_t i = shape.cells(); i < reflectivity.size(); ++i) {
        float& value = highest[i % shape.cells()];
        value = std::fmax(value, reflectivity[i]);
    }
    return highest;
}

std::vector<float> QUORFlatProducts::liquidWater(const QUORGridShape& shape,
                                                 std::span<const float> reflectivity) {
    std::vector<float> water(shape.cells(), QUORRadarValue::NO_DATA);
    for (std::size_t i = shape.cells(); i < reflectivity.size(); ++i) {
        const float below = reflectivity[i - shape.cells()];
        const float above = reflectivity[i];
        if (QUORRadarValue::isNoData(below) || QUORRadarValue::isNoData(above)) {
            continue;
        }
        float& value = water[i % shape.cells()];
        const double mean = (factorOf(below) + factorOf(above)) / 2.0;
        const double layer = mean > 0.0 ? 3.44e-6 * std::pow(mean, 4.0 / 7.0) * shape.steps[2] : 0.0;
        value = float(layer) + (QUORRadarValue::isNoData(value) ? 0.0F : value);
    }
    std::replace_if(
        water.begin(), water.end(), [](float value) { return value < LEAST_LIQUID_WATER; },
        QUORRadarValue::NO_ECHO);
    return water;
}
