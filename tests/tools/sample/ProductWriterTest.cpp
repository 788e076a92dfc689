// SPDX-License-Identifier: MIT
#include "ProductWriter.h"

#include "QUORFile.h"
#include "QUORGeoProjection.h"
#include "TestFiles.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

/// A header whose fields all differ from each other and from their defaults.
SampleProduct unusualProduct() {
    SampleProduct product;
    product.type = SampleProduct::Velocity8;
    product.time = QDateTime(QDate(2019, 11, 30), QTime(23, 59, 58), Qt::UTC);
    product.points = {5, 4, 3};
    product.stepsCm = {110000, 120000, 30000};
    product.radar = {2100, 1900, -700};
    product.site = "T\xfcrm 7";
    product.latitude = -33.25;
    product.longitude = -120.75;
    product.groundElevationM = -12;
    product.radarHeightM = 45;
    product.prf = 1000;
    product.prfMode = 1;
    product.wavelength = 533;
    product.earthRadiusCm = 637100100;
    product.inverseFlattening = 300000000;
    for (std::uint16_t i = 0; i < 60; ++i) {
        product.values.push_back(std::uint16_t(i + 1));
    }
    return product;
}

} // namespace

TEST(ProductWriter, FileReadsBackFieldByField) {
    const QTemporaryDir dir;
    const SampleProduct product = unusualProduct();
    const QString path = dir.filePath(ProductWriter::fileName(product));
    ASSERT_EQ(ProductWriter::write(product, path), QString());

    const QUORFile file(path);
    ASSERT_TRUE(file.isValid());
    EXPECT_EQ(file.getGridError(), QString());
    EXPECT_EQ(file.getName(), QStringLiteral("CAV191130235958.cap"));
    EXPECT_EQ(file.getTime(), QStringLiteral("191130235958"));
    EXPECT_EQ(file.getDataTime(), product.time);
    EXPECT_EQ(file.getProduct(), QStringLiteral("CAPPI"));
    EXPECT_EQ(file.getConfiguration(), QStringLiteral("V"));
    EXPECT_EQ(file.getSite(), QStringLiteral("T\u00dcRM 7"));
    EXPECT_EQ(file.getXPoints(), 5);
    EXPECT_EQ(file.getYPoints(), 4);
    EXPECT_EQ(file.getZPoints(), 3);
    EXPECT_EQ(file.getXScale(), 110000);
    EXPECT_EQ(file.getYScale(), 120000);
    EXPECT_EQ(file.getZScale(), 30000);
    EXPECT_EQ(file.getXRadar(), 2100);
    EXPECT_EQ(file.getYRadar(), 1900);
    EXPECT_EQ(file.getZRadar(), -700);
    EXPECT_EQ(file.getGroundElevation(), -12);
    EXPECT_EQ(file.getRadarElevation(), 33);
    EXPECT_NEAR(file.getSiteCoordinates().getLat(), -33.25, 1e-6);
    EXPECT_NEAR(file.getSiteCoordinates().getLon(), -120.75, 1e-6);
    EXPECT_EQ(file.getProjectionTypeProj4(), QStringLiteral("aeqd"));
    EXPECT_DOUBLE_EQ(file.getEarthRadius(), 6371001.0);
    EXPECT_DOUBLE_EQ(file.getEarthInvFlattening(), 300.0);
    EXPECT_EQ(file.getRawType(), SampleProduct::Velocity8);
    EXPECT_EQ(file.getDataType(), QUORDataType(3, 1000, 1, 533, 0));
    EXPECT_DOUBLE_EQ(file.getDataType().absoluteToDisplayValue(255), ProductWriter::nyquistVelocity(product));
    EXPECT_EQ(file.getItemSize(), 1);
    EXPECT_EQ(file.getTotalFileSize(), 640 + 60);

    SampleProduct other = product;
    other.projection = 1;
    other.pulseCode = 2;
    other.code = SampleProduct::Max;
    other.points[2] = 1;
    other.values.resize(20);
    const QString flat = dir.filePath(ProductWriter::fileName(other));
    ASSERT_EQ(ProductWriter::write(other, flat), QString());
    const QUORFile flatFile(flat);
    EXPECT_EQ(flatFile.getName(), QStringLiteral("MAX191130235958.max"));
    EXPECT_EQ(flatFile.getProduct(), QStringLiteral("MAX"));
    EXPECT_EQ(flatFile.getProjectionTypeProj4(), QStringLiteral("merc"));
    EXPECT_DOUBLE_EQ(flatFile.getDataType().absoluteToDisplayValue(255),
                     ProductWriter::nyquistVelocity(other));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 2);
}

