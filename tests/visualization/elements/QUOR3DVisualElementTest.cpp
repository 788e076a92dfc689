// SPDX-License-Identifier: MIT
#include "QUOR3DVisualElement.h"

#include "ElementFixture.h"
#include "OffscreenScene.h"
#include "QUOR3DDataChain.h"
#include "QUOR3DSurfaces.h"
#include "QUOR3DVolume.h"
#include "QUORColormap.h"
#include "QUORDataType.h"
#include "TestProduct.h"

#include <QFile>
#include <QTemporaryDir>

#include <vtkActor.h>
#include <vtkAlgorithm.h>
#include <vtkAssembly.h>
#include <vtkCamera.h>
#include <vtkFixedPointVolumeRayCastMapper.h>
#include <vtkFlyingEdges3D.h>
#include <vtkGPUVolumeRayCastMapper.h>
#include <vtkImageData.h>
#include <vtkLight.h>
#include <vtkLookupTable.h>
#include <vtkPiecewiseFunction.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkUnsignedCharArray.h>
#include <vtkVolume.h>
#include <vtkVolumeProperty.h>

#include <sys/stat.h>

namespace {

using Record = QUORLayerParameters3d;
using Surfaces = QUOR3DSurfaces::Surfaces;

const QUORDataType DBZ(2);

/// Greys that grow with the value: 0 dBZ is 0 and 51 dBZ is 255, in red 0 and in blue inverted.
const QString COLORS = QStringLiteral("[COLORSCALE%201]\nname=Default\npoints\\size=2\npoints\\1\\seam=0\n"
                                      "points\\2\\seam=51\n[COLORSET%201]\npoints\\size=2\n"
                                      "points\\1\\lower\\b=255\npoints\\2\\lower\\g=255\n"
                                      "points\\1\\upper\\r=1\npoints\\2\\upper\\r=1\n");

/// 12 x 12 x 12 points with a block of 40 dBZ from 4 to 7 and 20 dBZ around it from 2 to 9.
TestProduct blockProduct() {
    TestProduct product;
    product.points = {12, 12, 12};
    product.fill = [](int x, int y, int z) {
        const auto within = [&](int low, int high) {
            return std::min({x, y, z}) >= low && std::max({x, y, z}) <= high;
        };
        return within(4, 7) ? 144U : within(2, 9) ? 104U : 0U;
    };
    return product;
}

Record makeRecord(const QUORFile::CPtr& file, const Surfaces& surfaces, int shrink = 1, double smooth = 0.0) {
    Record record;
    record.setDataFile(file);
    record.setSurfacePars(surfaces);
    record.setDataShrinkH(shrink);
    record.setDataSmooth(smooth);
    return record;
}

vtkSmartPointer<vtkImageData> imageOf(const vtkSmartPointer<vtkAlgorithm>& data) {
    return vtkImageData::SafeDownCast(data->GetOutputDataObject(0));
}

class QUOR3DVisualElementTest : public ElementFixture<QUOR3DVisualElement, 12> {
protected:
    void SetUp() override { ScratchHome::writeSettings(QStringLiteral("QUOR3DColors.conf"), COLORS); }

    QUORFile::CPtr makeFile(const TestProduct& product) {
        return std::make_shared<QUORFile>(product.write(_dir.path()));
    }
    static vtkPolyData* surfaceOf(vtkActor* actor) {
        return vtkPolyData::SafeDownCast(actor->GetMapper()->GetInputDataObject(0, 0));
    }

