// SPDX-License-Identifier: MIT
#include "QUORRenderer.h"

#include "OffscreenScene.h"
#include "QUORCameraInteractor.h"
#include "QUORCompassRepresentation.h"
#include "QUORDepthRange.h"
#include "QUORDisplayState.h"
#include "QUORGeneralSettings.h"
#include "QUORPointWidget.h"
#include "RenderChecks.h"
#include "ScratchHome.h"
#include "TestStore.h"

#include <vtkActor.h>
#include <vtkCompassWidget.h>
#include <vtkCoordinate.h>
#include <vtkLight.h>
#include <vtkLightCollection.h>
#include <vtkObjectFactory.h>
#include <vtkOpenGLActor.h>
#include <vtkPlaneSource.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkSphereSource.h>

#include <cmath>
#include <functional>
#include <utility>
#include <vector>

namespace {

using Item = QUORVisualizationPipelineItem;

/// A flat, unlit, coloured square round the origin that counts how often its buffers are given back.
class CountingActor : public vtkOpenGLActor {
public:
    static CountingActor* New();
    vtkTypeMacro(CountingActor, vtkOpenGLActor)

    void ReleaseGraphicsResources(vtkWindow* window) override {
        ++releases;
        this->Superclass::ReleaseGraphicsResources(window);
    }

    int releases = 0;
};
vtkStandardNewMacro(CountingActor)

vtkSmartPointer<CountingActor> square(double size, double height, double r, double g, double b) {
    vtkNew<vtkPlaneSource> plane;
    plane->SetOrigin(-size, -size, height);
    plane->SetPoint1(size, -size, height);
    plane->SetPoint2(-size, size, height);
    vtkNew<vtkPolyDataMapper> mapper;
    mapper->SetInputConnection(plane->GetOutputPort());
    auto result = vtkSmartPointer<CountingActor>::New();
    result->SetMapper(mapper);
    result->GetProperty()->LightingOff();
    result->GetProperty()->SetColor(r, g, b);
    return result;
}

/// Shows one prop and builds nothing.
class PropElement : public QUORVisualElement {
public:
    PropElement(QUORVisualGroup* group, int key, vtkProp* prop)
        : QUORVisualElement(group, key), _prop(prop) {}
    vtkSmartPointer<vtkProp> getProp() override { return _prop; }
    void update(std::shared_ptr<const QUORLayerParameters>, bool, const QUORAbortFlag&) override {}

private:
    vtkSmartPointer<vtkProp> _prop;
};

/// A finished item that shows the given props in their layers.
Item::Ptr finishedItem(const std::vector<std::pair<int, vtkProp*>>& props, const QString& site = {},
                       const QUORPoint3D& radar = {}) {
    const auto item = std::make_shared<Item>(std::make_shared<QUORDisplayState>());
    for (const auto& [key, prop] : props) {
        for (const auto& group : item->getGroups()) {
            const auto donor = QUORVisualGroup::makeGroup(group->getKey());
            donor->addElement(std::make_shared<PropElement>(donor.get(), key, prop));
            group->exchangeElement(*donor, key);
        }
    }
    item->setSite(site, radar);
    item->readResults();
    return item;
}

class QUORRendererTest : public OffscreenScene {
protected:
    void SetUp() override {
        OffscreenScene::SetUp();
        if (!IsSkipped()) {
            window->RemoveRenderer(renderer);
            window->SetSize(400, 300);
        }
    }

