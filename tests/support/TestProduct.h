// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <functional>
#include <optional>

/// A product file to be: set the fields, then write it. The layout is written down here a second time, on
/// purpose, so that tests do not follow a mistake in the library's own table. By default a small one-byte
/// reflectivity volume around a site at 60 N 25 E.
struct TestProduct {
    QByteArray site = "TEST";
    int productCode = 3; ///< 1 PPI, 3 CAPPI, 10 VIL, 16 MAX, 32 SRI
    int dataType = 2;    ///< one byte: 2 Z, 3 V, 4 W; two bytes: 9 Z, 10 V, 11 W, 13 R
    QDateTime time = QDateTime({2024, 6, 1}, {12, 0, 0}, Qt::UTC);
    int xPoints = 4;
    int yPoints = 4;
    int zPoints = 3;
    int xStep = 100000; ///< centimetres
    int yStep = 100000;
    int zStep = 50000;
    int xRadar = 1500; ///< thousandths of a step
    int yRadar = 1500;
    int zRadar = 0;
    int itemSize = 1;
    double latitude = 60.0;
    double longitude = 25.0;
    int groundElevation = 100;
    int radarHeight = 20;
    int prf = 1000;
    int prfMode = 0;
    int wavelength = 533;
    int pulseCode = 0;
    int projection = 0;
    quint32 earthRadius = 637100000;
    quint32 inverseFlattening = 0;
    /// The element at (x, y, z); all elements are 1 without it.
    std::function<unsigned int(int, int, int)> fill;
    /// What the header says, where it shall differ from the truth.
    std::optional<qint32> totalSize;
    /// The first three letters of the file name and what follows the time.
    QString prefix = QStringLiteral("CAZ");
    QString suffix = QStringLiteral(".cap");

    /// A 2D rainfall product of two-byte elements, with a name to match.
    static TestProduct sri();

    QByteArray header() const;
    QByteArray bytes() const;
    QString fileName() const;
    /// Overwrites the file; a test failure when that is not possible.
    void writeTo(const QString& path) const;
    /// Under `fileName()` in that folder; returns the path.
    QString write(const QString& folder) const;
};
