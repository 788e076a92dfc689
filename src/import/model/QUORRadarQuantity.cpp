// SPDX-License-Identifier: MIT
#include "QUORRadarQuantity.h"

#include <algorithm>

namespace {

using Quantity = QUORRadarQuantity;

struct NameRow {
    const char* name;
    Quantity quantity;
    double sign = 1.0;
};

/// Within a quantity the first name that a file holds is taken: corrected before measured, horizontal before
/// vertical polarisation, filtered before raw.
constexpr NameRow NAMES[] = {
    {"DBZH", Quantity::Reflectivity},
    {"DBZ", Quantity::Reflectivity},
    {"CORRECTED_REFLECTIVITY", Quantity::Reflectivity},
    {"CORRECTED_REFLECTIVITY_HORIZONTAL", Quantity::Reflectivity},
    {"REFLECTIVITY_AT_COR", Quantity::Reflectivity},
    {"ATTENUATION_CORRECTED_REFLECTIVITY_H", Quantity::Reflectivity},
    {"CZ", Quantity::Reflectivity},
    {"DT", Quantity::Reflectivity},
    {"DBZ_F", Quantity::Reflectivity},
    {"DBZ_CORR", Quantity::Reflectivity},
    {"REFLECTIVITY", Quantity::Reflectivity},
    {"REFLECTIVITY_HORIZONTAL", Quantity::Reflectivity},
    {"EQUIVALENT_REFLECTIVITY_FACTOR", Quantity::Reflectivity},
    {"REF", Quantity::Reflectivity},
    {"DZ", Quantity::Reflectivity},
    {"ZH", Quantity::Reflectivity},
    {"DBZHC", Quantity::Reflectivity},
    {"DBZV", Quantity::Reflectivity},
    {"UNCORRECTED_REFLECTIVITY_HORIZONTAL", Quantity::Reflectivity},
    {"TH", Quantity::Reflectivity},
    {"DBTH", Quantity::Reflectivity},
    {"DBT", Quantity::Reflectivity},
    {"TOTAL_POWER", Quantity::Reflectivity},
    {"TV", Quantity::Reflectivity},
    {"VRADDH", Quantity::Velocity},
    {"VRADH", Quantity::Velocity},
    {"VRAD", Quantity::Velocity},
    {"CORRECTED_VELOCITY", Quantity::Velocity},
    {"CORRECTED_VELOCITY_HORIZONTAL", Quantity::Velocity},
    {"DEALIASED_VELOCITY", Quantity::Velocity},
    {"VT", Quantity::Velocity},
    {"VELOCITY", Quantity::Velocity},
    {"VELOCITY_HORIZONTAL", Quantity::Velocity},
    {"MEAN_DOPPLER_VELOCITY", Quantity::Velocity},
    {"RADIAL_VELOCITY", Quantity::Velocity},
    {"VEL", Quantity::Velocity},
    {"VR", Quantity::Velocity},
    {"VE", Quantity::Velocity},
    {"VEL_F", Quantity::Velocity},
    {"VRADV", Quantity::Velocity},
    {"WRADH", Quantity::Width},
    {"WRAD", Quantity::Width},
    {"SPECTRUM_WIDTH", Quantity::Width},
    {"SPECTRAL_WIDTH", Quantity::Width},
    {"DOPPLER_SPECTRUM_WIDTH", Quantity::Width},
    {"WIDTH", Quantity::Width},
    {"SW", Quantity::Width},
    {"WIDTH_F", Quantity::Width},
    {"WRADV", Quantity::Width},
    {"RATE", Quantity::RainRate},
    {"RAIN_RATE", Quantity::RainRate},
    {"RAINFALL_RATE", Quantity::RainRate},
    {"RADAR_ESTIMATED_RAIN_RATE", Quantity::RainRate},
};

constexpr NameRow STANDARD_NAMES[] = {
    {"CORRECTED_EQUIVALENT_REFLECTIVITY_FACTOR", Quantity::Reflectivity},
    {"EQUIVALENT_REFLECTIVITY_FACTOR", Quantity::Reflectivity},
    {"EQUIVALENT_REFLECTIVITY_FACTOR_H", Quantity::Reflectivity},
    {"RADAR_EQUIVALENT_REFLECTIVITY_FACTOR_H", Quantity::Reflectivity},
    {"CORRECTED_RADIAL_VELOCITY_OF_SCATTERERS_AWAY_FROM_INSTRUMENT", Quantity::Velocity},
    {"RADIAL_VELOCITY_OF_SCATTERERS_AWAY_FROM_INSTRUMENT", Quantity::Velocity},
    {"RADIAL_VELOCITY_OF_SCATTERERS_AWAY_FROM_INSTRUMENT_H", Quantity::Velocity},
    {"RADIAL_VELOCITY_OF_SCATTERERS_TOWARD_INSTRUMENT", Quantity::Velocity, -1.0},
    {"RADIAL_VELOCITY_OF_SCATTERERS_TOWARDS_INSTRUMENT", Quantity::Velocity, -1.0},
    {"DOPPLER_SPECTRUM_WIDTH", Quantity::Width},
    {"DOPPLER_SPECTRUM_WIDTH_H", Quantity::Width},
    {"RADAR_DOPPLER_SPECTRUM_WIDTH_H", Quantity::Width},
    {"RAINFALL_RATE", Quantity::RainRate},
    {"LWE_PRECIPITATION_RATE", Quantity::RainRate},
    {"RADAR_ESTIMATED_RAIN_RATE", Quantity::RainRate},
};

struct UnitRow {
    Quantity quantity;
    const char* unit;
    double factor;
};
constexpr UnitRow UNITS[] = {
    {Quantity::Reflectivity, "dbz", 1.0},
    {Quantity::Reflectivity, "db", 1.0},
    {Quantity::Velocity, "m/s", 1.0},
    {Quantity::Velocity, "m s-1", 1.0},
    {Quantity::Velocity, "m s^-1", 1.0},
    {Quantity::Velocity, "ms-1", 1.0},
    {Quantity::Velocity, "meters_per_second", 1.0},
    {Quantity::Velocity, "meters per second", 1.0},
    {Quantity::Velocity, "meters/second", 1.0},
    {Quantity::Velocity, "metres per second", 1.0},
    {Quantity::RainRate, "mm/h", 1.0},
    {Quantity::RainRate, "mm/hr", 1.0},
    {Quantity::RainRate, "mm h-1", 1.0},
    {Quantity::RainRate, "mm hr-1", 1.0},
    {Quantity::RainRate, "m s-1", 3.6e6},
    {Quantity::RainRate, "m/s", 3.6e6},
    {Quantity::RainRate, "kg m-2 s-1", 3600.0},
};

const NameRow* findRow(const NameRow* first, const NameRow* last, const QString& name) {
    return std::find_if(first, last, [&name](const NameRow& row) {
        return name.compare(QLatin1String(row.name), Qt::CaseInsensitive) == 0;
    });
}

} // namespace

