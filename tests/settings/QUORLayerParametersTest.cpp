// SPDX-License-Identifier: MIT
#include "QUORLayerParameters.h"

#include "TestProduct.h"

#include "QUORDataType.h"
#include "QUORFile.h"
#include "QUORGeoProjection.h"
#include "QUORLandmarkSet.h"
#include "QUORLayerParameters2d.h"
#include "QUORLayerParameters3d.h"
#include "QUORLayerParameters3dOutline.h"
#include "QUORLayerParametersGeoLabels.h"
#include "QUORLayerParametersLatLonGrid.h"
#include "QUORLayerParametersRadarRings.h"
#include "QUORLayerParametersTerrain.h"
#include "QUORTerrainSet.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <limits>

namespace {

constexpr double NAN_VALUE = std::numeric_limits<double>::quiet_NaN();
const QUORCoordinate SITE(60.0, 25.0);

template <class Record>
using Change = std::function<void(Record&)>;

/// Every change alone makes the record another one, in both directions, and unchanged copies are equal.
template <class Record>
void expectChanges(const std::vector<Change<Record>>& changes, const Record& base = {}) {
    EXPECT_FALSE(Record(base).hasChanged(base));
    EXPECT_FALSE(base.hasChanged(QUORLayerParameters()));
    for (std::size_t i = 0; i < changes.size(); ++i) {
        Record other(base);
        changes[i](other);
        EXPECT_TRUE(base.hasChanged(other)) << i;
        EXPECT_TRUE(other.hasChanged(base)) << i;
    }
}

QUORGeoProjection::CPtr makeProjection() {
    return std::make_shared<QUORGeoProjection>(QStringLiteral("aeqd"), SITE, 6371000.0, 1e30);
}

QUORTerrainSet::CPtr makeTerrain() {
    return std::make_shared<QUORTerrainSet>(makeProjection(), SITE, SITE);
}

QUORLandmarkSet::CPtr makeLandmarks() {
    return std::make_shared<QUORLandmarkSet>(SITE, SITE, SITE);
}

TEST(QUORLayerParametersTest, ComparesPlainValues) {
    using Outline = QUORLayerParameters3dOutline;
    expectChanges<Outline>({[](Outline& p) { p.setSiteAltitude(1); }, [](Outline& p) { p.setDataHeight(1); },
                            [](Outline& p) { p.setTickInterval(1); },
                            [](Outline& p) { p.setTickInterval(NAN_VALUE); }});
    using Rings = QUORLayerParametersRadarRings;
    expectChanges<Rings>({[](Rings& p) {
                              p.setSiteLocation({1.0, 0.0});
                          },
                          [](Rings& p) {
                              p.setSiteLocation({0.0, 1.0});
                          },
                          [](Rings& p) { p.setRange(1); },
                          [](Rings& p) { p.setMetricUnits(!p.isMetricUnits()); }});
}

TEST(QUORLayerParametersTest, ComparesSharedObjectsByIdentity) {
    using Grid = QUORLayerParametersLatLonGrid;
    Grid grid;
    grid.setGeoProjection(makeProjection());
    expectChanges<Grid>({[](Grid& p) { p.setGeoProjection(makeProjection()); },
                         [](Grid& p) { p.setGeoProjection(nullptr); }, [](Grid& p) { p.setRange(1); }},
                        grid);
    using Labels = QUORLayerParametersGeoLabels;
    Labels labels;
    labels.setGeoProjection(makeProjection());
    labels.setLandmarks(makeLandmarks());
    expectChanges<Labels>({[](Labels& p) { p.setGeoProjection(makeProjection()); },
                           [](Labels& p) { p.setLandmarks(makeLandmarks()); },
                           [](Labels& p) { p.setVerticalScale(2); }},
                          labels);
    using Terrain = QUORLayerParametersTerrain;
    Terrain terrain;
    terrain.setTerrainSet(makeTerrain());
    expectChanges<Terrain>(
        {[](Terrain& p) { p.setTerrainSet(makeTerrain()); }, [](Terrain& p) { p.setTerrainSet(nullptr); }},
        terrain);
}

TEST(QUORLayerParametersTest, ComparesProductsByWhatTheyShow) {
    const auto load = [](const TestProduct& product) {
        const QTemporaryDir dir;
        return std::make_shared<const QUORFile>(product.write(dir.path()));
    };
    const TestProduct base;
    TestProduct site;
    site.site = "OTHER";
    TestProduct time;
    time.time = time.time.addSecs(600);
    TestProduct product;
    product.code = 1;
    TestProduct configuration;
    configuration.type = 3;
    const struct {
        const char* name;
        QUORFile::CPtr file;
        bool changes3d;
        bool changes2d;
    } rows[] = {
        {"the same again", load(base), false, false},
        {"none", nullptr, true, true},
        {"site", load(site), true, true},
        {"time", load(time), true, true},
        {"product", load(product), true, true},
        {"configuration", load(configuration), true, false},
    };
    QUORLayerParameters3d base3d;
    QUORLayerParameters2d base2d;
    base3d.setDataFile(load(base));
    base2d.setDataFile(base3d.getDataFile());
    for (const auto& row : rows) {
        QUORLayerParameters3d other3d;
        QUORLayerParameters2d other2d;
        other3d.setDataFile(row.file);
        other2d.setDataFile(row.file);
        EXPECT_EQ(base3d.hasChanged(other3d), row.changes3d) << row.name;
        EXPECT_EQ(other3d.hasChanged(base3d), row.changes3d) << row.name;
        EXPECT_EQ(base2d.hasChanged(other2d), row.changes2d) << row.name;
        EXPECT_EQ(other2d.hasChanged(base2d), row.changes2d) << row.name;
    }
    EXPECT_FALSE(base3d.hasChanged(base2d));
}

TEST(QUORLayerParametersTest, ComparesTheRenderingOf3dProducts) {
    using P = QUORLayerParameters3d;
    P base;
    base.setSurfacePars({{20.0, 30}});
    expectChanges<P>({[](P& p) { p.setRenderingType(QUORProductSettings::Volume); },
                      [](P& p) { p.setColorScaleName(QStringLiteral("Rain")); },
                      [](P& p) { p.setDataShrinkH(2); }, [](P& p) { p.setDataShrinkV(2); },
                      [](P& p) { p.setDataSmooth(0); }, [](P& p) { p.setVolumeValueLow(0); },
                      [](P& p) { p.setVolumeOpacityLow(0); }, [](P& p) { p.setVolumeValueHigh(0); },
                      [](P& p) { p.setVolumeOpacityHigh(NAN_VALUE); }, [](P& p) { p.setHardware(true); },
                      [](P& p) {
                          p.setSurfacePars({{20.0, 31}});
                      },
                      [](P& p) {
                          p.setSurfacePars({{21.0, 30}});
                      },
                      [](P& p) { p.setSurfacePars({}); }},
                     base);
}

} // namespace
