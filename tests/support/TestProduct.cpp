// SPDX-License-Identifier: MIT
#include "TestProduct.h"

#include "TestFiles.h"

#include <QtEndian>

TestProduct::TestProduct() {
    site = "TEST";
    time = QDateTime({2024, 6, 1}, {12, 0, 0}, Qt::UTC);
    points = {4, 4, 3};
    stepsCm = {100000, 100000, 50000};
    radar = {1500, 1500, 0};
    latitude = 60.0;
    longitude = 25.0;
    groundElevationM = 100;
    radarHeightM = 20;
    prf = 1000;
    wavelength = 533;
    earthRadiusCm = 637100000;
    inverseFlattening = 0;
}

TestProduct TestProduct::sri() {
    TestProduct product;
    product.code = Sri;
    product.type = RainRate16;
    product.points[2] = 1;
    return product;
}

QByteArray TestProduct::header() const {
    return bytes().first(640);
}

QByteArray TestProduct::bytes() const {
    QByteArray result = ProductWriter::toBytes(*this);
    const bool isWide = itemSize.value_or(ProductWriter::itemSize(type)) == 2;
    for (int z = 0; z < points[2]; ++z) {
        for (int y = 0; y < points[1]; ++y) {
            for (int x = 0; x < points[0]; ++x) {
                const unsigned int value = fill ? fill(x, y, z) : 1;
                result.append(char(value & 0xff));
                if (isWide) {
                    result.append(char(value >> 8));
                }
            }
        }
    }
    qToLittleEndian<qint32>(totalSize.value_or(qint32(result.size())), result.data() + 4);
    return result;
}

QString TestProduct::fileName() const {
    const QString name = ProductWriter::fileName(*this);
    return prefix.isEmpty() ? name : prefix + name.mid(3);
}

void TestProduct::writeTo(const QString& path) const {
    writeFile(path, bytes());
}

QString TestProduct::write(const QString& folder) const {
    const QString path = folder + QLatin1Char('/') + fileName();
    writeTo(path);
    return path;
}