    static void writeStyles() {
        ScratchHome::writeSettings(
            QStringLiteral("QUOR3DVisStyles.conf"),
            QStringLiteral("[RENDERER_DAY]\nbackground\\color\\r=1.0\nbackground\\color\\g=0.5\n"
                           "site\\marker\\radius=9000\nlegend\\text\\color\\r=1.0\n"
                           "[RENDERER_NIGHT]\nlight\\color\\b=0.1\n"));
    }
    std::unique_ptr<QUORRenderer> makeRenderer(bool withoutInteraction = true) {
        return std::make_unique<QUORRenderer>(window, nullptr, nullptr, withoutInteraction);
    }
    std::vector<unsigned char> pixels() {
        vtkNew<vtkUnsignedCharArray> rgb;
        window->GetPixelData(0, 0, 399, 299, 0, rgb.Get(), 0);
        return {rgb->GetPointer(0), rgb->GetPointer(0) + rgb->GetNumberOfValues()};
    }
    QColor colorAt(int x, int y) {
        const std::array<int, 3> rgb = pixel(x, y);
        return QColor(rgb[0], rgb[1], rgb[2]);
    }

private:
    ScratchHome _home;
};

} // namespace

TEST_F(QUORRendererTest, TakesColoursFromTheStylesFile) {
    const auto view = makeRenderer();
    writeStyles();
    view->restart();
    EXPECT_DOUBLE_EQ(view->getMainRenderer()->GetBackground()[0], 1.0);
    EXPECT_DOUBLE_EQ(view->getMainRenderer()->GetBackground()[2], 0.3);
    EXPECT_NEAR(view->getSiteMarker()->GetBounds()[1], 9000.0, 250.0);
    auto* sun = vtkLight::SafeDownCast(view->getMainRenderer()->GetLights()->GetItemAsObject(0));
    EXPECT_DOUBLE_EQ(sun->GetDiffuseColor()[2], 0.9);
    view->render();
    EXPECT_TRUE(isColor(colorAt(200, 20), 255, 128, 77));
    view->setNight(true);
    view->updateLights();
    EXPECT_DOUBLE_EQ(view->getMainRenderer()->GetBackground()[0], 0.15);
    EXPECT_DOUBLE_EQ(sun->GetDiffuseColor()[2], 0.1);
    EXPECT_FALSE(view->getCompass()->isDay());
}

TEST_F(QUORRendererTest, ShowsAnItemAndItsDecorations) {
    const auto view = makeRenderer();
    const auto show = [&](const Item::Ptr& item) {
        view->setVisualization(item);
        view->render();
    };
    const auto hasBar = [&] { return window->HasRenderer(view->getColorScaleRenderer()); };
    const auto low = square(400000.0, 0.0, 1.0, 0.0, 0.0);
    show(finishedItem({{QUORDisplayState::PRODUCT_3D_LAYER, low}}, QStringLiteral("SITE")));
    EXPECT_TRUE(isColor(colorAt(150, 150), 255, 0, 0)) << "the square";
    EXPECT_FALSE(isColor(colorAt(200, 150), 255, 0, 0)) << "the site marker";
    EXPECT_TRUE(hasBar());
    EXPECT_TRUE(isColor(colorAt(10, 200), 204, 204, 204)) << "the colour bar's background";

    view->toggleColorScale(false);
    EXPECT_TRUE(hasBar());
    show(finishedItem({{QUORDisplayState::PRODUCT_3D_LAYER, low}}));
    EXPECT_FALSE(hasBar());
    EXPECT_TRUE(isColor(colorAt(200, 150), 255, 0, 0)) << "no site name, no marker";
    view->toggleColorScale(true);
    view->toggleCompass(false);
    show(finishedItem({}));
    EXPECT_TRUE(hasBar());
    EXPECT_TRUE(isColor(colorAt(200, 150), 38, 64, 77)) << "nothing but the background";
    EXPECT_FALSE(view->getMainRenderer()->HasViewProp(view->getCompass()));

    view->setVisualization(finishedItem({{QUORDisplayState::PRODUCT_3D_LAYER, low}}, QStringLiteral("SITE")));
    view->removeVisualization();
    view->render();
    EXPECT_TRUE(isColor(colorAt(150, 150), 38, 64, 77));
    EXPECT_TRUE(view->getMainRenderer()->HasViewProp(view->getCompass()));
}

