// SPDX-License-Identifier: MIT
#include "StormModel.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double KILOMETRE = 1000.0;
constexpr double NOTHING = -60.0; // dBZ

// The supercell moves to the east-north-east; its inflow, and so its vault, lies to the right.
constexpr double CELL_SPEED = 14.0;
constexpr double CELL_EAST = 0.91;
constexpr double CELL_NORTH = 0.41;
constexpr double VAULT_ALONG = 4.0;
constexpr double VAULT_LEFT = -6.0;
constexpr double VAULT_TOP = 7.0;
constexpr double VAULT_RADIUS = 4.5;

constexpr double LINE_SPEED = 12.0;
constexpr double LINE_HALF_LENGTH = 0.45; // of the reach
constexpr double MELTING_LEVEL = 3.4;

double square(double v) {
    return v * v;
}

/// 0 below `from`, 1 above `to`, smooth between.
double rise(double v, double from, double to) {
    const double f = std::clamp((v - from) / (to - from), 0.0, 1.0);
    return f * f * (3.0 - 2.0 * f);
}

double latticeValue(std::uint32_t seed, std::int64_t x, std::int64_t y, std::int64_t z) {
    std::uint32_t h = seed ^ (std::uint32_t(x) * 0x8da6b343U) ^ (std::uint32_t(y) * 0xd8163841U) ^
                      (std::uint32_t(z) * 0xcb1ab31fU);
    h = (h ^ (h >> 15)) * 0x2c1b3c6dU;
    h = (h ^ (h >> 12)) * 0x297a2d39U;
    return double(h ^ (h >> 15)) / 2147483648.0 - 1.0;
}

/// Smooth, between -1 and 1, varying over a distance of about 1.
double noise(std::uint32_t seed, double x, double y, double z) {
    const double cell[3] = {std::floor(x), std::floor(y), std::floor(z)};
    const double f[3] = {rise(x - cell[0], 0, 1), rise(y - cell[1], 0, 1), rise(z - cell[2], 0, 1)};
    double sum = 0.0;
    for (int corner = 0; corner < 8; ++corner) {
        const int dx = corner & 1;
        const int dy = (corner >> 1) & 1;
        const int dz = corner >> 2;
        const double weight = (dx ? f[0] : 1 - f[0]) * (dy ? f[1] : 1 - f[1]) * (dz ? f[2] : 1 - f[2]);
        sum += weight * latticeValue(seed, std::int64_t(cell[0]) + dx, std::int64_t(cell[1]) + dy,
                                     std::int64_t(cell[2]) + dz);
    }
    return sum;
}

double growth(double time) {
    return 0.7 + 0.3 * rise(time, 0.0, 2400.0);
}

} // namespace

StormModel::StormModel(std::uint32_t seed, double reach)
    : _seed(seed * 0x9e3779b9U + 1U), _reach(std::clamp(reach, 40.0 * KILOMETRE, 240.0 * KILOMETRE)) {}

StormModel::CellPlace StormModel::inCell(double x, double y, double z, double time) const {
    const double east = (x - 0.12 * _reach) / KILOMETRE - CELL_SPEED * CELL_EAST * time / KILOMETRE;
    const double north = (y + 0.18 * _reach) / KILOMETRE - CELL_SPEED * CELL_NORTH * time / KILOMETRE;
    return {east * CELL_EAST + north * CELL_NORTH, north * CELL_EAST - east * CELL_NORTH, z / KILOMETRE};
}

double StormModel::supercell(const CellPlace& p, double time) const {
    // The core leans over the vault with height, and falls off above 9 km.
    const double coreDistance =
        square((p.along - 1.0 - 0.3 * p.up) / 12.0) + square((p.left - 4.0 + 1.1 * p.up) / 11.0);
    double core = 48.0 + 17.0 * growth(time) - 4.0 * square((p.up - 5.0) / 5.0) -
                  3.0 * std::max(0.0, p.up - 9.0) - 30.0 * coreDistance;
    core -= 8.0 * std::max(0.0, p.up - 14.0);

    const double shower = 44.0 - 14.0 * (square((p.along - 22.0) / 22.0) + square((p.left - 6.0) / 10.0)) -
                          3.0 * std::max(0.0, p.up - 5.0);
    const double alongVault = p.along - VAULT_ALONG;
    const double leftOfVault = p.left - VAULT_LEFT;
    const double vaultDistance = std::hypot(alongVault, leftOfVault);
    const double behind = rise(-alongVault / std::max(vaultDistance, 0.1), -0.6, 0.4);
    const double hook = 50.0 * behind - 20.0 * square((vaultDistance - 6.0) / 2.5) -
                        6.0 * std::max(0.0, p.up - 3.0) - 60.0 * (1.0 - behind);

    const double spread = 8.0 + 0.35 * std::max(0.0, p.along);
    const double anvil = 34.0 - 0.2 * std::abs(p.along - 10.0) - 14.0 * square(p.left / spread) -
                         10.0 * square((p.up - 11.0) / 1.5) - 40.0 * rise(-p.along, 8.0, 20.0);

    const double rain = std::max({core, shower, hook});
    const double hollow =
        std::exp(-square(vaultDistance / VAULT_RADIUS)) * (1.0 - rise(p.up, VAULT_TOP - 1.5, VAULT_TOP));
    return std::max(rain - 45.0 * hollow, anvil);
}

