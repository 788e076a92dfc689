// SPDX-License-Identifier: MIT
#pragma once

/// Factors between units, each once.
namespace QUORUnits {

/// Pi as the conversions of projected positions, cameras and the compass take it. Positions follow from it to
/// the centimetre, and stored cameras to the digit: a better one would move both. Plain geometry takes
/// std::numbers::pi.
constexpr double PI = 3.14159265;
constexpr double DEGREES_PER_RADIAN = 180.0 / PI;
constexpr double RADIANS_PER_DEGREE = PI / 180.0;

/// Radians in the full turn that a compass heading is a fraction of, to single precision.
constexpr double FULL_TURN = 6.2831854820251465;

constexpr double KILOMETRES_PER_NAUTICAL_MILE = 1.853184;
constexpr double FEET_PER_METRE = 3.2808399;

} // namespace QUORUnits
