// SPDX-License-Identifier: MIT
#include "QUORVisualization.h"

#include "LogCapture.h"
#include "QUORVisualizationObserver.h"
#include "ScratchHome.h"
#include "TestStore.h"

#include <QCoreApplication>
#include <QThread>

#include <gtest/gtest.h>

#include <vtkDataSet.h>
#include <vtkProp3D.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cmath>
#include <map>
#include <stdexcept>

namespace {

constexpr int DEADLINE = 20000;
const QString SETTINGS_FILE = QStringLiteral("QUOR3D.conf");

using State = QUORDisplayState;

/// Has no prop, and fails on the main thread when it is told to.
class FailingElement : public QUORVisualElement {
public:
    explicit FailingElement(QUORVisualGroup* group) : QUORVisualElement(group, State::OUTLINE_LAYER) {}
    vtkSmartPointer<vtkProp> getProp() override {
        if (failing && QThread::currentThread() == QCoreApplication::instance()->thread()) {
            throw std::runtime_error("no prop");
        }
        return {};
    }
    void update(std::shared_ptr<const QUORLayerParameters>, bool, const QUORAbortFlag&) override {}

    std::atomic<bool> failing = false;
};

/// A site's volumes at 12:00 and 12:05 with a 2D product, and a controller over them.
class QUORVisualizationTest : public testing::Test, public QUORVisualizationObserver {
protected:
    void SetUp() override {
        ScratchHome::removeSettings(SETTINGS_FILE);
        _volume.fill = [](int x, int, int) { return unsigned(60 + 20 * x); };
        _volume.radar = {2000, 1500, 3000};
        writeVolume();
        TestProduct::sri().write(_folders.folder("2d"));
        _volume.time = _volume.time.addSecs(300);
        writeVolume();
    }

    void visualizationFinished(QUORVisualization*) override {
        ++_finished;
        if (_failsWhenTold) {
            throw std::runtime_error("told");
        }
    }
    QUORGeneralSettings::CPtr getVisualizationGeneralSettings() override { return _settings; }
    QUORDisplayState::CPtr getVisualizationDisplayState() override {
        if (_failsWhenAsked) {
            throw std::runtime_error("asked");
        }
        return _state;
    }

    void writeVolume() { _volume.write(_folders.folder("3d")); }

    /// Of the store as it is by then.
    std::shared_ptr<QUORDataFrame> makeFrame(const char* moment, const QString& product2d = {}) {
        auto frame = std::make_shared<QUORDataFrame>(_folders.open(), QStringLiteral("TEST"),
                                                     QLatin1String(moment), QStringLiteral("CAPPI"),
                                                     QStringLiteral("Z"), product2d, 180, 1.0);
        EXPECT_TRUE(frame->getData3d());
        return frame;
    }
    std::shared_ptr<QUORDataFrame> makeFrame() { return makeFrame("240601120000"); }

    void build(const QUORDataFrame::CPtr& frame, bool force = true) {
        _visualization.setSourceData(frame);
        _visualization.updateVisualization(force);
        waitForFinished(_finished + 1);
    }
    void waitForFinished(int count) {
        waitUntil([&] { return _finished >= count; }, DEADLINE);
        EXPECT_EQ(_finished, count);
    }
    /// In the place of the current item's outline.
    std::shared_ptr<FailingElement> insertFailingElement() const {
        const QUORVisualGroup::Ptr group = QUORVisualGroup::makeGroup(State::RADAR_GROUP);
        const auto element = std::make_shared<FailingElement>(group.get());
        group->addElement(element);
        for (const QUORVisualGroup::Ptr& own : _visualization.getPipelineItem()->getGroups()) {
            own->exchangeElement(*group, State::OUTLINE_LAYER);
        }
        EXPECT_EQ(_visualization.getPipelineItem()->getElement(State::OUTLINE_LAYER), element);
        return element;
    }
    template <class Record>
    std::shared_ptr<Record> recordOf(int key) {
        return std::dynamic_pointer_cast<Record>(
            _visualization.getPipelineItem()->getDisplayState()->getLayer(key)->getParameters());
    }
    vtkSmartPointer<vtkProp3D> propOf(int key) {
        return vtkProp3D::SafeDownCast(_visualization.getVisualizationResult()->getElement(key)->getProp());
    }

