// SPDX-License-Identifier: MIT
// What the packaged settings draw, of the whole scene.
#include "LandmarkWriter.h"
#include "OffscreenScene.h"
#include "QUOR2DLayerActor.h"
#include "QUORCameraInteractor.h"
#include "QUORFlatLabelActor.h"
#include "QUORGeneralSettings.h"
#include "QUORLandmarkLabel.h"
#include "QUORRenderer.h"
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
            ScratchHome::writePackaged(file,
                                       QString::fromUtf8(readFile(sourcePath(QStringLiteral("share/") + file))));
        }
        _state->getLayer(State::PRODUCT_2D_LAYER)->setVisible(false);
        _general = std::make_shared<QUORGeneralSettings>();
    }

    void visualizationFinished(QUORVisualization*) override { ++_finished; }
    QUORGeneralSettings::CPtr getVisualizationGeneralSettings() override { return _general; }
    QUORDisplayState::CPtr getVisualizationDisplayState() override { return _state; }

    /// A thunderstorm's column at the site, in a product of so many points of 2 km.
    static TestProduct makeProduct(int points) {
        TestProduct product;
        product.site = "SAMPLE";
        product.latitude = 42.0;
        product.longitude = 1.5;
        product.points = {points, points, 24};
        product.stepsCm = {200000, 200000, 50000};
        product.radar = {points * 500, points * 500, 0};
        product.fill = [=](int x, int y, int z) {
            const double r = std::hypot(x - 0.5 * points, y - 0.5 * points, z - 8.0);
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
        _view->setInfoData(frame, _general);
        _view->setVisualization(_visualization.getVisualizationResult());
        const QUORFile& file = *frame->getData3d()->getFile();
        const QUORViewFit fit({-0.5 * file.getWidthM(), -0.5 * file.getLengthM(), 0.0},
                              {0.5 * file.getWidthM(), 0.5 * file.getLengthM(),
                               file.getHeightM() * _general->getVerticalScale()});
        const auto view =
            fit.find(heading, pitch, {double(width), double(height), _view->getTakenAreas()});
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
            if (label.GetVisibility() == 0) {
                return;
            }
            if (label.IsHalo()) {
                ++halos;
            } else {
                EXPECT_TRUE(label.FindCorners(_view->getMainRenderer(), corners));
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
        for (const auto& [width, height] : {std::pair(1600, 1200), std::pair(1920, 1080), std::pair(640, 480)}) {
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

