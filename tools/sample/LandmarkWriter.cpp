// SPDX-License-Identifier: MIT
#include "LandmarkWriter.h"

#include "WholeFile.h"

#include <QTextStream>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr std::size_t TOWNS = 14;
constexpr int MAX_TRIES = 200;
constexpr double REACH_DEGREES = 1.6;
constexpr double MIN_DISTANCE_DEGREES = 0.25;
constexpr std::array PLACE_NAMES{"Port Veliar", "Montoril",   "Åsvik",      "Castell d'Orm",
                                 "Brevane",     "Sant Oriol", "Lindmoor",   "Ferrelles",
                                 "Žabrov",      "Aigualta",   "Hohenbrück", "Rocadoure",
                                 "Vila Marena", "Tresponts",  "Kallavesi",  "Puigferran"};
static_assert(PLACE_NAMES.size() >= TOWNS);

/// Evenly spread between 0 and 1.
class Dice {
public:
    explicit Dice(std::uint32_t seed) : _state(seed * 0x9e3779b9U + 1U) {}
    double roll() {
        _state = _state * 1664525U + 1013904223U;
        return double(_state >> 8) / 16777216.0;
    }

private:
    std::uint32_t _state;
};

} // namespace

std::vector<LandmarkWriter::Town> LandmarkWriter::makeTowns(std::uint32_t seed, double siteLat,
                                                            double siteLon) {
    const TerrainWriter land(seed, siteLat, siteLon);
    Dice dice(seed);
    std::vector<Town> towns;
    for (int i = 0; i < MAX_TRIES && towns.size() < TOWNS; ++i) {
        const double lat = siteLat + (2.0 * dice.roll() - 1.0) * REACH_DEGREES;
        const double lon = std::remainder(siteLon + (2.0 * dice.roll() - 1.0) * REACH_DEGREES, 360.0);
        const int altitude = land.heightAt(lat, lon);
        const bool crowded = std::any_of(towns.begin(), towns.end(), [&](const Town& town) {
            return std::hypot(town.lat - lat, town.lon - lon) < MIN_DISTANCE_DEGREES;
        });
        if (std::abs(lat) < 90.0 && altitude > 0 && altitude < 1200 && !crowded) {
            const int number = int(towns.size());
            towns.push_back(
                {QString::fromUtf8(PLACE_NAMES[towns.size()]), lat, lon, altitude, std::min(number / 3, 5)});
        }
    }
    return towns;
}

QString LandmarkWriter::toText(const std::vector<Town>& towns) {
    QString text;
    QTextStream out(&text);
    out << "[LANDMARKS]\nlandmarks\\size=" << towns.size() << '\n';
    for (std::size_t i = 0; i < towns.size(); ++i) {
        const Town& town = towns[i];
        const QString entry = QStringLiteral("landmarks\\") + QString::number(i + 1);
        out << entry << "\\label=" << town.name << '\n'
            << entry << "\\priority=" << town.priority << '\n'
            << entry << "\\location\\lat=" << QString::number(town.lat, 'f', 4) << '\n'
            << entry << "\\location\\lon=" << QString::number(town.lon, 'f', 4) << '\n'
            << entry << "\\location\\alt=" << town.altitude << '\n'
            << entry << "\\color\\r=1\n"
            << entry << "\\color\\g=0.97\n"
            << entry << "\\color\\b=0.86\n";
    }
    return text;
}

QString LandmarkWriter::write(const QString& folder, const std::vector<Town>& towns, QString& path) {
    path = folder + QStringLiteral("/QUOR3DLandmarks.conf");
    return writeWholeFile(path, toText(towns).toUtf8());
}
