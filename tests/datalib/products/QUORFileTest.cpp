// SPDX-License-Identifier: MIT
#include "QUORFile.h"

#include "LogCapture.h"
#include "QUORGeoProjection.h"
#include "TestFiles.h"
#include "TestProduct.h"

#include <QFile>
#include <QTemporaryDir>

#include <QtEndian>

#include <gtest/gtest.h>

#include <array>

#include <limits>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class QUORFileTest : public testing::Test {
protected:
    QString pathOf(const QString& name) const { return _dir.filePath(name); }
    QString writeBytes(const QByteArray& bytes) const {
        const QString path = pathOf(QStringLiteral("CAZ240601120000.cap"));
        writeFile(path, bytes);
        return path;
    }
    QUORFile load(const TestProduct& product) const { return QUORFile(product.write(_dir.path())); }

    QTemporaryDir _dir;
};

} // namespace

TEST_F(QUORFileTest, ClassifiesByWhatIsThere) {
    const QByteArray whole = TestProduct().bytes();
    QByteArray wrongFirst = whole;
    wrongFirst[0] = 28;
    QByteArray wrongSecond = whole;
    wrongSecond[12] = 27;
    TestProduct tiny;
    tiny.totalSize = 50;
    const struct {
        const char* name;
        QByteArray bytes;
        QUORFile::Status status;
        int lines;
    } rows[] = {
        {"empty", {}, QUORFile::NoData, 0},
        {"100 bytes of something", QByteArray(100, 'x'), QUORFile::NoData, 0},
        {"half of the second identifier", whole.left(13), QUORFile::NoData, 0},
        {"first 100 bytes of a product", whole.left(100), QUORFile::Incomplete, 3},
        {"header only", whole.left(640), QUORFile::Incomplete, 3},
        {"one byte missing", whole.chopped(1), QUORFile::Incomplete, 3},
        {"complete", whole, QUORFile::Valid, 0},
        {"longer", whole + "tail", QUORFile::Valid, 0},
        {"short, but as long as it says", tiny.header().left(50), QUORFile::Valid, 0},
        {"wrong first identifier", wrongFirst, QUORFile::Invalid, 2},
        {"wrong second identifier", wrongSecond, QUORFile::Invalid, 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const LogCapture log;
        const QUORFile file(writeBytes(row.bytes));
        EXPECT_EQ(file.getStatus(), row.status);
        EXPECT_EQ(file.isValid(), row.status == QUORFile::Valid);
        EXPECT_EQ(file.getGeoProjection() != nullptr, file.isValid());
        EXPECT_EQ(log.count(QStringLiteral("DATA ")) + log.count(QStringLiteral(" size: ")), row.lines);
        if (row.status == QUORFile::Incomplete) {
            EXPECT_TRUE(
                log.contains(QStringLiteral("D: DATA FILE SIZE SMALLER THAN SHOULD: ") + _dir.path()));
            EXPECT_TRUE(log.contains(QStringLiteral("D: Expected size: 688")));
            EXPECT_TRUE(log.contains(QStringLiteral("D: Real size: ") + QString::number(row.bytes.size())));
        }
    }
}

TEST_F(QUORFileTest, KnowsWhetherItsProductIsStillThere) {
    const QByteArray whole = TestProduct().bytes();
    QByteArray other = whole;
    other[44] = 5;
    const QUORFile file(writeBytes(whole));
    for (const auto& [bytes, same] : {std::pair{whole, true},
                                      {whole + "tail", true},
                                      {other, false},
                                      {whole.chopped(1), false},
                                      {QByteArray(), false}}) {
        writeBytes(bytes);
        EXPECT_EQ(file.isUnchanged(), same) << bytes.size();
    }
    QFile::remove(file.getPath());
    EXPECT_FALSE(file.isUnchanged());
}

TEST_F(QUORFileTest, WhatCannotBeReadSaysWhy) {
    const QString missing = pathOf(QStringLiteral("CAZ240601120000.cap"));
    const QString fifo = pathOf(QStringLiteral("fifo"));
    ASSERT_EQ(::mkfifo(qPrintable(fifo), 0600), 0);
    const QString gone = QStringLiteral("E: QUORFile does not exist: ");
    const QString closed = QStringLiteral("E: Cannot open QUORfile: ");
    struct Row {
        QString path;
        QUORFile::Status status;
        QString error;
    };
    QList<Row> rows{{missing, QUORFile::NotReadable, gone},
                    {QString(), QUORFile::NotReadable, gone},
                    {fifo, QUORFile::CannotOpen, closed},
                    {_dir.path(), QUORFile::CannotOpen, closed},
                    {QStringLiteral("/dev/zero"), QUORFile::CannotOpen, closed},
                    // The first page of an address space is never mapped: reading there is an input error.
                    {QStringLiteral("/proc/self/mem"), QUORFile::NotReadable, {}}};
    if (::geteuid() != 0) {
        rows.append({TestProduct::sri().write(_dir.path()), QUORFile::CannotOpen, closed});
        ASSERT_EQ(::chmod(qPrintable(rows.last().path), 0), 0);
    }
    for (const Row& row : rows) {
        SCOPED_TRACE(qPrintable(row.path));
        const LogCapture log;
        EXPECT_EQ(QUORFile(row.path).getStatus(), row.status);
        EXPECT_EQ(log.lines().filter(QStringLiteral("E: ")),
                  row.error.isEmpty() ? QStringList() : QStringList{row.error + row.path});
        EXPECT_FALSE(row.status == QUORFile::NotReadable && QUORFile::canBeRead(row.path));
    }
}

TEST_F(QUORFileTest, AnswersFromTheHeader) {
    TestProduct product;
    product.points = {5, 6, 2};
    product.stepsCm = {100, 250, 400};
    product.radar = {2000, 2500, -700};
    product.type = 3;
    product.groundElevationM = -3;
    product.earthRadiusCm = 637813700;
    product.inverseFlattening = 298257223;
    product.projection = 1;
    product.longitude = -88.25;
    product.time = QDateTime({2021, 7, 29}, {23, 59, 59}, Qt::UTC);
    const QString path = pathOf(QStringLiteral("CAZ210729235959.cap.gz"));
    product.writeTo(path);
    const QUORFile file(path);
    ASSERT_TRUE(file.isValid());
    EXPECT_EQ(file.getSite(), QStringLiteral("TEST"));
    EXPECT_EQ(file.getProduct(), QStringLiteral("CAPPI"));
    EXPECT_EQ(file.getConfiguration(), QStringLiteral("V"));
    EXPECT_EQ(file.getTime(), QStringLiteral("210729235959"));
    EXPECT_EQ(file.getBaseName(), QStringLiteral("CAZ210729235959"));
    EXPECT_EQ(file.getXRadar(), 2000);
    EXPECT_EQ(file.getYRadar(), 2500);
    EXPECT_EQ(file.getZRadar(), -700);
    EXPECT_EQ(file.getDimensions(), 3);
    EXPECT_DOUBLE_EQ(file.getWidthM(), 4.0);
    EXPECT_DOUBLE_EQ(file.getLengthM(), 12.5);
    EXPECT_DOUBLE_EQ(file.getHeightM(), 4.0);
    EXPECT_EQ(file.getPointM(1, 2, 3), (QUORPoint3D{1.0, 5.0, 12.0}));
    EXPECT_EQ(file.getPointElevationM(9, 9, 2), 8.0);
    EXPECT_EQ(file.getGroundElevation(), -3);
    EXPECT_EQ(file.getRadarElevation(), 17);
    EXPECT_DOUBLE_EQ(file.getEarthRadius(), 6378137.0);
    EXPECT_DOUBLE_EQ(file.getEarthInvFlattening(), 298.257223);
    EXPECT_EQ(file.getProjection(), QStringLiteral("Mercator"));
    EXPECT_EQ(file.getProjectionTypeProj4(), QStringLiteral("merc"));
    EXPECT_NEAR(file.getSiteCoordinates().getLat(), 60.0, 1e-6);
    EXPECT_NEAR(file.getSiteCoordinates().getLon(), -88.25, 1e-6);
    EXPECT_EQ(file.getDataType(), QUORDataType(3, 1000, 0, 533, 0));
    EXPECT_EQ(file.getDataTime(), product.time);
    EXPECT_EQ(file.getItemCount(), 60);
    EXPECT_EQ(file.getTotalFileSize(), 700);
    EXPECT_EQ(file.getDataSize(), 60);
    EXPECT_EQ(QByteArray(file.getHeader().data(), 640), product.header());
    EXPECT_EQ(file.getGridError(), QString());
}

TEST_F(QUORFileTest, NamesProductsAndDefaultsOfTheEarth) {
    const struct {
        int code;
        const char* name;
    } rows[] = {{1, "PPI"}, {2, ""}, {3, "CAPPI"}, {10, "VIL"}, {16, "MAX"}, {32, "SRI"}};
    for (const auto& row : rows) {
        TestProduct product;
        product.code = row.code;
        EXPECT_EQ(load(product).getProduct(), QLatin1String(row.name));
    }
    TestProduct product = TestProduct::sri();
    product.type = 5;
    product.earthRadiusCm = 0;
    product.inverseFlattening = 0;
    product.projection = 2;
    const QUORFile file = load(product);
    EXPECT_TRUE(file.getConfiguration().isNull());
    EXPECT_EQ(file.getDataType().getRawType(), -1);
    EXPECT_EQ(file.getDimensions(), 2);
    EXPECT_EQ(file.getEarthRadius(), 6371000.0);
    EXPECT_EQ(file.getEarthInvFlattening(), 3.4028234663852886e+38);
    EXPECT_TRUE(file.getProjection().isNull());
    EXPECT_TRUE(file.getProjectionTypeProj4().isNull());
}

TEST_F(QUORFileTest, CleansSiteNames) {
    const struct {
        QByteArray field;
        QString site;
    } rows[] = {
        {"ABCDEFGHIJKLMNOP", QStringLiteral("ABCDEFGHIJKLMNOP")},
        {"  two  words   ", QStringLiteral("TWO WORDS")},
        {QByteArray("ab\0cd", 5), QStringLiteral("AB")},
        {"../a/b\x07\x1b[1m", QStringLiteral(".._A_B__[1M")},
        {"M\xe4rket", QStringLiteral(u"M\u00c4RKET")},
        {"", QString()},
    };
    for (const auto& row : rows) {
        TestProduct product;
        product.site = row.field;
        EXPECT_EQ(load(product).getSite(), row.site);
    }
}

TEST_F(QUORFileTest, ItemSizeFollowsTheDataSize) {
    for (const auto& [dataSize, itemSize] : {std::pair{1000, 1}, {2000, 2}, {1500, 2}}) {
        TestProduct product;
        product.points = {10, 10, 10};
        product.itemSize = 2;
        product.totalSize = 640 + dataSize;
        EXPECT_EQ(load(product).getItemSize(), itemSize) << dataSize;
    }
}

TEST_F(QUORFileTest, RefusesGridsThatCannotBeBuilt) {
    const struct {
        const char* name;
        void (*spoil)(TestProduct&);
    } rows[] = {
        {"total size below the header", [](TestProduct& p) { p.totalSize = 100; }},
        {"negative total size", [](TestProduct& p) { p.totalSize = -5; }},
        {"total size smaller than the grid", [](TestProduct& p) { p.type = 9, p.totalSize = 660; }},
        {"grid larger than the file", [](TestProduct& p) { p.totalSize = 641; }},
        {"element size against data type", [](TestProduct& p) { p.type = 9, p.itemSize = 1; }},
        {"data type against element size", [](TestProduct& p) { p.itemSize = 2; }},
        {"step of 0", [](TestProduct& p) { p.stepsCm[0] = 0; }},
        {"negative step", [](TestProduct& p) { p.stepsCm[2] = -1; }},
        {"absurd step", [](TestProduct& p) { p.stepsCm[1] = std::numeric_limits<int>::max(); }},
        {"earth of a centimetre", [](TestProduct& p) { p.earthRadiusCm = 1; }},
        {"earth too large", [](TestProduct& p) { p.earthRadiusCm = 700000000; }},
        {"flattened earth", [](TestProduct& p) { p.inverseFlattening = 99000000; }},
        {"unknown projection", [](TestProduct& p) { p.projection = 7; }},
        {"latitude beyond the pole", [](TestProduct& p) { p.latitude = 120.0; }},
        {"velocities without a wavelength", [](TestProduct& p) { p.type = 3, p.wavelength = 0; }},
        {"widths without pulses", [](TestProduct& p) { p.type = 4, p.prf = 0; }},
        {"negative wavelength", [](TestProduct& p) { p.type = 3, p.wavelength = -500; }},
        {"no time", [](TestProduct& p) { p.time = QDateTime(); }},
    };
    for (const auto& row : rows) {
        TestProduct product;
        row.spoil(product);
        product.prefix = QStringLiteral("BAD");
        const QUORFile file = load(product);
        EXPECT_TRUE(file.isValid()) << row.name;
        EXPECT_FALSE(file.getGridError().isEmpty()) << row.name;
    }
    EXPECT_FALSE(QUORFile(pathOf(QStringLiteral("none"))).getGridError().isEmpty());
    TestProduct flat = TestProduct::sri();
    flat.stepsCm[2] = 0;
    EXPECT_EQ(load(flat).getGridError(), QString());
}

TEST_F(QUORFileTest, HostilePointCountsNeitherOverflowNorPass) {
    constexpr int most = std::numeric_limits<int>::max();
    constexpr int least = std::numeric_limits<int>::min();
    const std::array<int, 3> rows[] = {{0, 4, 3},         {4, 1, 3},           {-4, -4, 3},
                                       {4, 4, 0},         {30000, 30000, 1},   {most, most, most},
                                       {least, least, 1}, {least, most, least}};
    for (const auto& points : rows) {
        QByteArray bytes = TestProduct().bytes();
        for (int i = 0; i < 3; ++i) {
            qToLittleEndian<qint32>(points[std::size_t(i)], bytes.data() + 112 + 4 * i);
        }
        const QUORFile file(writeBytes(bytes));
        EXPECT_TRUE(file.isValid());
        EXPECT_FALSE(file.getGridError().isEmpty()) << points[0] << " " << points[1] << " " << points[2];
    }
}

TEST_F(QUORFileTest, ImpossibleTimesAreInvalid) {
    const struct {
        int offset;
        quint32 value;
    } rows[] = {{52, 13}, {52, 0}, {54, 31}, {44, 86400}, {44, 0xffffffff}};
    for (const auto& row : rows) {
        QByteArray bytes = TestProduct().bytes();
        if (row.offset == 44) {
            qToLittleEndian<quint32>(row.value, bytes.data() + 44);
        } else {
            qToLittleEndian<quint16>(quint16(row.value), bytes.data() + row.offset);
        }
        EXPECT_FALSE(QUORFile(writeBytes(bytes)).getDataTime().isValid()) << row.offset << " " << row.value;
    }
}

TEST_F(QUORFileTest, SharesProjectionsByTheirArguments) {
    TestProduct product;
    const auto first = load(product).getGeoProjection();
    EXPECT_EQ(first, load(product).getGeoProjection());
    product.longitude = 26.0;
    EXPECT_NE(first, load(product).getGeoProjection());
    product.longitude = 25.0;
    product.projection = 1;
    EXPECT_NE(first, load(product).getGeoProjection());
    EXPECT_TRUE(first->isReady());
}
