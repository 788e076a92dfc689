// SPDX-License-Identifier: MIT
// What the packaged settings draw, of the whole scene.
#include "LandmarkWriter.h"
#include "OffscreenScene.h"
#include "QUOR2DLayerActor.h"
#include "QUORCameraInteractor.h"
#include "QUORColormap.h"
#include "QUORFile.h"
#include "QUORFlatLabelActor.h"
#include "QUORGeneralSettings.h"
#include "QUORLandmarkLabel.h"
#include "QUORRenderer.h"
#include "QUORScalarBar.h"
#include "QUORScreenQuad.h"
#include "QUORViewFit.h"
#include "QUORVisualization.h"
#include "QUORVisualizationObserver.h"
#include "RenderChecks.h"
#include "ScratchHome.h"
#include "TestFiles.h"
#include "TestStore.h"

#include <QImage>

#include <vtkAssembly.h>
#include <vtkProp3DCollection.h>
#include <vtkPropAssembly.h>
#include <vtkPropCollection.h>
#include <vtkRenderer.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace {

using State = QUORDisplayState;
using Corners = QUORFlatLabelActor::Corners;

/// A text that lies in the scene, where it stands in the picture.
struct DrawnLabel {
    QString text;
    Corners corners;
};

/// A mid-latitude site, in the scene and from the camera that a fresh installation has.
class PackagedPictureTest : public OffscreenScene, public QUORVisualizationObserver {
protected:
    void SetUp() override {
        OffscreenScene::SetUp();
        if (IsSkipped()) {
            return;
        }
        window->RemoveRenderer(renderer);
        for (const char* name : {"QUOR3D", "QUOR3DColors", "QUOR3DVisStyles"}) {
            const QString file = QLatin1String(name) + QStringLiteral(".conf");
            ScratchHome::writePackaged(
                file, QString::fromUtf8(readFile(sourcePath(QStringLiteral("share/") + file))));
        }
        _state->getLayer(State::PRODUCT_2D_LAYER)->setVisible(false);
        _general = std::make_shared<QUORGeneralSettings>();
    }

    void visualizationFinished(QUORVisualization*) override { ++_finished; }
    QUORGeneralSettings::CPtr getVisualizationGeneralSettings() override { return _general; }
    QUORDisplayState::CPtr getVisualizationDisplayState() override { return _state; }

    /// A line of thunderstorms over the site that reaches 96 km to east and west, in a product of so many
    /// points of 2 km.
    static TestProduct makeProduct(int points) {
        TestProduct product;
        product.site = "SAMPLE";
        product.latitude = 42.0;
        product.longitude = 1.5;
        product.points = {points, points, 24};
        product.stepsCm = {200000, 200000, 50000};
        product.radar = {points * 500, points * 500, 0};
        product.fill = [=](int x, int y, int z) {
            const double r = std::hypot((x - 0.5 * points) / 4.0, y - 0.5 * points, z - 8.0);
            return r < 12.0 ? unsigned(180.0 - 5.0 * r) : 0U;
        };
        return product;
    }

    void draw(const TestProduct& product, int width, int height, double heading = 45.0, double pitch = 40.0) {
        window->SetSize(width, height);
        if (!_view) {
            _view = std::make_unique<QUORRenderer>(window, nullptr, nullptr, true);
        } else {
            _view->removeVisualization();
            _view->restart();
        }
        const QUORDataFrame::Ptr frame = _store.frame(product);
        ASSERT_TRUE(frame);
        const int before = _finished;
        _visualization.setSourceData(frame);
        _visualization.updateVisualization(true);
        ASSERT_TRUE(waitUntil([&] { return _finished > before; }, 60000));
        _view->setInfoData(frame, _general, _with2d);
        _view->setVisualization(_visualization.getVisualizationResult());
        const QUORFile& file = *frame->getData3d()->getFile();
        const QUORViewFit fit({-0.5 * file.getWidthM(), -0.5 * file.getLengthM(), 0.0},
                              {0.5 * file.getWidthM(), 0.5 * file.getLengthM(),
                               file.getHeightM() * _general->getVerticalScale()});
        const auto view = fit.find(heading, pitch, {double(width), double(height), _view->getTakenAreas()});
        _view->getCameraInteractor()->setView(view.position, view.direction);
        _view->getCameraInteractor()->applyCamera(false);
        _view->render();
    }

