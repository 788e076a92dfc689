// SPDX-License-Identifier: MIT
#include "TestProduct.h"

#include <QFile>
#include <QtEndian>

#include <gtest/gtest.h>

#include <cmath>

namespace {

template <typename T>
void put(QByteArray& bytes, int offset, qint64 value) {
    qToLittleEndian<T>(T(value), bytes.data() + offset);
}

quint32 binaryAngle(double degrees) {
    return quint32(qint64(std::llround(degrees / 360.0 * 4294967296.0)));
}

} // namespace

TestProduct TestProduct::sri() {
    TestProduct product;
    product.productCode = 32;
    product.dataType = 13;
    product.itemSize = 2;
    product.zPoints = 1;
    product.prefix = QStringLiteral("SRI");
    product.suffix = QStringLiteral(".sri");
    return product;
}

QByteArray TestProduct::header() const {
    QByteArray bytes(640, '\0');
    const qint64 items = qint64(xPoints) * yPoints * zPoints;
    put<qint16>(bytes, 0, 27);
    put<qint32>(bytes, 4, totalSize.value_or(qint32(640 + items * itemSize)));
    put<qint16>(bytes, 12, 26);
    put<quint16>(bytes, 24, productCode);
    put<quint32>(bytes, 44, QTime(0, 0).secsTo(time.time()));
    put<quint16>(bytes, 50, time.date().year());
    put<quint16>(bytes, 52, time.date().month());
    put<quint16>(bytes, 54, time.date().day());
    const int grid[] = {xStep, yStep, zStep, xPoints, yPoints, zPoints, xRadar, yRadar, zRadar};
    for (int i = 0; i < 9; ++i) {
        put<qint32>(bytes, 100 + 4 * i, grid[i]);
    }
    put<quint16>(bytes, 142, dataType);
    put<quint8>(bytes, 158, projection);
    bytes.replace(422, 16, site.leftJustified(16, ' ', true));
    put<quint32>(bytes, 440, binaryAngle(latitude));
    put<quint32>(bytes, 444, binaryAngle(longitude));
    put<qint16>(bytes, 448, groundElevation);
    put<qint16>(bytes, 450, radarHeight);
    put<qint32>(bytes, 452, prf);
    put<quint16>(bytes, 462, prfMode);
    put<qint32>(bytes, 480, wavelength);
    put<quint16>(bytes, 504, pulseCode);
    put<quint32>(bytes, 552, earthRadius);
    put<quint32>(bytes, 556, inverseFlattening);
    return bytes;
}

QByteArray TestProduct::bytes() const {
    QByteArray result = header();
    for (int z = 0; z < zPoints; ++z) {
        for (int y = 0; y < yPoints; ++y) {
            for (int x = 0; x < xPoints; ++x) {
                const unsigned int value = fill ? fill(x, y, z) : 1;
                result.append(char(value & 0xff));
                if (itemSize == 2) {
                    result.append(char(value >> 8));
                }
            }
        }
    }
    return result;
}

QString TestProduct::fileName() const {
    return prefix + time.toString(QStringLiteral("yyMMddHHmmss")) + suffix;
}

void TestProduct::writeTo(const QString& path) const {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << qPrintable(path);
    const QByteArray content = bytes();
    ASSERT_EQ(file.write(content), content.size());
}

QString TestProduct::write(const QString& folder) const {
    const QString path = folder + QLatin1Char('/') + fileName();
    writeTo(path);
    return path;
}