    TestStore _folders;
    LogCapture _log;
    TestProduct _volume;
    std::shared_ptr<QUORGeneralSettings> _settings = std::make_shared<QUORGeneralSettings>();
    std::shared_ptr<QUORDisplayState> _state = std::make_shared<QUORDisplayState>();
    int _finished = 0;
    bool _failsWhenTold = false;
    bool _failsWhenAsked = false;
    QUORVisualization _visualization{this};
};

TEST_F(QUORVisualizationTest, aMapLargerThanTheGroundIsNotedOnce) {
    build(makeFrame());
    EXPECT_FALSE(_log.contains(QStringLiteral("larger than the ground")));
    _volume.projection = 1;
    for (int i = 0; i < 2; ++i) {
        _volume.time = _volume.time.addSecs(300);
        const auto frame = _folders.frame(_volume);
        ASSERT_TRUE(frame);
        build(frame);
    }
    EXPECT_EQ(
        _log.count(QStringLiteral("N: The map of site TEST is larger than the ground: its distances, of "
                                  "rings and data too, are 2.00 times those on the ground there.")),
        1);
}

TEST_F(QUORVisualizationTest, itemsAreReusedForTheSameFrameOnly) {
    const auto frame = makeFrame();
    build(frame);
    const auto item = _visualization.getPipelineItem();
    EXPECT_EQ(_visualization.getVisualizationResult(), item);
    EXPECT_EQ(item->getSite(), QStringLiteral("TEST"));
    EXPECT_TRUE(_visualization.getVTKDataSet());
    _visualization.setSourceData(frame);
    EXPECT_EQ(_visualization.getPipelineItem(), item);

    item->beginUse();
    _visualization.setSourceData(frame);
    EXPECT_NE(_visualization.getPipelineItem(), item);
    item->endUse();
    const auto second = _visualization.getPipelineItem();
    _visualization.setSourceData(makeFrame("240601120500"));
    EXPECT_NE(_visualization.getPipelineItem(), second);
}

TEST_F(QUORVisualizationTest, anUnchangedRequestIsPassedOnAndBuildsNothing) {
    const auto frame = makeFrame();
    build(frame, false);
    EXPECT_EQ(_log.count(QStringLiteral("vtk_3D_data_create() called.")), 1);
    build(frame, false);
    EXPECT_EQ(_log.count(QStringLiteral("D: No changes!")), 1);
    EXPECT_EQ(_log.count(QStringLiteral("vtk_3D_data_create() called.")), 1);

    _settings->setMetricUnits(false);
    build(frame, false);
    EXPECT_EQ(_log.count(QStringLiteral("D: No changes!")), 1);
    build(frame, true);
    EXPECT_EQ(_log.count(QStringLiteral("vtk_3D_data_create() called.")), 2);
    // Another frame of the same data has an item of its own, which must be given its layers.
    build(makeFrame(), false);
    EXPECT_TRUE(propOf(State::PRODUCT_3D_LAYER));
}

TEST_F(QUORVisualizationTest, requestsDuringABuildAreServedByOneMore) {
    _visualization.setSourceData(makeFrame());
    _visualization.updateVisualization(false);
    _state->getLayer(State::PRODUCT_3D_LAYER)->setVisible(false);
    _visualization.updateVisualization(true);
    _visualization.updateVisualization(true);
    waitForFinished(1);
    EXPECT_EQ(_log.count(QStringLiteral("D: Already generating visualization! -> return.")), 2);
    EXPECT_EQ(_log.count(QStringLiteral("D: Visualization dirty -> generate again!")), 1);
    EXPECT_EQ(_log.count(QStringLiteral("D: Update visualization-->")), 2);
    for (const auto& part : _visualization.getVisualizationResult()->getResultParts()) {
        EXPECT_NE(part.layerKey, State::PRODUCT_3D_LAYER);
    }
}

TEST_F(QUORVisualizationTest, theRingsFollowTheHalfDiagonal) {
    const struct {
        int length; ///< of the grid, metres
        int width;
        bool metric;
        double radius;
    } rows[] = {{120000, 22000, true, 80000},
                {24000, 32000, true, 20000},
                {24001, 32000, true, 40000},
                {120000, 22000, false, 40000}};
    _volume.points = {2, 2, 3};
    for (const auto& row : rows) {
        _volume.time = _volume.time.addSecs(1);
        _volume.stepsCm = {row.length * 100, row.width * 100, 50000};
        writeVolume();
    }
    int second = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.radius);
        _settings->setMetricUnits(row.metric);
        _visualization.setSourceData(makeFrame(qPrintable(QStringLiteral("24060112050%1").arg(++second))));
        const QUORVisualizationParameters& parameters = _visualization.getParameters();
        EXPECT_DOUBLE_EQ(parameters.rings.getRange(), row.radius);
        EXPECT_EQ(parameters.rings.isMetricUnits(), row.metric);
        EXPECT_NEAR(parameters.grid.getRange(), 0.75 * std::hypot(row.length, row.width), 1e-6);
        EXPECT_DOUBLE_EQ(parameters.outline.getTickInterval(), row.metric ? 2500.0 : 3048.0);
    }
}