std::optional<QUORRadarQuantities::Match> QUORRadarQuantities::find(const QString& name,
                                                                    const QString& standardName) {
    if (const auto* row = findRow(std::begin(NAMES), std::end(NAMES), name); row != std::end(NAMES)) {
        const bool towards = standardName.contains(QLatin1String("toward"), Qt::CaseInsensitive);
        return Match{row->quantity, int(row - NAMES), towards ? -1.0 : row->sign};
    }
    if (const auto* row = findRow(std::begin(STANDARD_NAMES), std::end(STANDARD_NAMES), standardName);
        row != std::end(STANDARD_NAMES)) {
        return Match{row->quantity, int(std::size(NAMES)) + int(row - STANDARD_NAMES), row->sign};
    }
    return {};
}

std::optional<double> QUORRadarQuantities::unitFactor(QUORRadarQuantity quantity, const QString& unit) {
    const QString given = unit.simplified().toLower();
    if (given.isEmpty() || given == QLatin1String("unitless") || given == QLatin1String("1")) {
        return 1.0;
    }
    const Quantity kind = quantity == Quantity::Width ? Quantity::Velocity : quantity;
    for (const UnitRow& row : UNITS) {
        if (row.quantity == kind && given == QLatin1String(row.unit)) {
            return row.factor;
        }
    }
    return {};
}

char QUORRadarQuantities::letter(QUORRadarQuantity quantity) {
    return "ZVWR"[int(quantity)];
}

std::optional<QUORRadarQuantity> QUORRadarQuantities::fromLetter(QChar letter) {
    for (const QUORRadarQuantity quantity : ALL) {
        if (letter.toUpper() == QLatin1Char(QUORRadarQuantities::letter(quantity))) {
            return quantity;
        }
    }
    return {};
}

QString QUORRadarQuantities::describe(QUORRadarQuantity quantity) {
    constexpr std::array texts{"reflectivity (dBZ)", "radial velocity (m/s)", "spectrum width (m/s)",
                               "rain rate (mm/h)"};
    return QString::fromLatin1(texts[std::size_t(quantity)]);
}