TEST(ProductWriter, CellsLieWhereTheFormatPutsThem) {
    const QTemporaryDir dir;
    for (const std::uint16_t type : {SampleProduct::Reflectivity8, SampleProduct::Reflectivity16}) {
        SampleProduct product = unusualProduct();
        product.type = type;
        const QString path = dir.filePath(QStringLiteral("x"));
        ASSERT_EQ(ProductWriter::write(product, path), QString());
        const QByteArray bytes = readFile(path);
        const int size = QUORFile(path).getItemSize();
        ASSERT_EQ(size, type == SampleProduct::Reflectivity8 ? 1 : 2);
        const int x = 3, y = 2, z = 1;
        const char* cell = bytes.constData() + 640 + size * (x + 5 * (y + 4 * z));
        EXPECT_EQ(size == 1 ? std::uint8_t(*cell) : qFromLittleEndian<std::uint16_t>(cell), 34);
    }
}

TEST(ProductWriter, PhysicalValuesComeBackThroughTheReader) {
    struct Row {
        std::uint16_t type;
        double low, high, tolerance; ///< tolerance relative for rain, absolute for the others
    };
    const SampleProduct scan;
    const double nyquist = ProductWriter::nyquistVelocity(scan);
    const Row rows[] = {{SampleProduct::Reflectivity8, -31.5, 95.0, 0.25},
                        {SampleProduct::Reflectivity16, -31.5, 95.0, 0.005},
                        {SampleProduct::Velocity8, -33.0, 33.0, nyquist / 254.0},
                        {SampleProduct::Velocity16, -90.0, 90.0, 0.005},
                        {SampleProduct::Width8, 0.2, 32.0, nyquist / 512.0},
                        {SampleProduct::Width16, 0.01, 60.0, 0.005},
                        {SampleProduct::RainRate16, 0.1, 400.0, 3e-4}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.type);
        const QUORDataType type(row.type, scan.prf, scan.prfMode, scan.wavelength, scan.pulseCode);
        for (int i = 0; i <= 500; ++i) {
            const double value = row.low + (row.high - row.low) * i / 500;
            const std::uint16_t stored = ProductWriter::encode(value, row.type, nyquist);
            const bool rain = row.type == SampleProduct::RainRate16;
            const double tolerance = rain ? row.tolerance * value : row.tolerance;
            ASSERT_NEAR(type.absoluteToDisplayValue(stored), value, tolerance * 1.0001) << i;
            ASSERT_EQ(stored, type.displayToAbsoluteValue(value)) << value;
        }
        const double none = std::numeric_limits<double>::quiet_NaN();
        EXPECT_EQ(ProductWriter::encode(none, row.type, nyquist), type.getNoDataValue());
        for (const double extreme : {-1e6, 1e6}) {
            const std::uint16_t stored = ProductWriter::encode(extreme, row.type, nyquist);
            EXPECT_GE(stored, type.getMinAbsValue());
            EXPECT_LE(stored, type.getMaxAbsValue());
        }
    }
}

TEST(ProductWriter, OneByteVelocityIsFolded) {
    const QUORDataType type(SampleProduct::Velocity8, 1242, 0, 1070, 0);
    const double nyquist = 1070.0 * 1242.0 / 40000.0;
    for (const auto& [value, folded] :
         {std::pair{40.0, 40.0 - 2 * nyquist}, std::pair{-50.0, -50.0 + 2 * nyquist},
          std::pair{100.0, 100.0 - 4 * nyquist}, std::pair{20.0, 20.0}}) {
        const std::uint16_t stored = ProductWriter::encode(value, SampleProduct::Velocity8, nyquist);
        EXPECT_NEAR(type.absoluteToDisplayValue(stored), folded, 0.14) << value;
    }
}

TEST(ProductWriter, FailureSaysWhereAndLeavesNothingBehind) {
    const QTemporaryDir dir;
    writeFile(dir.filePath(QStringLiteral("file")), {});
    QDir(dir.path()).mkdir(QStringLiteral("taken"));
    for (const QString& name : {QStringLiteral("taken"), QStringLiteral("file/x")}) {
        const QString path = dir.filePath(name);
        EXPECT_TRUE(ProductWriter::write(unusualProduct(), path).startsWith(path + QStringLiteral(": ")));
    }
    const auto all = QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot;
    EXPECT_EQ(QDir(dir.path()).entryList(all),
              QStringList({QStringLiteral("file"), QStringLiteral("taken")}));
}