TEST_F(QUORVisualizationTest, layersReceiveTheirRecordsAndPlaces) {
    const auto frame = makeFrame();
    _visualization.setHardware(true);
    build(frame);
    const auto product = recordOf<QUORLayerParameters3d>(State::PRODUCT_3D_LAYER);
    ASSERT_TRUE(product);
    EXPECT_EQ(product->getDataFile(), frame->getData3d()->getFile());
    EXPECT_EQ(product->getDataShrinkH(), 4);
    EXPECT_TRUE(product->isHardware());
    EXPECT_EQ(product->getSurfacePars(), frame->getProductSettings()->getSurfaces());
    EXPECT_EQ(product->getVolumeValueHigh(), frame->getProductSettings()->getVolumeValueHigh());
    const auto outline = recordOf<QUORLayerParameters3dOutline>(State::OUTLINE_LAYER);
    EXPECT_DOUBLE_EQ(outline->getSiteAltitude(), 120.0);
    EXPECT_DOUBLE_EQ(outline->getDataHeight(), 1000.0);
    EXPECT_EQ(recordOf<QUORLayerParameters2d>(State::PRODUCT_2D_LAYER)->getDataFile(),
              frame->getData2d()->getFile());
    EXPECT_DOUBLE_EQ(recordOf<QUORLayerParametersGeoLabels>(State::GEO_LABELS_LAYER)->getVerticalScale(),
                     5.0);
    EXPECT_EQ(recordOf<QUORLayerParametersTerrain>(State::TERRAIN_LAYER)->getTerrainSet(),
              frame->getTerrainSet());
    const QUORPoint3D radar{0.0, 0.0, (120 + 3) * 5.0};
    EXPECT_EQ(_visualization.getPipelineItem()->getRadarPosition(), radar);

    const struct {
        int key;
        std::array<double, 3> scale;
        std::array<double, 3> position;
    } rows[] = {{State::PRODUCT_3D_LAYER, {1000, 1000, 500}, {-2000, -1500, 600}},
                {State::OUTLINE_LAYER, {3000, 3000, 5000}, {0, 500, 600}},
                {State::PRODUCT_2D_LAYER, {1000, 1000, 1}, {-1500, -1500, 600}},
                {State::RANGE_RINGS_LAYER, {1, 1, 1}, {0, 0, 600}},
                {State::LAT_LON_GRID_LAYER, {1, 1, 1}, {0, 0, 0}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.key);
        const vtkSmartPointer<vtkProp3D> prop = propOf(row.key);
        ASSERT_TRUE(prop);
        for (int axis = 0; axis < 3; ++axis) {
            EXPECT_DOUBLE_EQ(prop->GetScale()[axis], row.scale[axis]) << axis;
            EXPECT_DOUBLE_EQ(prop->GetPosition()[axis], row.position[axis]) << axis;
        }
    }
}

// Distances from the radar, which stands at the origin with rings and map.
namespace {

struct GridRow {
    using Ints = std::array<int, 3>;

