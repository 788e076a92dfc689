// SPDX-License-Identifier: MIT
#pragma once

#include "QUORByteCursor.h"
#include "QUORRadarQuantity.h"

#include <QDateTime>
#include <QStringList>

#include <optional>
#include <vector>

/// One ray of a NEXRAD Level II file: message 31, after the interface document 2620002 for RDA and RPG.
struct QUORLevel2Radial {
    /// The radial status of the message.
    enum Status { BeginsElevation = 0, EndsVolume = 4, BeginsVolume = 3, BeginsLastElevation = 5 };

    struct Moment {
        QUORRadarQuantity quantity = QUORRadarQuantity::Reflectivity;
        QString name;
        double firstGate = 0.0;   ///< metres
        double gateSpacing = 0.0; ///< metres
        double scale = 1.0;       ///< a value is (stored - offset) / scale
        double offset = 0.0;
        /// As stored, but for the first two: 0 is no data here (range folded in the file, 1), 1 is no echo
        /// (below the threshold in the file, 0).
        std::vector<quint16> codes;
    };
    struct Volume {
        double latitude;
        double longitude;
        int groundElevation; ///< metres over the sea
        int antennaHeight;   ///< metres over the ground
    };

    QDateTime time;
    double azimuth = 0.0;
    double elevation = 0.0;
    int elevationNumber = 0;
    int status = 1;
    std::optional<Volume> volume;
    double nyquist = 0.0;          ///< m/s
    double unambiguousRange = 0.0; ///< metres
    std::vector<Moment> moments;
    QStringList leftOut; ///< moments that no product holds

    bool begins() const {
        return status == BeginsElevation || status == BeginsVolume || status == BeginsLastElevation;
    }

    /// `message` begins behind the message header. Throws a QUORImportError.
    static QUORLevel2Radial parse(const QUORByteCursor& message);
    /// Days since 1970-01-01, which is day 1, and milliseconds of the day.
    static QDateTime toTime(quint32 days, quint32 milliseconds);
};
