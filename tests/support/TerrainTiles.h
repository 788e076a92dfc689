// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDtedLayout.h"
#include "QUORGeoProjection.h"
#include "TestFiles.h"

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QtEndian>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

/// Tiles as an independent writer would make them, and what the terrain tests share.
namespace TerrainTiles {

/// Height of a post; both arguments from 0 to 1, south to north and west to east.
using Land = std::function<int(double north, double east)>;

inline QByteArray srtm(const Land& land, int posts = 1201) {
    QByteArray bytes(qsizetype(posts) * posts * 2, '\0');
    char* post = bytes.data();
    for (int row = 0; row < posts; ++row) {
        for (int column = 0; column < posts; ++column, post += 2) {
            qToBigEndian(qint16(land(1.0 - double(row) / (posts - 1), double(column) / (posts - 1))), post);
        }
    }
    return bytes;
}

inline QByteArray dted(const QByteArray& lonLatOrigin, const Land& land) {
    QByteArray bytes(QUORDtedLayout::FILE_BYTES, ' ');
    bytes.replace(0, 54, "UHL1" + lonLatOrigin + "00300030NA  U              1201120");
    bytes.replace(54, 1, "1");
    bytes.replace(QUORDtedLayout::UHL_BYTES, 3, "DSI");
    for (int line = 0; line < 1201; ++line) {
        char* post = bytes.data() + 3428 + line * 2414 + 8;
        for (int i = 0; i < 1201; ++i, post += 2) {
            qToBigEndian(qint16(land(i / 1200.0, line / 1200.0)), post);
        }
    }
    return bytes;
}

inline QUORGeoProjection::CPtr projection(double lat, double lon,
                                          const QString& name = QStringLiteral("aeqd"),
                                          double radius = 6378137.0, double flattening = 298.257) {
    return std::make_shared<const QUORGeoProjection>(name, QUORCoordinate(lat, lon), radius, flattening);
}

/// The folder of real tiles, or empty.
inline QString realTiles() {
    return sampleDataPath(QStringLiteral("terrain"));
}

} // namespace TerrainTiles
