// SPDX-License-Identifier: MIT
#include "QUORDataFrame.h"

#include "LogCapture.h"
#include "QUORGeoProjection.h"
#include "QUORLandmarkSet.h"
#include "QUORTerrainSet.h"
#include "ScratchHome.h"
#include "TestStore.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QSettings>

namespace {

const QString SITE = QStringLiteral("TEST");
const QString MOMENT = QStringLiteral("240601120000");
const QString CAPPI = QStringLiteral("CAPPI");
const QString Z = QStringLiteral("Z");
const QString SRI = QStringLiteral("SRI");
const QString RELOADED_3D = QStringLiteral("3D data not available or parameters changed");
const QString RELOADED_2D = QStringLiteral("2D data not available or parameters changed");
const QString RELOADED_TERRAIN = QStringLiteral("Terrain data not available or parameters changed");

class QUORDataFrameTest : public testing::Test {
protected:
    void write3d(const TestProduct& product) const { product.write(_store.folder("3d")); }
    void write2d(int seconds, SampleProduct::Code code = SampleProduct::Sri) const {
        TestProduct product = TestProduct::sri();
        product.code = code;
        product.time = product.time.addSecs(seconds);
        product.write(_store.folder("2d"));
    }
    static void request(QUORDataFrame& frame, const QString& moment = MOMENT, int window = 600) {
        frame.setSite(SITE);
        frame.setMoment(moment, window);
        frame.setDataParams3d(CAPPI, Z);
        frame.setDataParams2d(SRI);
        frame.setDataParamsTerrain(100000.0);
    }

    /// Asks for that and loads it.
    static void load(QUORDataFrame& frame, const QString& moment = MOMENT) {
        request(frame, moment);
        ASSERT_TRUE(frame.updateData3d());
        frame.updateDataRest();
    }