    const char* name;
    Ints points;
    Ints stepsCm;
    Ints radar;
    std::array<double, 2> firstPoint; ///< of the product, in metres from the radar
    std::array<double, 2> middle;     ///< of the outline
    double reach;                     ///< from the radar, to the farthest point of the grid

    void shape(TestProduct& product, int dimensions) const {
        std::copy_n(points.begin(), dimensions, product.points.begin());
        std::copy(stepsCm.begin(), stepsCm.end(), product.stepsCm.begin());
        std::copy(radar.begin(), radar.end(), product.radar.begin());
    }
};

} // namespace

TEST_F(QUORVisualizationTest, theGridLiesRoundTheRadarAsItWasMeasured) {
    const GridRow rows[] = {
        {"oblong", {12, 6, 3}, {100000, 100000, 50000}, {6000, 3000, 0}, {-6e3, -3e3}, {0, 0}, 6041.5},
        {"steps differ", {8, 4, 3}, {50000, 200000, 50000}, {4000, 2000, 0}, {-2e3, -4e3}, {0, 0}, 3473.1},
        {"off the middle",
         {12, 6, 3},
         {100000, 50000, 50000},
         {2500, 4000, 0},
         {-2500, -2e3},
         {3500, -500},
         8631.3},
        {"at the first point", {8, 8, 3}, {100000, 100000, 50000}, {0, 0, 0}, {0, 0}, {4e3, 4e3}, 9899.5},
        {"at the last point",
         {8, 8, 3},
         {100000, 100000, 50000},
         {7000, 7000, 0},
         {-7e3, -7e3},
         {-3e3, -3e3},
         8485.3},
        {"outside", {8, 8, 3}, {100000, 100000, 50000}, {7001, -1, 0}, {-4e3, -4e3}, {0, 0}, 4949.7},
        {"far outside",
         {2, 2, 3},
         {100000, 100000, 50000},
         {INT_MAX, INT_MIN, 0},
         {-1e3, -1e3},
         {0, 0},
         707.1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TestProduct flat = TestProduct::sri();
        row.shape(_volume, 3);
        row.shape(flat, 2);
        TestStore folders;
        flat.write(folders.folder("2d"));
        const auto frame = folders.frame(_volume);
        ASSERT_TRUE(frame && frame->getData2d());
        build(frame);
        for (const int key : {State::PRODUCT_3D_LAYER, State::PRODUCT_2D_LAYER, State::OUTLINE_LAYER}) {
            SCOPED_TRACE(key);
            const bool isOutline = key == State::OUTLINE_LAYER;
            const vtkSmartPointer<vtkProp3D> prop = propOf(key);
            ASSERT_TRUE(prop);
            for (int axis = 0; axis < 2; ++axis) {
                const double step = row.stepsCm[axis] * 0.01;
                EXPECT_NEAR(prop->GetScale()[axis], isOutline ? step * (row.points[axis] - 1) : step, 1e-6);
                EXPECT_NEAR(prop->GetPosition()[axis], (isOutline ? row.middle : row.firstPoint)[axis], 1e-6);
            }
        }
        const QUORPoint3D radar = _visualization.getPipelineItem()->getRadarPosition();
        EXPECT_EQ(std::hypot(radar.x, radar.y), 0.0);
        EXPECT_NEAR(_visualization.getParameters().grid.getRange(), 1.5 * row.reach, 0.1);
    }
}

TEST_F(QUORVisualizationTest, theNextFrameOfASiteKeepsWhatDoesNotChange) {
    build(makeFrame());
    std::map<int, vtkSmartPointer<vtkProp3D>> before;
    for (const int key : {11, 12, 42, 44}) {
        before[key] = propOf(key);
    }
    const std::weak_ptr<QUORVisualizationPipelineItem> first = _visualization.getPipelineItem();
    _log.clear();
    build(makeFrame("240601120500"));
    for (const int key : {11, 42, 44}) {
        EXPECT_EQ(propOf(key), before[key]) << key;
    }
    EXPECT_NE(propOf(State::PRODUCT_3D_LAYER), before[State::PRODUCT_3D_LAYER]);
    EXPECT_TRUE(_log.contains(QStringLiteral("D: QUOR3DTerrainElement::update(): No need to update.")));
    EXPECT_TRUE(first.expired());

    // The forced rebuild of the same frame keeps nothing.
    build(makeFrame("240601120500"));
    _visualization.updateVisualization(true);
    waitForFinished(_finished + 1);
    EXPECT_NE(propOf(State::OUTLINE_LAYER), before[State::OUTLINE_LAYER]);
}

TEST_F(QUORVisualizationTest, whatTheFrameLacksLeavesItsLayersAlone) {
    const auto store = std::make_shared<QUORDataStore>(nullptr);
    store->setDirectories(_folders.folder("3d"), {}, {}, {});
    const auto frame = std::make_shared<QUORDataFrame>(store);
    frame->setSite(QStringLiteral("TEST"));
    frame->setMoment(QStringLiteral("240601120000"), 180);
    frame->setDataParams3d(QStringLiteral("CAPPI"), QStringLiteral("Z"));
    ASSERT_TRUE(frame->updateData3d());
    build(frame);
    EXPECT_FALSE(_log.contains(QStringLiteral("Updating geo layers..")));
    EXPECT_FALSE(recordOf<QUORLayerParameters>(State::GEO_GROUP));
    EXPECT_FALSE(recordOf<QUORLayerParameters>(State::TERRAIN_LAYER));
    EXPECT_FALSE(recordOf<QUORLayerParameters>(State::PRODUCT_2D_LAYER));
    EXPECT_TRUE(propOf(State::PRODUCT_3D_LAYER));
}

TEST_F(QUORVisualizationTest, aProductThatCannotBeDrawnDrawsNothing) {
    _volume.time = _volume.time.addSecs(1);
    _volume.stepsCm[2] = 0;
    writeVolume();
    build(makeFrame("240601120501"));
    EXPECT_EQ(_log.count(QStringLiteral("E: Tried to load invalid 3D data file: ")), 1);
    for (const auto& part : _visualization.getVisualizationResult()->getResultParts()) {
        EXPECT_EQ(part.layerKey, State::PRODUCT_2D_LAYER);
    }
}

TEST_F(QUORVisualizationTest, aRequestThatFailsDoesNotBlockTheNext) {
    const auto frame = makeFrame();
    build(frame);
    const auto element = insertFailingElement();
    element->failing = true;
    EXPECT_THROW(_visualization.updateVisualization(true), std::runtime_error);
    element->failing = false;
    build(frame, false);
    EXPECT_FALSE(_log.contains(QStringLiteral("Already generating visualization!")));
    EXPECT_EQ(_log.count(QStringLiteral("D: Update visualization-->")), 2);
    EXPECT_FALSE(_log.contains(QStringLiteral("D: No changes!")));
}

TEST_F(QUORVisualizationTest, theObserverIsToldOnceWhateverFails) {
    const auto frame = makeFrame();
    build(frame);
    const auto element = insertFailingElement();
    const auto request = [&] {
        _visualization.setSourceData(frame);
        _visualization.updateVisualization(true);
    };
    request();
    element->failing = true;
    waitForFinished(2);
    element->failing = false;
    EXPECT_EQ(_visualization.getVisualizationResult(), nullptr);
    EXPECT_EQ(_log.count(QStringLiteral("E: The scene could not be completed: no prop")), 1);

    request();
    _visualization.updateVisualization(true);
    _failsWhenAsked = true;
    waitForFinished(3);
    _failsWhenAsked = false;
    EXPECT_EQ(_log.count(QStringLiteral("E: The scene could not be completed: asked")), 1);

    _failsWhenTold = true;
    build(frame);
    _failsWhenTold = false;
    build(frame);
    EXPECT_TRUE(_visualization.getVisualizationResult());
    QCoreApplication::processEvents();
    EXPECT_EQ(_finished, 5);
}

TEST_F(QUORVisualizationTest, anAbortedControllerTellsNothingMore) {
    _visualization.setSourceData(makeFrame());
    _visualization.updateVisualization(true);
    _visualization.abort();
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    EXPECT_EQ(_finished, 0);
    EXPECT_TRUE(_log.contains(QStringLiteral("D: QUORVisualizationPipeline::run() finished.")));
}

} // namespace