TEST_F(QUORRendererTest, KeepsTheBuffersOfWhatStays) {
    const auto view = makeRenderer();
    const auto terrain = square(600000.0, 0.0, 0.0, 0.5, 0.0);
    const auto outline = square(300000.0, 1000.0, 0.0, 0.0, 1.0);
    const auto product = square(100000.0, 2000.0, 1.0, 0.0, 0.0);
    for (int image = 1; image <= 3; ++image) {
        view->setVisualization(finishedItem({{QUORDisplayState::TERRAIN_LAYER, terrain},
                                             {QUORDisplayState::OUTLINE_LAYER, outline},
                                             {QUORDisplayState::PRODUCT_3D_LAYER, product}}));
        view->render();
        EXPECT_TRUE(isColor(colorAt(200, 150), 255, 0, 0));
        EXPECT_TRUE(isColor(colorAt(160, 150), 0, 0, 255));
        EXPECT_TRUE(isColor(colorAt(100, 150), 0, 128, 0));
        view->removeVisualization();
        EXPECT_EQ(product->releases, image);
    }
    EXPECT_GT(terrain->releases, 0) << "its kept picture is enough";
    view->setVisualization(finishedItem({{QUORDisplayState::OUTLINE_LAYER, outline}}));
    EXPECT_EQ(outline->releases, 0);
    view->render();
    EXPECT_TRUE(isColor(colorAt(100, 150), 38, 64, 77));
}

TEST_F(QUORRendererTest, OneDrawingPerImage) {
    const auto view = makeRenderer();
    int drawings = 0;
    countEvents(view->getMainRenderer(), vtkCommand::StartEvent, drawings);
    view->getCameraInteractor()->setView({-50000.0, 0.0, 50000.0}, {1.0, 0.0, -1.0});
    view->getCameraInteractor()->applyCamera(true);
    view->render();
    EXPECT_EQ(drawings, 1);
    EXPECT_NEAR(view->getCompass()->GetHeading(), 0.25, 1e-6);
    const double* stated = view->getMainRenderer()->GetActiveCamera()->GetClippingRange();
    EXPECT_DOUBLE_EQ(stated[0], 100.0);
    EXPECT_DOUBLE_EQ(stated[1], 8000000.0);
    view->renderWindow();
    EXPECT_EQ(drawings, 3);
}

TEST_F(QUORRendererTest, TheGroundFollowsTheUsersCamera) {
    const auto view = makeRenderer(false);
    view->getCameraInteractor()->setView({0.0, -900000.0, 900000.0}, {0.0, 1.0, -1.0});
    view->getCameraInteractor()->applyCamera(false);
    const auto terrain = square(300000.0, 0.0, 0.0, 0.5, 0.0);
    view->setVisualization(
        finishedItem({{QUORDisplayState::TERRAIN_LAYER, terrain},
                      {QUORDisplayState::PRODUCT_3D_LAYER, square(50000.0, 2000.0, 1.0, 0.0, 0.0)}}));
    view->render();
    const auto press = [&](const char* key, char code) {
        interactor->SetKeyEventInformation(0, 0, code, 1, key);
        interactor->InvokeEvent(vtkCommand::KeyPressEvent);
    };
    const auto turnCompass = [&] {
        const auto place = [&](vtkCoordinate* corner) {
            const int* at = corner->GetComputedDisplayValue(view->getMainRenderer());
            return std::array<int, 2>{at[0], at[1]};
        };
        const auto low = place(view->getCompass()->GetPoint1Coordinate());
        const auto high = place(view->getCompass()->GetPoint2Coordinate());
        const int middle = (low[1] + high[1]) / 2;
        drag({high[0] - 3, middle}, {high[0] - 8, middle + 15});
    };
    const std::pair<const char*, std::function<void()>> movements[] = {
        {"drag",
         [&] {
             drag({200, 150}, {230, 140});
         }},
        {"wheel", [&] { send(vtkCommand::MouseWheelForwardEvent, 200, 150); }},
        {"arrow", [&] { press("Left", 0); }},
        {"reset", [&] { press("r", 'r'); }},
        {"wheel back", [&] { send(vtkCommand::MouseWheelBackwardEvent, 200, 150); }},
        {"compass", turnCompass},
    };
    for (const auto& [name, move] : movements) {
        SCOPED_TRACE(name);
        const auto before = pixels();
        move();
        const auto moved = pixels();
        EXPECT_TRUE(moved != before) << "the camera stayed";
        EXPECT_DOUBLE_EQ(view->getMainRenderer()->GetActiveCamera()->GetClippingRange()[0], 100.0);
        terrain->GetProperty()->Modified(); // no kept picture is valid any more
        view->render();
        EXPECT_TRUE(moved == pixels()) << "not as drawn afresh";
    }
}