    template <class Label, class Act>
    void forEach(int layer, Act act) {
        const auto prop = _visualization.getVisualizationResult()->getElement(layer)->getProp();
        vtkCollection* parts = nullptr;
        if (auto* flat = QUOR2DLayerActor::SafeDownCast(prop)) {
            parts = flat->GetAssembly()->GetParts();
        } else {
            parts = vtkPropAssembly::SafeDownCast(prop)->GetParts();
        }
        for (int i = 0; i < parts->GetNumberOfItems(); ++i) {
            if (auto* label = Label::SafeDownCast(parts->GetItemAsObject(i))) {
                act(*label);
            }
        }
    }

    /// The texts that a layer shows lying in the scene, with the halo that each must have shown with it.
    std::vector<DrawnLabel> findFlat(int layer) {
        std::vector<DrawnLabel> labels;
        int halos = 0;
        forEach<QUORFlatLabelActor>(layer, [&](QUORFlatLabelActor& label) {
            Corners corners{};
            if (label.GetVisibility() == 0 || !label.FindCorners(_view->getMainRenderer(), corners)) {
                return;
            }
            if (label.IsHalo()) {
                ++halos;
            } else {
                labels.push_back({label.GetText(), corners});
            }
        });
        EXPECT_EQ(halos, int(labels.size()));
        return labels;
    }

    QImage readPicture() {
        const int* size = window->GetSize();
        vtkNew<vtkUnsignedCharArray> rgb;
        window->GetPixelData(0, 0, size[0] - 1, size[1] - 1, 0, rgb.Get(), 0);
        return QImage(rgb->GetPointer(0), size[0], size[1], 3 * size[0], QImage::Format_RGB888)
            .mirrored(false, true);
    }

    /// How many of the pixels between these corners have the colour, more or less.
    static int countPixels(const QImage& picture, const Corners& corners, const QColor& color) {
        const auto [left, right] = std::ranges::minmax(corners, {}, [](const auto& p) { return p[0]; });
        const auto [bottom, top] = std::ranges::minmax(corners, {}, [](const auto& p) { return p[1]; });
        int count = 0;
        for (int x = std::max(0, int(left[0])); x <= std::min(picture.width() - 1, int(right[0])); ++x) {
            for (int y = std::max(0, int(bottom[1])); y <= std::min(picture.height() - 1, int(top[1])); ++y) {
                const QColor at = picture.pixelColor(x, picture.height() - 1 - y);
                count += isColor(at, color.red(), color.green(), color.blue(), 12) ? 1 : 0;
            }
        }
        return count;
    }

    TestStore _store;
    std::shared_ptr<QUORGeneralSettings> _general;
    std::shared_ptr<QUORDisplayState> _state = std::make_shared<QUORDisplayState>();
    bool _with2d = false;
    int _finished = 0;
    std::unique_ptr<QUORRenderer> _view;
    QUORVisualization _visualization{this};

private:
    ScratchHome _home;
};

const QColor DEGREES(191, 224, 255);

} // namespace

TEST_F(PackagedPictureTest, DegreesOfEitherKindCanBeReadInEveryDefaultPicture) {
    for (const int points : {120, 240}) {
        for (const auto& [width, height] :
             {std::pair(1600, 1200), std::pair(1920, 1080), std::pair(640, 480)}) {
            SCOPED_TRACE(testing::Message() << 2 * points << " km, " << width << 'x' << height);
            draw(makeProduct(points), width, height);
            const QImage picture = readPicture();
            std::map<bool, std::set<QString>> shown;
            for (const DrawnLabel& label : findFlat(State::LAT_LON_GRID_LAYER)) {
                const bool isLatitude =
                    label.text.endsWith(QLatin1Char('N')) || label.text.endsWith(QLatin1Char('S'));
                for (const auto& [x, y] : label.corners) {
                    EXPECT_TRUE(x >= 0 && x <= width && y >= 0 && y <= height) << label.text.toStdString();
                    for (const QUORPictureArea& area : _view->getTakenAreas()) {
                        EXPECT_FALSE(x > area.left * width && x < area.right * width &&
                                     y > area.bottom * height && y < area.top * height)
                            << label.text.toStdString();
                    }
                }
                if (countPixels(picture, label.corners, DEGREES) > 15) {
                    shown[isLatitude].insert(label.text);
                }
            }
            EXPECT_GE(shown[true].size(), 2U) << "latitudes";
            EXPECT_GE(shown[false].size(), 2U) << "longitudes";
        }
    }
}

