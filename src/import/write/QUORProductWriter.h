// SPDX-License-Identifier: MIT
#pragma once

#include "QUORGridShape.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <span>

/// A product to be written: physical values with all that its header says.
struct QUORProductContent {
    int product = 3; ///< code of the product header
    int type = 2;    ///< data type code
    QDateTime time;
    QString site; ///< as `QUORProductWriter::siteName` makes it
    double latitude = 0.0;
    double longitude = 0.0;
    int groundElevation = 0; ///< metres over the sea
    int radarHeight = 0;     ///< metres over the ground
    QUORGridShape shape;     ///< a flat product has one level
    double earthRadius = 6378137.0;
    double inverseFlattening = 298.257223; ///< 0 for a sphere
    int prf = 0;                           ///< hertz
    int prfMode = 0;
    int wavelength = 0; ///< hundredths of a centimetre
    /// Stored where nothing was found; nothing for no data.
    std::optional<double> noEcho;
};

/// Writes product files, as they are read by `QUORFile`.
class QUORProductWriter {
public:
    /// Upper-case letters, digits, "_" and "-" as far as the header holds them; what else a name has becomes
    /// "_", letters with marks lose them. A longer name ends with four letters made of all of it, and a site
    /// without name is called after its place (degrees), so that two sites keep apart.
    static QString siteName(const QString& name, double latitude, double longitude);
    /// The product's three letters, the time key, the site and the extension, such as
    /// CAZ210729123848-KLOT.cap.
    static QString fileName(const QUORProductContent& content);
    /// `values` as many as the shape has points, x fastest, then y, then z.
    static QByteArray toBytes(const QUORProductContent& content, std::span<const float> values);
    /// The file appears whole under its name or not at all; the folder is made. Throws a QUORWriteError that
    /// names the file.
    static void publish(const QByteArray& bytes, const QString& path);
};