    QTemporaryDir _dir;
};

TEST_F(QUOR3DVisualElementTest, surfacesEncloseTheirValuesInTheirColors) {
    update(makeRecord(makeFile(blockProduct()), {{10.0, 100}, {30.0, 40}, {70.0, 100}}));
    const std::vector<vtkActor*> parts = actors();
    ASSERT_EQ(parts.size(), 2U);
    const struct {
        vtkActor* actor;
        double low; ///< of the surface, in grid steps
        double high;
        std::array<int, 4> color;
    } rows[] = {{parts[0], 2 - 20 / 104.0, 9 + 20 / 104.0, {0, 50, 205, 255}},
                {parts[1], 3.5, 7.5, {0, 150, 105, 102}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.color[3]);
        std::array<double, 6> bounds{};
        surfaceOf(row.actor)->GetBounds(bounds.data());
        EXPECT_NEAR(bounds[0], row.low, 1e-4);
        EXPECT_NEAR(bounds[3], row.high, 1e-4);
        EXPECT_NEAR(bounds[4], 5 * row.low, 1e-4);
        EXPECT_NEAR(bounds[5], 5 * row.high, 1e-4);
        vtkUnsignedCharArray* colors = row.actor->GetMapper()->MapScalars(1.0);
        for (int component = 0; component < 4; ++component) {
            EXPECT_NEAR(colors->GetComponent(0, component), row.color[component], 1);
        }
        EXPECT_DOUBLE_EQ(row.actor->GetProperty()->GetAmbient(), 0.7);
        EXPECT_DOUBLE_EQ(row.actor->GetProperty()->GetDiffuse(), 1.0);
        EXPECT_EQ(row.actor->GetProperty()->GetInterpolation(), VTK_GOURAUD);
    }
    EXPECT_TRUE(parts[0]->GetForceOpaque());
    EXPECT_TRUE(parts[1]->GetForceTranslucent());
    update(makeRecord(makeFile(blockProduct()), {}));
    EXPECT_TRUE(actors().empty());
}

TEST_F(QUOR3DVisualElementTest, dataAreCleanedReducedAndSmoothed) {
    TestProduct product = blockProduct();
    product.type = 9;
    product.fill = [](int x, int, int z) { return z == 0 ? 65535U : unsigned(1000 * x); };
    const QUORFile::CPtr file = makeFile(product);

    vtkSmartPointer<vtkImageData> image = imageOf(vtk_3D_data_create(file, 1, 1, 0.0));
    EXPECT_EQ(image->GetScalarType(), VTK_UNSIGNED_SHORT);
    EXPECT_DOUBLE_EQ(image->GetSpacing()[2], 5.0);
    EXPECT_EQ(image->GetScalarComponentAsDouble(5, 0, 0, 0), 0.0);
    EXPECT_EQ(image->GetScalarComponentAsDouble(11, 3, 1, 0), 11000.0);

    image = imageOf(vtk_3D_data_create(file, 4, 1, 0.0));
    EXPECT_DOUBLE_EQ(image->GetSpacing()[0], 4.0);
    const int first = image->GetExtent()[0];
    // The mean of four neighbours stands half a step beyond their middle.
    EXPECT_EQ(image->GetScalarComponentAsDouble(first, image->GetExtent()[2], 1, 0), first * 4000.0 - 500.0);

    image = imageOf(vtk_3D_data_create(file, 1, 1, 1.0));
    EXPECT_NEAR(image->GetScalarComponentAsDouble(6, 6, 6, 0), 6000.0, 5.0);
    EXPECT_LT(image->GetScalarComponentAsDouble(6, 6, 1, 0), 6000.0);
}

TEST_F(QUOR3DVisualElementTest, aShellOfInboundWindWrapsTheInboundWindAlone) {
    TestProduct product;
    product.points = {24, 12, 12};
    product.type = 10;
    product.fill = [](int x, int y, int z) {
        const auto within = [&](int low, int high) {
            return x >= low && x <= high && y >= 4 && y <= 7 && z >= 4 && z <= 7;
        };
        // 15 m/s towards the radar, and away from it; nothing was measured elsewhere.
        return within(4, 7) ? 32768U - 1500U : within(16, 19) ? 32768U + 1500U : 0U;
    };
    const struct {
        double value;
        double low; ///< of the shell along x
        double high;
    } rows[] = {{-10.0, 3.0, 8.0}, {10.0, 15.0, 20.0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        update(makeRecord(makeFile(product), {{row.value, 100}}));
        std::array<double, 6> bounds{};
        surfaceOf(actors().at(0))->GetBounds(bounds.data());
        EXPECT_GT(bounds[0], row.low);
        EXPECT_LT(bounds[1], row.high);
    }
    // A volume leaves what was not measured transparent.
    Record record = makeRecord(makeFile(product), {});
    record.setRenderingType(QUORProductSettings::Volume);
    update(record);
    EXPECT_EQ(imageOf(element.getData())->GetScalarRange()[0], 0.0);
}

TEST_F(QUOR3DVisualElementTest, smallGridsAndWildFactorsAreDrawn) {
    for (int points = 2; points <= 9; ++points) {
        for (const int levels : {1, 2, points}) {
            for (const int shrink : {-3, 1, 2, 4, 7, 2000000000}) {
                SCOPED_TRACE(QStringLiteral("%1 %2 %3").arg(points).arg(levels).arg(shrink).toStdString());
                TestProduct product;
                product.points = {points, points + 1, levels};
                product.fill = [](int, int, int) { return 100U; };
                Record record = makeRecord(makeFile(product), {{0.0, 100}}, shrink, 1e9);
                record.setDataShrinkV(shrink);
                element.invalidate();
                update(record);
                vtkSmartPointer<vtkImageData> image = imageOf(element.getData());
                ASSERT_GT(image->GetNumberOfPoints(), 0);
                record.setDataSmooth(0.0);
                update(record);
                image = imageOf(element.getData());
                EXPECT_DOUBLE_EQ(image->GetScalarRange()[0], 100.0);
                EXPECT_DOUBLE_EQ(image->GetScalarRange()[1], 100.0);
            }
        }
    }
}

TEST_F(QUOR3DVisualElementTest, anAxisWithoutTwoWholeBlocksIsNotReduced) {
    TestProduct product;
    product.points = {9, 10, 14};
    const vtkSmartPointer<vtkImageData> image = imageOf(vtk_3D_data_create(makeFile(product), 4, 4, 0.0));
    EXPECT_EQ(image->GetDimensions()[0], 9);
    EXPECT_EQ(image->GetDimensions()[1], 2);
    EXPECT_EQ(image->GetDimensions()[2], 3);
}

TEST_F(QUOR3DVisualElementTest, aHiddenLayerKeepsItsDataUntilItIsShown) {
    const QUORFile::CPtr file = makeFile(blockProduct());
    const Record record = makeRecord(file, {{10.0, 100}});
    update(record, false);
    EXPECT_FALSE(element.getProp());
    EXPECT_TRUE(element.getData());
    ASSERT_TRUE(QFile::remove(file->getPath()));
    update(record);
    EXPECT_TRUE(element.getProp());
    const vtkSmartPointer<vtkProp> prop = element.getProp();
    update(record);
    EXPECT_EQ(element.getProp(), prop);
    element.invalidate();
    EXPECT_FALSE(element.getProp());
    EXPECT_FALSE(element.getData());
}

TEST_F(QUOR3DVisualElementTest, anAbortedReadLeavesNothing) {
    abort.set();
    update(makeRecord(makeFile(blockProduct()), {{10.0, 100}}));
    EXPECT_FALSE(element.getProp());
    EXPECT_FALSE(element.getData());
}

TEST_F(QUOR3DVisualElementTest, whatIsNotTheProductAnyMoreIsRefused) {
    TestProduct another = blockProduct();
    another.groundElevationM = 500;
    TestProduct impossible = blockProduct();
    impossible.stepsCm[0] = 0;
    const struct {
        const char* name;
        TestProduct product;
        std::function<void(const QString&)> change;
    } rows[] = {
        {"removed", blockProduct(), [](const QString& path) { QFile::remove(path); }},
        {"cut", blockProduct(), [](const QString& path) { QFile::resize(path, 2000); }},
        {"another", blockProduct(), [&](const QString& path) { another.writeTo(path); }},
        {"a pipe", blockProduct(),
         [](const QString& path) {
             EXPECT_TRUE(QFile::remove(path) && mkfifo(qPrintable(path), 0600) == 0);
         }},
        {"an impossible header", impossible, [](const QString&) {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const QTemporaryDir folder;
        const QString path = row.product.write(folder.path());
        const auto file = std::make_shared<const QUORFile>(path);
        row.change(path);
        element.invalidate();
        log.clear();
        update(makeRecord(file, {{10.0, 100}}));
        EXPECT_FALSE(element.getProp());
        EXPECT_FALSE(element.getData());
        EXPECT_EQ(log.count(QStringLiteral("E: Tried to load invalid 3D data file: ") + file->getName()), 1);
    }
    log.clear();
    update(makeRecord(nullptr, {}));
    EXPECT_FALSE(element.getData());
}

TEST_F(QUOR3DVisualElementTest, theTableTakesTheNearestSurface) {
    const QUORColormap map(QStringLiteral("Default"), DBZ, QUORColormap::Absolute);
    vtkNew<vtkFlyingEdges3D> opaque;
    vtkNew<vtkFlyingEdges3D> translucent;
    vtk_3D_surface_filter_update(opaque, translucent, {{-9999.0, 100}, {0.0, 50}, {48.0, 100}}, DBZ);
    ASSERT_EQ(opaque->GetNumberOfContours(), 2);
    EXPECT_EQ(opaque->GetValue(0), 1.0);
    EXPECT_EQ(opaque->GetValue(1), 160.0);
    ASSERT_EQ(translucent->GetNumberOfContours(), 1);
    EXPECT_EQ(translucent->GetValue(0), 64.0);
    vtk_3D_surface_filter_update(opaque, translucent, {}, DBZ);
    EXPECT_EQ(opaque->GetNumberOfContours() + translucent->GetNumberOfContours(), 0);

    auto table = vtk_lut_for_surfaces({{0.0, 50}, {32.0, 250}, {64.0, -3}}, DBZ, map);
    EXPECT_EQ(table->GetNumberOfTableValues(), 256);
    EXPECT_EQ(table->GetTableRange()[0], 64.0);
    EXPECT_EQ(table->GetTableRange()[1], 192.0);
    const struct {
        int entry;
        double opacity;
    } entries[] = {{0, 0.5}, {64, 0.5}, {65, 1.0}, {192, 1.0}, {193, 0.0}, {255, 0.0}};
    for (const auto& row : entries) {
        EXPECT_NEAR(table->GetTableValue(row.entry)[3], row.opacity, 0.003) << row.entry;
    }
    table = vtk_lut_for_surfaces({{10.0, 100}}, DBZ, map);
    for (const int entry : {0, 100, 255}) {
        EXPECT_NEAR(table->GetTableValue(entry)[1], 50 / 255.0, 0.003);
    }
}

TEST_F(QUOR3DVisualElementTest, theRampRisesBetweenItsLimits) {
    const auto ramp = [](double low, double lowOpacity, double high, double highOpacity) {
        Record record;
        record.setVolumeValueLow(low);
        record.setVolumeOpacityLow(lowOpacity);
        record.setVolumeValueHigh(high);
        record.setVolumeOpacityHigh(highOpacity);
        return QUOR3DVolume::makeRamp(record, DBZ);
    };
    for (const auto& function : {ramp(0, 2, 60, 100), ramp(60, 100, 0, 2)}) {
        ASSERT_EQ(function->GetSize(), 16);
        EXPECT_DOUBLE_EQ(function->GetValue(64), 0.0);
        EXPECT_NEAR(function->GetValue(72), std::pow(1 / 15.0, 5) * 0.98 + 0.02, 1e-9);
        EXPECT_NEAR(function->GetValue(144), std::pow(10 / 15.0, 5) * 0.98 + 0.02, 1e-9);
        EXPECT_DOUBLE_EQ(function->GetValue(184), 1.0);
    }
    const auto wide = ramp(-9999, 1, 9999, 400);
    EXPECT_DOUBLE_EQ(wide->GetRange()[0], 1.0);
    EXPECT_DOUBLE_EQ(wide->GetRange()[1], 254.0);
    EXPECT_DOUBLE_EQ(wide->GetValue(254), 1.0);
    const auto step = ramp(20, 10, 20, 60);
    EXPECT_DOUBLE_EQ(step->GetValue(103), 0.0);
    EXPECT_DOUBLE_EQ(step->GetValue(104), 0.6);
}

TEST_F(QUOR3DVisualElementTest, volumesAreDrawnByTheMapperOfTheMachine) {
    Record record = makeRecord(makeFile(blockProduct()), {});
    record.setRenderingType(QUORProductSettings::Volume);
    update(record);
    auto* assembly = vtkAssembly::SafeDownCast(element.getProp());
    auto* volume = partsOf<vtkVolume>(assembly).at(0);
    auto* mapper = vtkFixedPointVolumeRayCastMapper::SafeDownCast(volume->GetMapper());
    ASSERT_NE(mapper, nullptr);
    EXPECT_FALSE(mapper->GetAutoAdjustSampleDistances());
    EXPECT_FALSE(partsOf<vtkActor>(assembly).at(0)->GetVisibility());
    EXPECT_EQ(volume->GetProperty()->GetScalarOpacity()->GetSize(), 16);
    EXPECT_FALSE(volume->GetProperty()->GetShade());

    record.setHardware(true);
    update(record);
    volume = partsOf<vtkVolume>(vtkAssembly::SafeDownCast(element.getProp())).at(0);
    EXPECT_NE(vtkGPUVolumeRayCastMapper::SafeDownCast(volume->GetMapper()), nullptr);

    record.setRenderingType(QUORProductSettings::Unknown);
    update(record);
    EXPECT_FALSE(element.getProp());
}

/// What the element draws, seen from above.
class QUOR3DVisualElementPictureTest : public OffscreenScene {
protected:
    std::array<int, 3> centerOf(const Record& record, double light, double scale = 1.0) {
        QUOR3DVisualElement element(_group.get(), 12);
        element.update(std::make_shared<Record>(record), true, _abort);
        auto* prop = vtkProp3D::SafeDownCast(element.getProp());
        prop->SetScale(scale);
        renderer->AddViewProp(prop);
        renderer->RemoveAllLights();
        vtkNew<vtkLight> lamp;
        lamp->SetColor(light, light, light);
        lamp->SetPosition(0, 0, 1000);
        renderer->AddLight(lamp);
        vtkCamera* camera = renderer->GetActiveCamera();
        camera->SetPosition(5.5 * scale, 5.5 * scale, 200 * scale);
        camera->SetFocalPoint(5.5 * scale, 5.5 * scale, 0);
        camera->SetClippingRange(100 * scale, 300 * scale);
        window->Render();
        const std::array<int, 3> color = pixel(SIDE / 2, SIDE / 2);
        renderer->RemoveAllViewProps();
        return color;
    }

    static void SetUpTestSuite() { _home = std::make_unique<ScratchHome>(); }
    static void TearDownTestSuite() { _home.reset(); }
    void SetUp() override {
        OffscreenScene::SetUp();
        ScratchHome::writeSettings(QStringLiteral("QUOR3DColors.conf"), COLORS);
        _file = std::make_shared<QUORFile>(blockProduct().write(_dir.path()));
    }

    /// The drawing library keeps a cache in the home that it started with.
    static inline std::unique_ptr<ScratchHome> _home;
    QTemporaryDir _dir;
    QUORFile::CPtr _file;
    QUORAbortFlag _abort;
    QUORVisualGroup::Ptr _group = QUORVisualGroup::makeGroup(10);
};

TEST_F(QUOR3DVisualElementPictureTest, lightMakesTheColorOfAValueDarkerButNeverBrighterOrOfAnotherHue) {
    // Of (0, 50, 205); without lamps 0.7 times the mean of the ambient light is left.
    const struct {
        double light;
        double shade;
    } rows[] = {{0.0, 0.42}, {0.5, 0.71}, {1.0, 1.0}, {3.0, 1.0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.light);
        const std::array<int, 3> color = centerOf(makeRecord(_file, {{10.0, 100}}), row.light);
        EXPECT_NEAR(color[0], 0, 1);
        EXPECT_NEAR(color[1], 50 * row.shade, 2);
        EXPECT_NEAR(color[2], 205 * row.shade, 2);
    }
}

TEST_F(QUOR3DVisualElementPictureTest, opaqueSurfacesAreSeenThroughTranslucentOnes) {
    const std::array<int, 3> inner = centerOf(makeRecord(_file, {{30.0, 100}}), 0.5);
    const std::array<int, 3> both = centerOf(makeRecord(_file, {{10.0, 50}, {30.0, 100}}), 0.5);
    const std::array<int, 3> outer = centerOf(makeRecord(_file, {{10.0, 100}}), 0.5);
    EXPECT_NEAR(both[1], (inner[1] + outer[1]) / 2, 8);
    EXPECT_NEAR(both[2], (inner[2] + outer[2]) / 2, 8);
    EXPECT_GT(inner[1] - outer[1], 40);
}

TEST_F(QUOR3DVisualElementPictureTest, bothMappersShowTheSameVolumeWhateverReductionAndScale) {
    for (const int shrink : {1, 2}) {
        for (const double scale : {1.0, 2000.0}) {
            SCOPED_TRACE(testing::Message() << shrink << ' ' << scale);
            Record record = makeRecord(_file, {}, shrink);
            record.setRenderingType(QUORProductSettings::Volume);
            record.setVolumeValueLow(5.0);
            record.setVolumeOpacityLow(10.0);
            record.setVolumeValueHigh(60.0);
            const std::array<int, 3> software = centerOf(record, 1.0, scale);
            record.setHardware(true);
            const std::array<int, 3> hardware = centerOf(record, 1.0, scale);
            EXPECT_LT(software[0], 10);
            EXPECT_GT(software[1] + software[2], 120);
            EXPECT_NEAR(hardware[1], software[1], 12);
            EXPECT_NEAR(hardware[2], software[2], 12);
        }
    }
}

} // namespace