TEST_F(PackagedPictureTest, TextsThatLieInTheSceneStayApartAndLeanTowardsALowCamera) {
    const std::pair<int, QColor> layers[] = {{State::RANGE_RINGS_LAYER, QColor(255, 255, 217)},
                                             {State::LAT_LON_GRID_LAYER, DEGREES}};
    const auto countOverlaps = [&] {
        std::vector<QUORScreenQuad> quads;
        int overlaps = 0;
        for (const auto& [layer, color] : layers) {
            for (const DrawnLabel& label : findFlat(layer)) {
                const QUORScreenQuad quad(label.corners);
                overlaps +=
                    int(std::ranges::count_if(quads, [&](const auto& q) { return q.overlaps(quad); }));
                quads.push_back(quad);
            }
        }
        return overlaps;
    };
    const auto listTexts = [&] {
        QStringList texts;
        for (const auto& [layer, color] : layers) {
            for (const DrawnLabel& label : findFlat(layer)) {
                texts << label.text;
            }
        }
        return texts;
    };
    for (const double pitch : {40.0, 12.0}) {
        SCOPED_TRACE(pitch);
        const TestProduct product = makeProduct(240);
        ScratchHome::removeSettings(QStringLiteral("QUOR3DVisStyles.conf"));
        draw(product, 1280, 720, 45.0, pitch);
        const QImage picture = readPicture();
        EXPECT_EQ(countOverlaps(), 0);
        for (const auto& [layer, color] : layers) {
            const std::vector<DrawnLabel> labels = findFlat(layer);
            EXPECT_GE(labels.size(), 5U) << layer;
            for (const DrawnLabel& label : labels) {
                const auto [low, high] =
                    std::ranges::minmax(label.corners, {}, [](const auto& p) { return p[1]; });
                EXPECT_GE(high[1] - low[1], 7.0) << label.text.toStdString();
                EXPECT_GT(countPixels(picture, label.corners, color), 10)
                    << label.text.toStdString() << " is hidden by a shell";
            }
        }
        const QStringList texts = listTexts();
        draw(product, 1280, 720, 45.0, pitch);
        EXPECT_EQ(listTexts(), texts) << "the next picture";

        ScratchHome::writeSettings(QStringLiteral("QUOR3DVisStyles.conf"),
                                   QStringLiteral("[RENDERER_DAY]\nlabel\\apart=0\n"));
        draw(product, 1280, 720, 45.0, pitch);
        EXPECT_GT(countOverlaps(), 0) << "as they lie without";
        EXPECT_GT(listTexts().size(), texts.size());
    }
}

TEST_F(PackagedPictureTest, TheSampleTownsHaveRoomInTheFirstPicture) {
    const std::vector<LandmarkWriter::Town> towns = LandmarkWriter::makeTowns(1, 42.0, 1.5);
    ScratchHome::writeSettings(QStringLiteral("QUOR3DLandmarks.conf"), LandmarkWriter::toText(towns));
    const auto listShown = [&] {
        QStringList names;
        forEach<QUORLandmarkLabel>(State::GEO_LABELS_LAYER, [&](QUORLandmarkLabel& label) {
            if (!label.IsLeftOut()) {
                names << label.GetText();
            }
        });
        return names;
    };
    draw(makeProduct(240), 1600, 1200);
    EXPECT_EQ(std::size_t(listShown().size()), towns.size());
    draw(makeProduct(240), 640, 480);
    EXPECT_GE(std::size_t(listShown().size()), towns.size() / 2) << "and most in a small one";
    EXPECT_TRUE(listShown().contains(towns.front().name));
}