TEST_F(QUORRendererTest, LegendAndColourBarTellOfTheProduct) {
    TestStore store;
    TestProduct product;
    product.site = "HELSINKI";
    const QUORDataFrame::Ptr frame = store.frame(product);
    ASSERT_TRUE(frame);
    const auto view = makeRenderer();
    view->setInfoData(frame, std::make_shared<QUORGeneralSettings>());
    ASSERT_EQ(view->getLegendLines().size(), 4);
    EXPECT_EQ(view->getLegendLines().first(), QStringLiteral("Reflectivity, dBZ"));
    const auto darkest = [&](int left, int right, int bottom, int top) {
        int least = 255;
        for (int x = left; x < right; ++x) {
            for (int y = bottom; y < top; ++y) {
                least = std::min(least, colorAt(x, y).green());
            }
        }
        return least;
    };
    view->setVisualization(finishedItem({}));
    view->render();
    EXPECT_LT(darkest(8, 130, 6, 50), 50) << "dark text";
    EXPECT_GT(colorAt(130, 45).green(), 120) << "on a light veil";
    EXPECT_LT(darkest(5, 19, 280, 296), 60) << "the bar's title";
    view->toggleLegend(false);
    view->setVisualization(finishedItem({}));
    view->render();
    EXPECT_GE(darkest(8, 130, 6, 50), 60);
}

TEST_F(QUORRendererTest, TheSiteMarkerStandsWhereTheRadarIs) {
    const auto view = makeRenderer();
    for (const QUORPoint3D& radar : {QUORPoint3D{1000.0, -2000.0, 750.0}, QUORPoint3D{0.0, 0.0, 6000.0}}) {
        view->setVisualization(finishedItem({}, QStringLiteral("TEST"), radar));
        const double* bounds = view->getSiteMarker()->GetBounds();
        EXPECT_NEAR((bounds[0] + bounds[1]) / 2, radar.x, 1.0);
        EXPECT_NEAR((bounds[2] + bounds[3]) / 2, radar.y, 1.0);
        EXPECT_NEAR((bounds[4] + bounds[5]) / 2, radar.z, 1.0);
    }
}

