// SPDX-License-Identifier: MIT
#include "QUORImporter.h"

#include "QUORFile.h"
#include "QUORImportError.h"
#include "QUORProductWriter.h"
#include "QUORReaderProcess.h"
#include "RadarFiles.h"
#include "TestFiles.h"
#include "TestVolume.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include <cmath>

namespace {

using Quantity = QUORRadarQuantity;

/// Z 45, V 7 and W 2 everywhere in reach, clear air beyond 60 km.
TestVolume simpleVolume() {
    TestVolume volume;
    const auto within = [](float value) {
        return [value](double, double range) { return range < 60000.0 ? value : QUORRadarValue::NO_ECHO; };
    };
    for (const double elevation : {0.5, 2.0, 5.0}) {
        QUORRadarSweep& sweep = volume.addSweep(elevation, 20.0);
        TestVolume::addMoment(sweep, Quantity::Reflectivity, within(45.0F));
        TestVolume::addMoment(sweep, Quantity::Velocity, within(7.0F));
        TestVolume::addMoment(sweep, Quantity::Width, within(2.0F));
    }
    return volume;
}

class QUORImporterTest : public testing::Test {
protected:
    QUORImporterTest() {
        options.folder3d = folder.filePath("a/3d");
        options.folder2d = folder.filePath("a/2d");
        options.grid.points = {80, 60, 6};
        options.grid.steps = {2000.0, 2500.0, 500.0};
    }
    /// Under which name a product was written; empty when it was not.
    static QString pathOf(const QUORImportResult& result, const char* product, const char* configuration) {
        for (const QUORImportedProduct& item : result.products) {
            if (item.product == QLatin1String(product) &&
                item.configuration == QLatin1String(configuration)) {
                return item.path;
            }
        }
        return {};
    }
    /// The display value of an element of a product; -1000 for no data.
    static double valueAt(const QString& path, int x, int y, int z) {
        const QUORFile file(path);
        const QByteArray bytes = readFile(path);
        const int size = file.getItemSize();
        const qsizetype place = 640 + size * (x + file.getXPoints() * (y + qsizetype(file.getYPoints()) * z));
        const unsigned element =
            size == 1 ? quint8(bytes[place]) : qFromLittleEndian<quint16>(bytes.data() + place);
        return element == 0 ? -1000.0 : file.getDataType().absoluteToDisplayValue(element);
    }

    QTemporaryDir folder;
    QUORImportOptions options;
};

} // namespace