TEST_F(PackagedPictureTest, TheLegendGrowsUpwardsInOnePiece) {
    const auto countLit = [](const QImage& picture, const QRect& part) {
        int lit = 0;
        for (int y = part.top(); y < part.bottom(); ++y) {
            for (int x = part.left(); x < part.right(); ++x) {
                lit += picture.pixelColor(x, y).lightness() > 200 ? 1 : 0;
            }
        }
        return lit;
    };
    for (const int layer : {State::OUTLINE_LAYER, State::LAT_LON_GRID_LAYER, State::RANGE_RINGS_LAYER}) {
        _state->getLayer(layer)->setVisible(false); // nothing else lies under the legend
    }
    for (const auto& [width, height] : {std::pair(640, 480), std::pair(1600, 1200), std::pair(1280, 720)}) {
        SCOPED_TRACE(testing::Message() << width << 'x' << height);
        ScratchHome::writeSettings(QStringLiteral("QUOR3DVisStyles.conf"),
                                   QStringLiteral("[RENDERER_DAY]\nlegend\\details=0\n"));
        draw(makeProduct(120), width, height);
        const QImage four = readPicture();
        ScratchHome::removeSettings(QStringLiteral("QUOR3DVisStyles.conf"));
        draw(makeProduct(120), width, height);
        const QImage all = readPicture();

        const int top = int(std::ceil(0.18 * height));
        const QRect given(0, height - top + 2, int(0.35 * width), top - 2);
        EXPECT_TRUE(four.copy(given) == all.copy(given)) << "the given lines keep their pixels";
        const auto findRight = [&](int y) {
            int x = int(0.36 * width);
            while (x > 0 && all.pixelColor(x, y).lightness() < 250) {
                --x;
            }
            return x;
        };
        const int right = findRight(height - top / 2);
        EXPECT_GT(right, width / 10);
        EXPECT_EQ(findRight(height - top - top / 2), right) << "one edge";
        const int left = int(0.01 * width) + 4;
        const int pitch = top / 4;
        const QRect further(left, height - top - 3 * pitch + 1, right - left - 2, 3 * pitch - 2);
        EXPECT_EQ(countLit(four, further), 0);
        for (int line = 0; line < 3; ++line) { // UTC, height factor and isovalues
            EXPECT_GT(countLit(all, QRect(left, further.top() + line * pitch, further.width(), pitch - 2)),
                      9);
        }
        EXPECT_EQ(countLit(all, further.translated(0, -3 * pitch - 3)), 0) << "nothing above";

        const QUORColormap map(QStringLiteral("Default"), QUORDataType(2), QUORColormap::Display);
        for (const double shell : {20.0, 40.0, 50.0}) {
            const auto color = map.getColor(shell);
            int pixels = 0;
            for (int y = further.top(); y < further.bottom(); ++y) {
                for (int x = left; x < right; ++x) {
                    pixels += isColor(all.pixelColor(x, y), color[0], color[1], color[2]) ? 1 : 0;
                }
            }
            EXPECT_GE(pixels, 36) << shell;
        }
        const std::vector<QUORPictureArea> areas = _view->getTakenAreas();
        for (std::size_t i = 0; i < areas.size(); ++i) {
            for (std::size_t j = 0; j < i; ++j) {
                const auto toQuad = [](const QUORPictureArea& area) {
                    return QUORScreenQuad(area.left, area.right, area.bottom, area.top);
                };
                EXPECT_FALSE(toQuad(areas[i]).overlaps(toQuad(areas[j])));
            }
        }
    }
}

