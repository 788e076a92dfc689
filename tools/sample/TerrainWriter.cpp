// SPDX-License-Identifier: MIT
#include "TerrainWriter.h"

#include "WholeFile.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace {

// Places are degrees from the site, north and east.
constexpr double VOLCANO_NORTH = 0.55;
constexpr double VOLCANO_EAST = -0.75;
constexpr double VOLCANO_RADIUS = 0.2;
constexpr double VOLCANO_HEIGHT = 3000.0;
constexpr double CRATER_RADIUS = 0.02;
constexpr double VOID_NORTH = 0.85;
constexpr double VOID_EAST = 0.15;
constexpr double VOID_RADIUS = 0.04;

struct Direction {
    double x, y;
};
constexpr std::array<Direction, 12> DIRECTIONS{{{1.0, 0.0},
                                                {0.866, 0.5},
                                                {0.5, 0.866},
                                                {0.0, 1.0},
                                                {-0.5, 0.866},
                                                {-0.866, 0.5},
                                                {-1.0, 0.0},
                                                {-0.866, -0.5},
                                                {-0.5, -0.866},
                                                {0.0, -1.0},
                                                {0.5, -0.866},
                                                {0.866, -0.5}}};

/// The slope, between -1 and 1, that a lattice point gives to the place `dx`, `dy` from it.
double latticeSlope(std::uint32_t seed, int x, int y, double dx, double dy) {
    std::uint32_t h = seed ^ (std::uint32_t(x) * 0x9e3779b1U) ^ (std::uint32_t(y) * 0x85ebca77U);
    h = (h ^ (h >> 16)) * 0x7feb352dU;
    h = (h ^ (h >> 15)) * 0x846ca68bU;
    const Direction& direction = DIRECTIONS[(h ^ (h >> 16)) % DIRECTIONS.size()];
    return dx * direction.x + dy * direction.y;
}

/// Smooth, between 0 and 1, varying over a distance of about 1.
double noise(std::uint32_t seed, double x, double y) {
    const int ix = int(std::floor(x));
    const int iy = int(std::floor(y));
    const double dx = x - ix;
    const double dy = y - iy;
    const auto smooth = [](double f) { return f * f * f * (f * (f * 6.0 - 15.0) + 10.0); };
    const double south = std::lerp(latticeSlope(seed, ix, iy, dx, dy),
                                   latticeSlope(seed, ix + 1, iy, dx - 1.0, dy), smooth(dx));
    const double north = std::lerp(latticeSlope(seed, ix, iy + 1, dx, dy - 1.0),
                                   latticeSlope(seed, ix + 1, iy + 1, dx - 1.0, dy - 1.0), smooth(dx));
    return 0.5 + 0.7 * std::lerp(south, north, smooth(dy));
}

/// Octaves of noise, each half as high, twice as fine and turned; `shape` bends one octave.
template <class Shape>
double octaves(std::uint32_t seed, double x, double y, int count, Shape shape) {
    double sum = 0.0;
    double share = 0.5;
    for (int i = 0; i < count; ++i, share *= 0.5) {
        sum += share * shape(noise(seed + std::uint32_t(i), x, y));
        const double turned = 1.6 * x + 1.2 * y;
        y = 1.6 * y - 1.2 * x;
        x = turned;
    }
    return sum;
}

double rise(double v, double from, double to) {
    const double f = std::clamp((v - from) / (to - from), 0.0, 1.0);
    return f * f * (3.0 - 2.0 * f);
}

} // namespace

TerrainWriter::TerrainWriter(std::uint32_t seed, double siteLat, double siteLon)
    : _seed(seed * 0x9e3779b9U + 7U), _siteLat(siteLat), _siteLon(siteLon) {}

/// Above 0 on land; the coast runs from the south-west to the north-east, past the site's south-east.
double TerrainWriter::landShare(double lat, double lon) const {
    const double north = lat - _siteLat;
    const double east = lon - _siteLon;
    const double shore = octaves(_seed, lon * 1.7, lat * 1.7, 5, [](double n) { return n; }) - 0.5;
    return std::tanh(0.3 + 0.45 * north - 0.4 * east) + 0.6 * shore;
}