TEST_F(QUORRendererTest, TheColourBarShowsTheMapOfTheProduct) {
    ScratchHome::writeSettings(
        QStringLiteral("QUOR3DColors.conf"),
        QStringLiteral("[DATAMAPPING]\ndata\\size=14\ndata\\3\\data_index=1\n"
                       "[COLORSCALE 1]\nname=Default\ndata_index=1\ncolorset_index=1\npoints\\size=2\n"
                       "points\\1\\seam=0\npoints\\2\\seam=50\n"
                       "[COLORSCALE 2]\nname=Other\ndata_index=1\ncolorset_index=2\npoints\\size=2\n"
                       "points\\1\\seam=0\npoints\\2\\seam=50\n"
                       "[COLORSET 1]\npoints\\size=2\npoints\\1\\lower\\r=255\npoints\\1\\upper\\r=254\n"
                       "points\\2\\lower\\r=255\npoints\\2\\upper\\r=254\n"
                       "[COLORSET 2]\npoints\\size=2\npoints\\1\\lower\\b=255\npoints\\1\\upper\\b=254\n"
                       "points\\2\\lower\\b=255\npoints\\2\\upper\\b=254\n"));
    const auto view = makeRenderer();
    for (const auto& [map, isBlue] : {std::pair("Default", false), std::pair("Other", true)}) {
        ScratchHome::writeSettings(QStringLiteral("QUOR3D.conf"),
                                   QStringLiteral("[PRODUCT%20CAPPI%20Z]\nrendering=surface\ncolormap=%1\n")
                                       .arg(QLatin1String(map)));
        TestStore store;
        view->setInfoData(store.frame(TestProduct()), std::make_shared<QUORGeneralSettings>());
        view->setVisualization(finishedItem({}));
        view->render();
        int red = 0;
        int blue = 0;
        for (int x = 4; x < 20; ++x) {
            for (int y = 185; y < 290; ++y) {
                red += isColor(colorAt(x, y), 255, 0, 0) ? 1 : 0;
                blue += isColor(colorAt(x, y), 0, 0, 255) ? 1 : 0;
            }
        }
        EXPECT_EQ(blue > 0, isBlue) << map;
        EXPECT_EQ(red > 0, !isBlue) << map;
    }
}

TEST_F(QUORRendererTest, OnlyAnInteractiveViewHasAPointWidget) {
    const auto view = makeRenderer(false);
    ASSERT_NE(view->getPointWidget(), nullptr);
    for (const bool isOn : {true, false}) {
        view->togglePointWidget(isOn, false);
        EXPECT_EQ(bool(view->getPointWidget()->GetEnabled()), isOn);
    }
    const auto offscreen = makeRenderer();
    offscreen->togglePointWidget(true, true);
    EXPECT_EQ(offscreen->getPointWidget(), nullptr);
}

TEST(QUORDepthRangeTest, FitsWhatTheViewCanShow) {
    struct Row {
        const char* name;
        double height;
        double pitch; ///< degrees, down
        double nearest;
        double farthest;
    };
    const double half = std::tan(15.0 * 3.14159265358979 / 180.0);
    const std::vector<Row> rows{
        {"straight down", 1000000.0, 90.0, 0.95 * 850000.0, 1.05 * 1002500.0},
        {"oblique", 300000.0, 45.0, 0.95 * 150000.0 / ((1.0 + half) / std::sqrt(2.0)),
         1.05 * 302500.0 / ((1.0 - half) / std::sqrt(2.0))},
        {"horizon in view", 300000.0, 10.0,
         0.95 * 150000.0 / (std::sin(0.1745329) + half * std::cos(0.1745329)), 8000000.0},
        {"inside the scene", 50000.0, 45.0, 500.0, 1.05 * 52500.0 / ((1.0 - half) / std::sqrt(2.0))},
        {"on the floor", 2000.0, 0.0, 100.0, 8000000.0},
    };
    for (const Row& row : rows) {
        vtkNew<vtkCamera> camera;
        const double pitch = row.pitch * 3.14159265358979 / 180.0;
        camera->SetPosition(0.0, 0.0, row.height);
        camera->SetFocalPoint(0.0, std::cos(pitch) + 1e-6, row.height - std::sin(pitch));
        camera->SetViewUp(0.0, 0.0, 1.0);
        camera->OrthogonalizeViewUp();
        camera->SetViewAngle(30.0);
        camera->SetClippingRange(100.0, 8000000.0);
        const auto [nearest, farthest] = QUORDepthRange::fit(camera, -2500.0, 150000.0);
        EXPECT_NEAR(nearest, row.nearest, row.nearest * 1e-3) << row.name;
        EXPECT_NEAR(farthest, row.farthest, row.farthest * 1e-3) << row.name;
    }
}
