// SPDX-License-Identifier: MIT
#pragma once

#include "QUORRadarQuantity.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <limits>
#include <optional>
#include <span>
#include <vector>

/// Values between files and products: a number, "no data" where nothing was measured, or "no echo" where
/// something was measured and nothing was there.
namespace QUORRadarValue {
inline constexpr float NO_DATA = std::numeric_limits<float>::quiet_NaN();
inline constexpr float NO_ECHO = -std::numeric_limits<float>::infinity();
inline bool isNoData(float value) {
    return value != value;
}
inline bool isNoEcho(float value) {
    return value == NO_ECHO;
}
} // namespace QUORRadarValue

struct QUORRadarSite {
    QString name; ///< as the file has it
    double latitude = 0.0;
    double longitude = 0.0;
    double altitude = 0.0;                 ///< of the antenna over the sea, metres
    std::optional<double> heightOfAntenna; ///< over the ground, metres
};

/// One quantity of one sweep: rays of equal length, packed into two bytes a gate.
struct QUORRadarMoment {
    static constexpr quint16 NO_DATA = 0;
    static constexpr quint16 NO_ECHO = 1;

    QUORRadarQuantity quantity = QUORRadarQuantity::Reflectivity;
    QString name;           ///< of the field in the file
    int gates = 0;          ///< of each ray
    double firstGate = 0.0; ///< distance of the middle of the first gate, metres
    double gateSpacing = 0.0;
    float scale = 1.0F; ///< a value is offset + scale * code
    float offset = 0.0F;
    std::vector<quint16> codes; ///< ray by ray

    float value(quint16 code) const {
        if (code <= NO_ECHO) {
            return code == NO_DATA ? QUORRadarValue::NO_DATA : QUORRadarValue::NO_ECHO;
        }
        return offset + scale * float(code);
    }
    /// Packs values; `step` is the file's own resolution, 0 for floating-point data. What the step resolves
    /// comes back exactly where the range of values allows it, within 1/65000 of the range otherwise.
    void pack(std::span<const float> values, double step);
    double farthestRange() const { return firstGate + (gates - 0.5) * gateSpacing; }
};

/// One turn of the antenna.
struct QUORRadarSweep {
    double fixedAngle = 0.0; ///< the elevation that the scan strategy asks for, degrees
    QDateTime time;
    double nyquist = 0.0;          ///< m/s; 0 when unknown
    double prf = 0.0;              ///< hertz, of the higher rate; 0 when unknown
    std::vector<float> azimuths;   ///< of the middle of each ray, degrees clockwise from north
    std::vector<float> elevations; ///< of each ray, degrees
    std::vector<QUORRadarMoment> moments;

    const QUORRadarMoment* find(QUORRadarQuantity quantity) const;
};

/// A Cartesian volume as a file holds it.
struct QUORRadarGrid {
    struct Field {
        QUORRadarQuantity quantity = QUORRadarQuantity::Reflectivity;
        QString name;
        std::vector<float> values; ///< x fastest, then y, then z
    };

    std::vector<double> x; ///< metres from the origin in the plane of the map, or degrees; ascending
    std::vector<double> y;
    std::vector<double> z; ///< metres above the antenna, ascending
    /// How the map library names the plane of x and y; empty for azimuthal equidistant around the site.
    QString projection;
    double earthRadius = 0.0;       ///< metres
    double inverseFlattening = 0.0; ///< 0 for a sphere
    std::vector<Field> fields;
};

/// What a reader found in one file, or what was joined from several: sweeps or a grid.
struct QUORRadarData {
    QString format;
    QUORRadarSite site;
    QDateTime time;          ///< nominal, UTC
    double wavelength = 0.0; ///< metres; 0 when unknown
    double beamWidth = 0.0;  ///< degrees; 0 when unknown
    bool isPiece = false;    ///< one sweep or less of a volume whose other sweeps come in other files
    bool hasValues = true;   ///< false once they were dropped; what there is of is still told
    std::vector<QUORRadarSweep> sweeps;
    std::optional<QUORRadarGrid> grid;
    QStringList leftOut; ///< fields that no product holds
    QStringList warnings;

    bool has(QUORRadarQuantity quantity) const;
    double highestNyquist() const;
    /// Bytes that the values take.
    std::size_t size() const;
    /// Keeps what tells of the data, for they may wait by the thousand.
    void dropValues();
};