TEST_F(QUORImporterTest, WritesProductsThatTheServiceReads) {
    const TestVolume volume = simpleVolume();
    for (const int itemSize : {1, 2}) {
        options.itemSize = itemSize;
        const QUORImportResult result = QUORImporter(options).import(volume);
        ASSERT_EQ(result.products.size(), 8U);
        const struct {
            const char* product;
            const char* configuration;
            double value;    ///< 20 km east of the radar, 500 m up
            double accuracy; ///< of one byte
        } rows[] = {{"CAPPI", "Z", 45.0, 0.25},  {"CAPPI", "V", 7.0, 0.1}, {"CAPPI", "W", 2.0, 0.05},
                    {"CAPPI", "R", 23.68, 0.02}, {"MAX", "Z", 45.0, 0.25}, {"SRI", "R", 23.68, 0.02},
                    {"VIL", "", 1.0, 0.0},       {"PPI", "Z", 45.0, 0.25}};
        for (const auto& row : rows) {
            const QString path = pathOf(result, row.product, row.configuration);
            const QUORFile file(path);
            ASSERT_TRUE(file.isValid()) << row.product << row.configuration;
            EXPECT_EQ(file.getGridError(), QString()) << row.product;
            EXPECT_EQ(file.getProduct(), row.product);
            EXPECT_EQ(file.getConfiguration(), row.configuration);
            EXPECT_EQ(file.getSite(), "TEST");
            EXPECT_EQ(file.getTime(), "240601123005");
            EXPECT_EQ(file.getDataTime(), volume.time);
            EXPECT_NEAR(file.getSiteCoordinates().getLat(), 50.0, 1e-6);
            EXPECT_EQ(file.getRadarElevation(), 400);
            EXPECT_EQ(file.getGroundElevation(), 380);
            EXPECT_EQ(file.getXRadar(), 40000);
            EXPECT_EQ(file.getYScale(), 250000);
            const bool isVolume = row.product[0] == 'C';
            EXPECT_EQ(file.getDimensions(), isVolume ? 3 : 2);
            EXPECT_NEAR(valueAt(path, 50, 30, isVolume ? 1 : 0), row.value, row.accuracy) << row.product;
            EXPECT_EQ(valueAt(path, 0, 0, isVolume ? 5 : 0), -1000.0) << "out of reach";
        }
        // Clear air is no echo in a volume, and nothing in a flat product.
        EXPECT_EQ(valueAt(pathOf(result, "CAPPI", "Z"), 75, 30, 3), -31.5);
        EXPECT_EQ(valueAt(pathOf(result, "CAPPI", "R"), 75, 30, 3), 0.0);
        EXPECT_EQ(valueAt(pathOf(result, "CAPPI", "V"), 75, 30, 3), -1000.0);
        EXPECT_EQ(valueAt(pathOf(result, "MAX", "Z"), 75, 30, 0), -1000.0);
        EXPECT_TRUE(pathOf(result, "CAPPI", "Z").endsWith("/a/3d/CAZ240601123005-TEST.cap"));
        EXPECT_TRUE(pathOf(result, "SRI", "R").endsWith("/a/2d/SRI240601123005-TEST.sri"));
        EXPECT_EQ(QDir(options.folder3d).entryList(QDir::Files | QDir::Hidden).size(), 4);
    }
}

TEST_F(QUORImporterTest, PutsTheNyquistVelocityIntoTheHeader) {
    const struct {
        double nyquist;
        double prf;        ///< that the file tells, 0 when it does not
        double wavelength; ///< metres
        float speed;
        int mode; ///< of one-byte velocities
    } rows[] = {{20.0, 0.0, 0.0533, 19.0F, 0},
                {48.0, 1200.0, 0.0533, 40.0F, 2},
                {20.0, 0.0, 0.0533, 35.0F, 1},
                {8.0, 1000.0, 0.032, 8.0F, 0}};
    options.itemSize = 1;
    for (const auto& row : rows) {
        TestVolume volume;
        volume.wavelength = row.wavelength;
        QUORRadarSweep& sweep = volume.addSweep(1.0, row.nyquist);
        sweep.prf = row.prf;
        TestVolume::addMoment(sweep, Quantity::Velocity, [&](double, double) { return row.speed; });
        const QString path = pathOf(QUORImporter(options).import(volume), "CAPPI", "V");
        const QUORFile file(path);
        EXPECT_GE(file.getDataType().getMaxDisplayValue(), std::max(row.nyquist * 0.99, row.speed * 0.99));
        EXPECT_NEAR(valueAt(path, 50, 30, 1), double(row.speed), row.nyquist / 60.0);
        EXPECT_EQ(file.getHeader()[462], char(row.mode)) << row.nyquist;
    }
    TestVolume unknown = simpleVolume();
    unknown.wavelength = 0.0;
    const QUORImportResult result = QUORImporter(options).import(unknown);
    EXPECT_EQ(QUORFile(pathOf(result, "CAPPI", "V")).getItemSize(), 2);
    EXPECT_EQ(result.warnings.size(), 2);
}