TEST_F(PackagedPictureTest, BarLabelsStandAtTheirColorWithinAPixel) {
    for (const int type :
         {SampleProduct::Reflectivity8, SampleProduct::Velocity8, SampleProduct::RainRate16}) {
        TestProduct product = makeProduct(120);
        product.type = std::uint16_t(type);
        product.fill = nullptr;
        const QUORColormap map(QStringLiteral("Default"), QUORDataType(type), QUORColormap::Display);
        for (const auto& [width, height] :
             {std::pair(640, 480), std::pair(1280, 720), std::pair(1600, 1200), std::pair(1001, 907)}) {
            SCOPED_TRACE(testing::Message() << "type " << type << ", " << width << 'x' << height);
            draw(product, width, height, 45.0, 40.0);
            const QImage picture = readPicture();
            const auto isGround = [&](int x, int y) {
                return isColor(picture.pixelColor(x, y), 204, 204, 204);
            };
            const int left = int(0.01 * width);
            const int swatch = left + int(0.008 * width);
            // Upwards from what lies under it.
            int bottom = int(0.41 * height) - 3;
            while (bottom > 0 && isGround(swatch, bottom)) {
                --bottom;
            }
            int top = bottom;
            while (top > 0 && !isGround(swatch, top - 1)) {
                --top;
            }
            int swatchRight = swatch;
            while (!isGround(swatchRight, (top + bottom) / 2)) {
                ++swatchRight;
            }
            // The middles of the texts, from below.
            std::vector<double> middles;
            int begin = 0;
            bool before = false;
            for (int y = bottom + 12; before || y > top - 3; --y) {
                bool dark = false;
                for (int x = swatchRight + 1; x < int(0.05 * width) - 1; ++x) {
                    dark = dark || picture.pixelColor(x, y).lightness() < 150;
                }
                if (dark && !before) {
                    begin = y;
                } else if (!dark && before) {
                    middles.push_back(0.5 * (begin + y + 1));
                }
                before = dark;
            }
            auto* props = _view->getColorScaleRenderer()->GetViewProps();
            const auto* bar = QUORScalarBar::SafeDownCast(props->GetItemAsObject(0));
            ASSERT_NE(bar, nullptr);
            const std::vector<double> values = bar->FindLabels(bottom + 1 - top);
            ASSERT_EQ(middles.size(), values.size());
            for (std::size_t i = 0; i < values.size(); ++i) {
                const auto color = map.getColor(values[i]);
                int nearest = 0;
                double least = 1e9;
                // Of rows of one colour the one nearest to the text counts.
                for (int y = top; y <= bottom; ++y) {
                    const QColor at = picture.pixelColor(swatch, y);
                    const double distance =
                        std::hypot(at.red() - color[0], at.green() - color[1], at.blue() - color[2]);
                    if (distance < least - 1e-9 ||
                        (distance < least + 1e-9 &&
                         std::abs(y - middles[i]) < std::abs(nearest - middles[i]))) {
                        least = distance;
                        nearest = y;
                    }
                }
                EXPECT_NEAR(middles[i], nearest, 1.5) << values[i] << " beside its colour";
                const double over = bar->FindHeight(values[i]) * (bottom + 1 - top);
                EXPECT_NEAR(middles[i], bottom + 0.5 - over, 1.0) << values[i];
            }
        }
    }
}

/// The bar of a velocity does not tell what the colours of the rain mean.
TEST_F(PackagedPictureTest, RainUnderAnotherQuantityHasAKeyOfItsOwn) {
    TestProduct rain = TestProduct::sri();
    rain.site = "SAMPLE";
    rain.write(_store.folder("2d"));
    TestProduct velocity = makeProduct(120);
    velocity.type = SampleProduct::Velocity8;
    velocity.fill = nullptr;
    const QUORColormap map(QStringLiteral("Default"), QUORDataType(SampleProduct::RainRate16),
                           QUORColormap::Display);
    const auto color = map.getColor(10.0);
    for (const bool with2d : {false, true}) {
        _with2d = with2d;
        draw(velocity, 1600, 1200);
        const QImage picture = readPicture();
        int pixels = 0;
        for (int y = 0.6 * 1200; y < 0.82 * 1200; ++y) {
            for (int x = 20; x < 520; ++x) {
                pixels += isColor(picture.pixelColor(x, y), color[0], color[1], color[2]) ? 1 : 0;
            }
        }
        EXPECT_EQ(pixels > 300, with2d);
    }
}