double StormModel::lineFront(double y, double time) const {
    const double along = y - 0.15 * _reach;
    return -0.35 * _reach + LINE_SPEED * time - 0.3 * square(along) / (LINE_HALF_LENGTH * _reach);
}

double StormModel::squallLine(double x, double y, double z, double time) const {
    const double halfLength = LINE_HALF_LENGTH * _reach;
    const double along = y - 0.15 * _reach;
    const double up = z / KILOMETRE;
    const double ahead = (x - lineFront(y, time)) / KILOMETRE - 0.5 * up;
    const double cells = noise(_seed + 1, along / (14.0 * KILOMETRE), time / 1500.0, 0.0);
    const double ends = 70.0 * rise(std::abs(along), 0.8 * halfLength, 1.3 * halfLength);
    const double width = ahead > 0.0 ? 5.0 : 12.0;
    const double top = 8.5 + 3.0 * cells;
    return 49.0 + 8.0 * cells - ends - 22.0 * square(ahead / width) - 2.0 * std::max(0.0, up - 4.0) -
           6.0 * std::max(0.0, up - top);
}

double StormModel::stratiform(double x, double y, double z, double time) const {
    const double up = z / KILOMETRE;
    const double behind = (lineFront(y, time) - x) / KILOMETRE;
    const double middle = 0.2 * _reach / KILOMETRE;
    const double sides = square((y - 0.15 * _reach) / (0.5 * _reach));
    double rain = 31.0 - 16.0 * square((behind - middle) / (1.2 * middle)) - 14.0 * sides;
    rain += 5.0 * noise(_seed + 2, x / (25.0 * KILOMETRE), y / (25.0 * KILOMETRE), time / 1500.0);
    rain -= 40.0 * rise(-behind, -5.0, 10.0);
    rain += 9.0 * std::exp(-square((up - MELTING_LEVEL) / 0.4));
    return rain - 4.5 * std::max(0.0, up - MELTING_LEVEL - 0.4) -
           4.0 * rise(up, MELTING_LEVEL, MELTING_LEVEL + 0.8);
}

double StormModel::texture(double x, double y, double z) const {
    return 2.5 * noise(_seed + 3, x / (9.0 * KILOMETRE), y / (9.0 * KILOMETRE), z / (3.0 * KILOMETRE)) +
           1.5 * noise(_seed + 4, x / (4.0 * KILOMETRE), y / (4.0 * KILOMETRE), z / (1.5 * KILOMETRE));
}

double StormModel::rotation(const CellPlace& p, double time) const {
    constexpr double core = 4.0;
    const double distance = std::hypot(p.along - VAULT_ALONG, p.left - VAULT_LEFT);
    const double shape = distance < core ? distance / core : core / distance;
    return 30.0 * growth(time) * shape * rise(p.up, -1.0, 2.0) * (1.0 - rise(p.up, 7.0, 11.0));
}

StormModel::Vector StormModel::wind(const CellPlace& p, double time) const {
    const double level = std::min(p.up, 12.0);
    Vector air{6.0 + 2.7 * level, 8.0 - 0.2 * level, -7.0};
    const double along = p.along - VAULT_ALONG;
    const double left = p.left - VAULT_LEFT;
    const double distance = std::max(std::hypot(along, left), 0.1);
    // Counter-clockwise around the vault, outward at the storm's top.
    const double turn = rotation(p, time) / distance;
    const double out =
        18.0 * std::exp(-square((p.up - 12.5) / 1.5)) * std::min(distance / 12.0, 12.0 / distance) / distance;
    const double u = out * along - turn * left;
    const double v = out * left + turn * along;
    air.x += u * CELL_EAST - v * CELL_NORTH;
    air.y += u * CELL_NORTH + v * CELL_EAST;
    air.z += 35.0 * std::exp(-square(distance / VAULT_RADIUS)) * rise(p.up, 0.0, 4.0) *
             (1.0 - rise(p.up, 10.0, 14.0));
    return air;
}

StormModel::Air StormModel::at(double x, double y, double z, double time) const {
    const CellPlace place = inCell(x, y, z, time);
    const double loudest =
        std::max({supercell(place, time), squallLine(x, y, z, time), stratiform(x, y, z, time), NOTHING});
    const double range = std::max(std::hypot(x, y, z), KILOMETRE);
    const double faintest = std::max(-10.0, 20.0 * std::log10(range / (100.0 * KILOMETRE)));
    const double reflectivity = loudest + texture(x, y, z);
    if (reflectivity < faintest) {
        constexpr double none = std::numeric_limits<double>::quiet_NaN();
        return {none, none, none};
    }
    const Vector air = wind(place, time);
    const double velocity = (air.x * x + air.y * y + air.z * z) / range;
    const double width = 1.2 + 0.05 * std::max(0.0, reflectivity - 15.0) + 0.15 * rotation(place, time);
    return {reflectivity, velocity, width};
}