TEST_F(QUORImporterTest, ChoosesAGridFromTheDataOrTheRequest) {
    const TestVolume volume = simpleVolume(); // 100 km, 5 degrees: 9.3 km high
    constexpr std::nullopt_t none = std::nullopt;
    const struct {
        QUORGridRequest request;
        std::array<int, 3> points;
        std::array<double, 3> steps;
    } rows[] = {
        {{none, none, none, none}, {250, 250, 32}, {800.0, 800.0, 300.0}},
        {{none, none, 50000.0, 12000.0}, {250, 250, 31}, {400.0, 400.0, 400.0}},
        {{{{100, 100, 25}}, none, 100000.0, 12000.0}, {100, 100, 25}, {2000.0, 2000.0, 500.0}},
        {{none, {{1000.0, 2000.0, 250.0}}, 50000.0, 5000.0}, {100, 50, 21}, {1000.0, 2000.0, 250.0}},
    };
    for (const auto& row : rows) {
        const QUORGridShape shape = row.request.choose(volume);
        EXPECT_EQ(shape.points, row.points);
        EXPECT_EQ(shape.steps, row.steps);
        EXPECT_EQ(shape.radar[0], shape.points[0] / 2.0);
    }
    EXPECT_THROW((QUORGridRequest{{{100000, 100, 25}}, none, none, none}.choose(volume)), QUORImportError);
    EXPECT_THROW((QUORGridRequest{{{4000, 4000, 400}}, none, none, none}.choose(volume)), QUORImportError);
}

TEST_F(QUORImporterTest, KeepsEvenGridsAndResamplesOthers) {
    options.grid = {};
    const QString path = folder.filePath("grid.nc");
    RadarFiles::writeGrid(path);
    const QUORRadarData kept = QUORReaderProcess().read(path);
    QUORImportResult result = QUORImporter(options).import(kept);
    const QString z = pathOf(result, "CAPPI", "Z");
    const QUORFile file(z);
    EXPECT_EQ(file.getGridError(), QString());
    EXPECT_EQ(file.getXPoints(), 4);
    EXPECT_EQ(file.getYPoints(), 3);
    EXPECT_EQ(file.getZPoints(), 3); // the file's levels of 500 and 1000 m are the second and the third
    EXPECT_EQ(file.getXRadar(), 1000);
    EXPECT_EQ(file.getYScale(), 200000);
    EXPECT_EQ(valueAt(z, 0, 0, 0), -1000.0);
    EXPECT_NEAR(valueAt(z, 0, 0, 1), 9.0, 1e-9);
    EXPECT_EQ(valueAt(z, 1, 1, 1), -1000.0);
    EXPECT_NEAR(valueAt(z, 3, 2, 2), 16.0, 1e-9);
    EXPECT_TRUE(result.warnings.isEmpty());
    EXPECT_TRUE(pathOf(result, "PPI", "Z").isEmpty());

    options.grid.height = 1500.0; // the file's plane and steps stay
    result = QUORImporter(options).plan(kept);
    EXPECT_EQ(result.shape.points, (std::array{4, 3, 4}));
    EXPECT_EQ(result.shape.steps, (std::array{1000.0, 2000.0, 500.0}));
    EXPECT_EQ(result.shape.radar[0], 1.0);
    options.grid = {};
    options.grid.range = 4000.0; // the file's levels stay
    result = QUORImporter(options).plan(kept);
    EXPECT_EQ(result.shape.points, (std::array{8, 4, 3}));
    EXPECT_EQ(result.shape.steps, (std::array{1000.0, 2000.0, 500.0}));
    options.grid = {};

    // As wide as a square of it could not be.
    QUORRadarData oblong = kept;
    oblong.grid->fields.resize(1);
    oblong.grid->x.clear();
    for (int i = 0; i < 3900; ++i) {
        oblong.grid->x.push_back(i * 1000.0);
    }
    oblong.grid->fields[0].values.assign(3900 * kept.grid->y.size() * kept.grid->z.size(), 10.0F);
    options.grid.height = 4000.0;
    result = QUORImporter(options).plan(oblong);
    EXPECT_EQ(result.shape.points, (std::array{3900, 3, 9}));
    options.grid.height = 2000000.0;
    EXPECT_THROW(QUORImporter(options).plan(oblong), QUORRequestError) << "4001 levels";
    options.grid = {};

    QUORRadarData uneven = kept;
    uneven.grid->x = {-1000.0, 0.0, 500.0, 2000.0};
    uneven.grid->z = {450.0, 950.0};
    result = QUORImporter(options).import(uneven);
    EXPECT_EQ(result.shape.points[0], 7);
    EXPECT_EQ(result.shape.steps[2], 500.0);
    EXPECT_EQ(result.warnings.size(), 2);
    EXPECT_NEAR(valueAt(pathOf(result, "CAPPI", "Z"), 0, 0, 1), 9.0 + 12.0 * 0.1, 0.006);

    QUORRadarData mapped = kept;
    mapped.grid->projection = "+proj=lcc +lat_1=-10 +lat_2=-14 +lat_0=-12 +lon_0=131 +a=6378137 +b=6378137";
    for (double& y : mapped.grid->y) {
        y -= 27800.0; // the site's place on that map
    }
    result = QUORImporter(options).import(mapped);
    EXPECT_EQ(result.warnings.size(), 1);
    const std::array<double, 2> radar = result.shape.radar;
    EXPECT_NEAR(valueAt(pathOf(result, "CAPPI", "Z"), int(radar[0]), int(radar[1]), 2), 18.0, 1.01);
}