    ScratchHome _home;
    TestStore _store;
};

TEST_F(QUORDataFrameTest, LoadsWhatBelongsToAProduct) {
    ScratchHome::writeSettings(QStringLiteral("QUOR3DLandmarks.conf"),
                               QStringLiteral("[LANDMARKS]\nlandmarks/size=2\nlandmarks/1/label=In\n"
                                              "landmarks/1/location/lat=61\nlandmarks/1/location/lon=24\n"
                                              "landmarks/2/label=Out\nlandmarks/2/location/lat=50\n"
                                              "landmarks/2/location/lon=24\n"));
    write3d({});
    write2d(120);
    const auto loaded = std::make_shared<QUORDataFrame>(_store.open());
    QUORDataFrame& frame = *loaded;
    load(frame);
    EXPECT_EQ(frame.getData3d()->getTime(), MOMENT);
    ASSERT_TRUE(frame.getData2d());
    EXPECT_EQ(frame.getData2d()->getProduct(), SRI);
    EXPECT_EQ(frame.getProductSettings()->getVolumeValueLow(), -31.5);
    EXPECT_EQ(frame.getGeoProjection(), frame.getData3d()->getFile()->getGeoProjection());
    EXPECT_EQ(frame.getLowerBound(), QUORCoordinate(56.0, 17.0));
    EXPECT_EQ(frame.getUpperBound(), QUORCoordinate(64.0, 33.0));
    EXPECT_EQ(frame.getTerrainSet()->getProjection(), frame.getGeoProjection());
    ASSERT_EQ(frame.getLandmarkSet()->getLandmarks().size(), 1);
    EXPECT_EQ(frame.getLandmarkSet()->getCentre(), frame.getGeoProjection()->getReferenceLocation());

    const QUORDataFrame copy(QUORDataFrame::CPtr{loaded});
    EXPECT_EQ(copy.getData3d(), frame.getData3d());
    EXPECT_EQ(copy.getTerrainSet(), frame.getTerrainSet());
    EXPECT_EQ(copy.getUpperBound(), frame.getUpperBound());
    EXPECT_EQ(copy.getProduct2d(), SRI);
    EXPECT_FALSE(copy.getProductSettings());
}

TEST_F(QUORDataFrameTest, LoadsAgainOnlyWhatChanged) {
    TestProduct first;
    TestProduct later;
    later.time = later.time.addSecs(300);
    write3d(first);
    write3d(later);
    write2d(0);
    QUORDataFrame frame(_store.open());
    const struct {
        const char* name;
        std::function<void()> change;
        bool volume;
        bool flat;
        bool terrain;
    } rows[] = {
        {"first", [&] { request(frame); }, true, true, true},
        {"nothing", [] {}, false, false, false},
        {"moment", [&] { frame.setMoment(QStringLiteral("240601120500"), 600); }, true, false, false},
        {"window", [&] { frame.setMoment(QStringLiteral("240601120500"), 200); }, false, true, false},
        {"2D product", [&] { frame.setDataParams2d(QStringLiteral("VIL")); }, false, true, false},
        {"range", [&] { frame.setDataParamsTerrain(600000.0); }, false, true, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        row.change();
        const LogCapture log;
        EXPECT_TRUE(frame.updateData3d());
        frame.updateDataRest();
        EXPECT_EQ(log.contains(RELOADED_3D), row.volume);
        EXPECT_EQ(log.contains(RELOADED_2D), row.flat);
        EXPECT_EQ(log.contains(RELOADED_TERRAIN), row.terrain);
    }
    EXPECT_FALSE(frame.getData2d());
    frame.resetFrame();
    EXPECT_FALSE(frame.getData3d() || frame.getTerrainSet() || frame.getLandmarkSet() ||
                 frame.getGeoProjection());
    EXPECT_EQ(frame.getSite() + frame.getMoment() + frame.getProduct() + frame.getProduct2d(), QString());
}

TEST_F(QUORDataFrameTest, GivenProductSettingsLastUntilTheResetAndAreNotCopied) {
    write3d({});
    const QUORDataStore::Ptr store = _store.open();
    const QUORFileLeaf::CPtr leaf = store->get3DTop()->findLeaf(SITE, CAPPI, Z, MOMENT);
    ASSERT_TRUE(leaf);
    const auto given = std::make_shared<QUORProductSettings>(CAPPI, Z, leaf->getFile()->getDataType(),
                                                             QUORProductSettings::NotSaved);
    const auto frame = std::make_shared<QUORDataFrame>(store);
    frame->setData3d(leaf);
    frame->setProductSettings(given);
    EXPECT_TRUE(frame->updateData3d());
    EXPECT_EQ(frame->getProductSettings(), given);

    QUORDataFrame copy{QUORDataFrame::CPtr(frame)};
    EXPECT_FALSE(copy.getProductSettings());
    EXPECT_TRUE(copy.updateData3d());
    EXPECT_TRUE(copy.getProductSettings() && copy.getProductSettings() != given);

    frame->resetFrame();
    frame->setData3d(leaf);
    EXPECT_TRUE(frame->updateData3d());
    EXPECT_TRUE(frame->getProductSettings() && frame->getProductSettings() != given);
}

TEST_F(QUORDataFrameTest, TakesAProductThatTheStoreHasNoMore) {
    write3d({});
    const QUORFileLeaf::CPtr leaf = _store.open()->get3DTop()->findLeaf(SITE, CAPPI, Z, MOMENT);
    ASSERT_TRUE(leaf);
    ASSERT_TRUE(QFile::remove(leaf->getPath()));
    QUORDataFrame frame(_store.open());
    frame.setData3d(leaf);
    EXPECT_TRUE(frame.updateData3d());
    EXPECT_EQ(frame.getData3d(), leaf);
    EXPECT_EQ(frame.getSite() + frame.getProduct() + frame.getConfiguration() + frame.getMoment(),
              SITE + CAPPI + Z + MOMENT);
}

TEST_F(QUORDataFrameTest, TakesTerrainOfTheSameMapOnly) {
    TestProduct sphere;
    TestProduct ellipsoid;
    ellipsoid.time = ellipsoid.time.addSecs(60);
    ellipsoid.earthRadiusCm = 637813700;
    ellipsoid.inverseFlattening = 298257223;
    write3d(sphere);
    write3d(ellipsoid);
    QUORDataFrame frame(_store.open());
    load(frame);
    load(frame, QStringLiteral("240601120100"));
    EXPECT_EQ(frame.getTerrainSet()->getProjection()->getInverseFlattening(),
              frame.getGeoProjection()->getInverseFlattening());
}

TEST_F(QUORDataFrameTest, FindsTwoDimensionalDataWithinHalfTheWindow) {
    TestProduct later;
    later.time = later.time.addSecs(300);
    TestProduct otherSite;
    otherSite.site = "OTHER";
    otherSite.prefix = QStringLiteral("CBZ");
    write3d({});
    write3d(later);
    write3d(otherSite);
    write2d(400);
    QUORDataFrame frame(_store.open());
    load(frame);
    EXPECT_FALSE(frame.getData2d()) << "400 s away, the search looks 300 s";
    load(frame, QStringLiteral("240601120500"));
    EXPECT_TRUE(frame.getData2d());
    load(frame);
    EXPECT_TRUE(frame.getData2d()) << "what is loaded is kept within the whole window";
    frame.setSite(QStringLiteral("OTHER"));
    ASSERT_TRUE(frame.updateData3d());
    frame.updateDataRest();
    EXPECT_FALSE(frame.getData2d()) << "of another site";
}

TEST_F(QUORDataFrameTest, LoadsInOneCall) {
    TestProduct volume;
    volume.points = {241, 241, 2};
    write3d(volume);
    write2d(0);
    write2d(60, SampleProduct::Max);
    const QUORDataFrame frame(_store.open(), SITE, MOMENT, CAPPI, Z, {}, 600, 1.0);
    EXPECT_EQ(frame.getProduct2d(), QStringLiteral("MAX")) << "the first in key order";
    EXPECT_NEAR(frame.getTerrainRange(), 169706.0, 1.0) << "half the diagonal of 240 km x 240 km";
    EXPECT_EQ(QUORDataFrame(_store.open(), SITE, MOMENT, CAPPI, Z, SRI, 600, 1.0).getData2d()->getProduct(),
              SRI);

    const QUORDataFrame failed(_store.open(), SITE, QStringLiteral("990101000000"), CAPPI, Z, {}, 600, 1.0);
    const auto settings = std::make_shared<const QUORGeneralSettings>();
    EXPECT_EQ(failed.getLegend(settings), QStringList{QStringLiteral("Data not available")});
    EXPECT_EQ(failed.getDataId(settings), QStringLiteral("(No data loaded)"));
}

TEST_F(QUORDataFrameTest, DescribesItsProduct) {
    TestProduct product;
    product.points[1] = 6;
    product.stepsCm[1] = 50000;
    write3d(product);
    const QUORDataFrame frame(_store.open(), SITE, MOMENT, CAPPI, Z, SRI, 600, 1.0);
    const struct {
        bool metric;
        QStringList legend;
    } rows[] = {{true,
                 {"Reflectivity, dBZ", "Sat 2024-06-01 12:00", "3.0 x 2.5 x 1.0 km",
                  "TEST 60.0000° N, 25.0000° E, 120 m ASL"}},
                {false,
                 {"Reflectivity, dBZ", "Sat 2024-06-01 12:00", "1.6 x 1.3 x 0.5 NM",
                  "TEST 60.0000° N, 25.0000° E, 394 ft ASL"}}};
    for (const auto& row : rows) {
        const auto settings = std::make_shared<QUORGeneralSettings>();
        settings->setMetricUnits(row.metric);
        EXPECT_EQ(frame.getLegend(settings), row.legend) << row.metric;
        EXPECT_EQ(frame.getDataId(settings), QStringLiteral("TEST: Sat 2024-06-01 12:00"));
    }
}

TEST_F(QUORDataFrameTest, SaysMoreWhereTheLegendHasRoom) {
    TestProduct product;
    product.projection = 1; // Mercator, at 60 N twice as large as the ground
    write3d(product);
    write2d(60, SampleProduct::Sri);
    const QUORDataFrame frame(_store.open(), SITE, MOMENT, CAPPI, Z, SRI, 600, 1.0);
    QUORGeneralSettings settings;
    settings.setVerticalScale(3.0);
    for (const bool metric : {true, false}) {
        settings.setMetricUnits(metric);
        EXPECT_EQ(
            frame.getLegendDetails(settings),
            QStringList({"2024-06-01 12:00:00 UTC",
                         metric ? "Heights x 3, a tick each 2500 m" : "Heights x 3, a tick each 10000 ft",
                         metric ? "Map distances: 100 km = 50 km of ground"
                                : "Map distances: 100 NM = 50 NM of ground",
                         "SRI, mm/h, 12:01:00 UTC"}));
    }
}

TEST_F(QUORDataFrameTest, StoresNoSettingsOfARefusedFile) {
    TestProduct refused;
    refused.projection = 7;
    write3d(refused);
    QUORDataFrame frame(_store.open());
    request(frame);
    ASSERT_TRUE(frame.updateData3d());
    EXPECT_EQ(frame.getProductSettings()->getVolumeValueLow(), -31.5);
    EXPECT_FALSE(QFile::exists(QSettings().fileName()));
}

TEST_F(QUORDataFrameTest, LivesWithoutDirectories) {
    QUORDataFrame frame(std::make_shared<QUORDataStore>(nullptr));
    request(frame);
    EXPECT_FALSE(frame.updateData3d());
    const LogCapture log;
    frame.updateDataRest();
    EXPECT_TRUE(log.contains(QStringLiteral("E: ASSERTION FAILED: _activeData3d")));
}

} // namespace