double TerrainWriter::volcano(double lat, double lon) const {
    const double north = lat - _siteLat - VOLCANO_NORTH;
    const double east = (lon - _siteLon - VOLCANO_EAST) * std::cos(_siteLat * std::numbers::pi / 180.0);
    const double distance = std::hypot(north, east);
    if (distance >= VOLCANO_RADIUS) {
        return 0.0;
    }
    const double slope = 1.0 - distance / VOLCANO_RADIUS;
    const double gullies = 0.9 + 0.2 * noise(_seed + 40, std::atan2(north, east) * 5.0, distance * 12.0);
    return VOLCANO_HEIGHT * slope * slope * gullies -
           350.0 * rise(CRATER_RADIUS - distance, 0.0, CRATER_RADIUS);
}

int TerrainWriter::heightAt(double lat, double lon) const {
    const double land = landShare(lat, lon);
    if (land <= 0.0) {
        return 0;
    }
    if (std::hypot(lat - _siteLat - VOID_NORTH, lon - _siteLon - VOID_EAST) < VOID_RADIUS) {
        return VOID_HEIGHT;
    }
    const double hills = octaves(_seed + 10, lon * 6.0, lat * 6.0, 5, [](double n) { return n; });
    const double ranges = octaves(_seed + 20, lon * 1.9, lat * 1.9, 6, [](double n) {
        const double crest = 1.0 - std::abs(2.0 * n - 1.0);
        return crest * crest;
    });
    const double plain =
        rise(std::hypot(lat - _siteLat - VOLCANO_NORTH, lon - _siteLon - VOLCANO_EAST), 0.1, 0.5);
    const double inland = rise(land, 0.0, 0.9) * plain;
    const double height = 700.0 * hills * rise(land, 0.0, 0.4) + 3600.0 * ranges * ranges * inland * inland;
    return std::max(1, int(height + std::max(0.0, volcano(lat, lon))));
}

QString TerrainWriter::fileName(int lat, int lon) {
    return QStringLiteral("%1%2%3%4.hgt")
        .arg(lat < 0 ? QLatin1Char('S') : QLatin1Char('N'))
        .arg(std::abs(lat), 2, 10, QLatin1Char('0'))
        .arg(lon < 0 ? QLatin1Char('W') : QLatin1Char('E'))
        .arg(std::abs(lon), 3, 10, QLatin1Char('0'));
}

QByteArray TerrainWriter::makeTile(int lat, int lon) const {
    QByteArray bytes(qsizetype(POSTS) * POSTS * 2, '\0');
    char* post = bytes.data();
    constexpr int LAST = POSTS - 1;
    for (int row = 0; row < POSTS; ++row) {
        for (int column = 0; column < POSTS; ++column, post += 2) {
            // Whole posts from the equator and Greenwich: the same number on either side of a seam.
            const int north = lat * LAST + LAST - row;
            const int east = lon * LAST + column;
            qToBigEndian(qint16(heightAt(double(north) / LAST, double(east) / LAST)), post);
        }
    }
    return bytes;
}

QString TerrainWriter::writeTiles(const QString& folder, int degrees,
                                  const std::function<void(const QString& path)>& written) const {
    const int south = std::max(int(std::floor(_siteLat - degrees)), -90);
    const int north = std::min(int(std::ceil(_siteLat + degrees)), 90);
    for (int lat = south; lat < north; ++lat) {
        for (int lon = int(std::floor(_siteLon - degrees)); lon < int(std::ceil(_siteLon + degrees)); ++lon) {
            const int name = lon < -180 ? lon + 360 : lon >= 180 ? lon - 360 : lon;
            const QString path = folder + QLatin1Char('/') + fileName(lat, name);
            QString error = writeWholeFile(path, makeTile(lat, lon));
            if (!error.isEmpty()) {
                return error;
            }
            written(path);
        }
    }
    return {};
}
