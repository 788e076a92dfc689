// SPDX-License-Identifier: MIT
#pragma once

#include "QUORGridShape.h"

#include <span>
#include <vector>

/// Flat products of a gridded reflectivity volume (dBZ). A column without data has none.
namespace QUORFlatProducts {

/// The highest value of each column.
std::vector<float> maximum(const QUORGridShape& shape, std::span<const float> reflectivity);

/// Vertically integrated liquid, kg/m^2: the sum of 3.44e-6 ((Za + Zb) / 2)^(4/7) dh over the layers between
/// two levels with data, Z in mm^6/m^3. After Greene and Clark, Monthly Weather Review 100, 1972, with the
/// usual cap of 56 dBZ against hail. Less than half a unit is no echo.
std::vector<float> liquidWater(const QUORGridShape& shape, std::span<const float> reflectivity);

inline constexpr double LIQUID_WATER_CAP = 56.0;

} // namespace QUORFlatProducts