TEST_F(QUORImporterTest, LeavesNothingBehindWhatItCannotWrite) {
    options.quantities = {Quantity::RainRate};
    options.flat = {QStringLiteral("SRI")};
    TestVolume speeds;
    TestVolume::addMoment(speeds.addSweep(1.0), Quantity::Velocity, [](double, double) { return 1.0F; });
    EXPECT_THROW(QUORImporter(options).import(speeds), QUORImportError);
    writeFile(folder.filePath("a"), "no folder");
    EXPECT_THROW(QUORImporter(options).import(simpleVolume()), QUORWriteError);
    EXPECT_EQ(QUORImporter(options).plan(simpleVolume()).products.size(), 2U);
}

TEST_F(QUORImporterTest, KeepsWhatItMadeOfMoreSweeps) {
    const TestVolume whole = simpleVolume();
    TestVolume part = whole;
    part.sweeps.resize(1);
    part.sweeps[0].moments.resize(2);
    QUORImporter importer(options);
    const QString path = pathOf(importer.import(whole), "CAPPI", "Z");
    const QByteArray before = readFile(path);
    EXPECT_THROW(importer.import(part), QUORImportError);
    EXPECT_EQ(readFile(path), before);
    TestVolume width = part;
    width.sweeps = whole.sweeps;
    for (QUORRadarSweep& sweep : width.sweeps) {
        sweep.moments.erase(sweep.moments.begin()); // other quantities of it are as good as before
    }
    EXPECT_EQ(importer.import(width).products.size(), 2U);
    EXPECT_EQ(importer.import(whole).products.size(), 8U);
    EXPECT_EQ(QUORImporter(options).import(part).products.size(), 7U) << "another run";
    EXPECT_NE(readFile(path), before);
}

TEST(QUORProductWriter, MakesSiteNamesThatFileNamesAndHeadersHold) {
    const std::pair<const char*, const char*> rows[] = {
        {"klbb", "KLBB"},
        {"Gunn_Pt", "GUNN_PT"},
        {"R\u00f8st \u00c5sen", "ROST_ASEN"},
        {"a/b\\c..d", "A_B_C_D"},
        {"sixteen letters!", "SIXTEEN_LETTERS"},
        {" a very long name of a radar", "A_VERY_LONG-1FD0"},
        {"National Weather Radar North", "NATIONAL_WE-AD7A"},
        {"National Weather Radar South", "NATIONAL_WE-2A25"},
        {"KaSACR-1", "KASACR-1"},
        {"\u6771\u4eac", "AT_N5001_W00325"},
        {"", "AT_N5001_W00325"},
    };
    for (const auto& [name, expected] : rows) {
        EXPECT_EQ(QUORProductWriter::siteName(QString::fromUtf8(name), 50.006, -3.25).toStdString(),
                  expected);
    }
}
