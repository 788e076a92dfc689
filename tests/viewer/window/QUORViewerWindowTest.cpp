// SPDX-License-Identifier: MIT
#include "QUORViewerWindow.h"

#include "ImageComparer.h"
#include "QUORReadingPanel.h"
#include "QUORSceneView.h"
#include "QUORSurfacesPanel.h"
#include "QUORViewPlan.h"
#include "QUORViewerExport.h"
#include "ScratchHome.h"
#include "ServiceFolders.h"
#include "ServiceProcess.h"
#include "TestFiles.h"
#include "WaitUntil.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QImageReader>
#include <QLabel>
#include <QListWidget>
#include <QMenuBar>
#include <QPushButton>
#include <QSlider>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>
#include <QTreeWidget>

#include <gtest/gtest.h>

namespace {

constexpr int DEADLINE = 30000;

/// The whole window over three volumes and a rainfall product, driven as a user would.
class QUORViewerWindowTest : public testing::Test {
protected:
    QUORViewerWindowTest() : folders(_folder.path()) {
        qputenv("MESA_SHADER_CACHE_DISABLE", "true"); // the first home is gone by the second test
        ScratchHome::writeSettings(QStringLiteral("QUOR3D.conf"), QString::fromUtf8(folders.mainSettings()));
        for (int i = 0; i < 3; ++i) {
            paths.append(folders.drop(storm(5 * i)));
        }
        folders.drop(rain(), QStringLiteral("2d"));
    }

    /// Everywhere under the storm.
    static TestProduct rain() {
        TestProduct product = ServiceFolders::rain();
        product.points = {48, 48, 1};
        product.stepsCm = storm(0).stepsCm;
        product.radar = storm(0).radar;
        product.fill = [](int, int, int) { return 30000U; };
        return product;
    }

    /// Forty kilometres of echo in the middle of a grid of ninety-six.
    static TestProduct storm(int minutes) {
        TestProduct product = ServiceFolders::storm(minutes);
        product.points = {48, 48, 10};
        product.stepsCm = {200000, 200000, 100000};
        product.radar = {24000, 24000, 0};
        product.fill = [](int x, int y, int z) {
            return x > 12 && x < 36 && y > 12 && y < 36 && z > 0 && z < 9 ? 160U : 1U;
        };
        return product;
    }

    void SetUp() override {
        makeWindow();
        if (!window->getView().isReady()) {
            GTEST_SKIP() << "cannot draw here: " << window->getView().getError().toStdString();
        }
    }

    void makeWindow() {
        window = std::make_unique<QUORViewerWindow>();
        window->resize(1100, 760);
        window->show();
    }

    bool settled() {
        const bool done = waitUntil(
            [&] { return window->getSession().getScene().isComplete() && !window->getSession().isBusy(); },
            DEADLINE);
        // Settings that are being dragged take effect after a moment.
        QTest::qWait(200);
        return done && waitUntil([&] { return !window->getSession().isBusy(); }, DEADLINE);
    }
    void open(const QString& path) {
        window->open(path);
        ASSERT_TRUE(settled()) << window->getMessage().toStdString();
    }

    QUORSceneView& view() { return window->getView(); }
    QUORViewPlan plan() { return QUORViewPlan::of(view().getView()); }
    /// Metres to the ground along the line of sight.
    double reach() {
        const QUORViewGeometry::View from = view().getView();
        return from.position.z / -from.direction.z;
    }
    template <class Widget>
    Widget* find(const char* name) {
        auto* widget = window->findChild<Widget*>(QLatin1String(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }
    void drag(Qt::MouseButton button, QPoint from, QPoint by) {
        QTest::mousePress(&view(), button, Qt::NoModifier, from);
        QTest::mouseMove(&view(), from + by / 2);
        QTest::mouseMove(&view(), from + by);
        QTest::mouseRelease(&view(), button, Qt::NoModifier, from + by);
    }
    void wheel(int steps) { wheelBy(120 * steps); }
    void wheelBy(int delta) {
        const QPointF at = view().rect().center();
        QWheelEvent event(at, view().mapToGlobal(at), {}, {0, delta}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&view(), &event);
    }
    double changeSince(const QImage& before) {
        return ImageComparer::compare(before, view().getPicture()).colour;
    }
    QString clock() {
        return window->getSession().getScene().leaf->getFile()->getDataTime().toString(
            QStringLiteral("hh:mm"));
    }

    ScratchHome _home;
    QTemporaryDir _folder;
    ServiceFolders folders;
    QStringList paths;
    std::unique_ptr<QUORViewerWindow> window;
};

TEST_F(QUORViewerWindowTest, TurnsTheViewAndTakesItBack) {
    open(paths.at(0));
    EXPECT_NEAR(plan().pitch, 90.0, 0.1); // from above, the whole product
    view().lookFrom(0.0, 30.0);
    const QUORViewPlan start = plan();
    const double far = reach();
    const QPoint middle = view().rect().center();

    drag(Qt::LeftButton, middle, {60, 0});
    EXPECT_GT(std::abs(plan().heading - start.heading), 3.0);
    EXPECT_NEAR(reach(), far, 0.01 * far);
    ASSERT_TRUE(waitUntil([&] { return view().canUndo() && !view().canRedo(); }));
    QTest::qWait(250); // the movement has come to its end
    view().undo();
    EXPECT_NEAR(plan().heading, start.heading, 1e-6);
    view().redo();
    EXPECT_GT(std::abs(plan().heading - start.heading), 3.0);

    view().lookFrom(0.0, 30.0);
    wheel(1);
    EXPECT_NEAR(reach(), 0.9 * far, 0.001 * far);
    wheel(-1);
    EXPECT_NEAR(reach(), 0.99 * far, 0.001 * far);
    // A touch pad gives a step in many parts.
    view().lookFrom(0.0, 30.0);
    for (int i = 0; i < 8; ++i) {
        wheelBy(15);
    }
    EXPECT_NEAR(reach(), 0.9 * far, 0.001 * far);

    const QUORPoint3D before = view().getView().position;
    QTest::keyClick(&view(), Qt::Key_Right);
    EXPECT_GT(view().getView().position.x, before.x);
    view().fit();
    EXPECT_NEAR(reach(), far, 1.0);
    view().lookFrom(270.0, 25.0);
    EXPECT_NEAR(plan().heading, 270.0, 1e-6);
    EXPECT_NEAR(plan().pitch, 25.0, 1e-6);
}

// The compass turns the view and leaves its pitch; beside it the same drag goes round the target.
TEST_F(QUORViewerWindowTest, TheCompassTurnsTheView) {
    open(paths.at(0));
    const auto turnsAt = [&](QPoint at) {
        view().lookFrom(0.0, 30.0);
        drag(Qt::LeftButton, at, {0, 24});
        return std::abs(plan().heading) > 1.0 && std::abs(plan().pitch - 30.0) < 0.5;
    };
    EXPECT_FALSE(turnsAt(view().rect().center()));
    bool turned = false;
    for (int x = view().width() - 10; x > view().width() * 3 / 4 && !turned; x -= 4) {
        turned = turnsAt({x, view().height() / 9});
    }
    EXPECT_TRUE(turned);
}

// Smaller pictures while the view moves, the full one a moment later.
TEST_F(QUORViewerWindowTest, DrawsInFullOnceTheViewHasSettled) {
    open(paths.at(0));
    QList<bool> pictures;
    QObject::connect(&view(), &QUORSceneView::drawn, [&](double, bool moving) { pictures.append(moving); });
    wheel(1);
    ASSERT_TRUE(waitUntil([&] { return pictures.contains(true); }));
    ASSERT_TRUE(waitUntil([&] { return !pictures.last(); }));
    // A mouse that only passes by costs nothing.
    pictures.clear();
    for (int x = 100; x < 200; x += 10) {
        QTest::mouseMove(&view(), {x, 100});
    }
    QTest::qWait(300);
    EXPECT_TRUE(pictures.isEmpty());
}

TEST_F(QUORViewerWindowTest, LayersAndSurfacesChangeThePicture) {
    open(paths.at(0));
    view().lookFrom(0.0, 30.0);
    find<QDoubleSpinBox>("value0")->setValue(10.0);
    ASSERT_TRUE(settled());
    QImage before = view().getPicture();
    auto* tree = find<QTreeWidget>("layerTree");
    const auto rows = tree->findItems(QStringLiteral("3D product"), Qt::MatchExactly | Qt::MatchRecursive);
    ASSERT_EQ(rows.size(), 1);
    rows.first()->setCheckState(0, Qt::Unchecked);
    ASSERT_TRUE(settled());
    EXPECT_GT(changeSince(before), 1.0);
    rows.first()->setCheckState(0, Qt::Checked);
    ASSERT_TRUE(settled());
    EXPECT_LT(changeSince(before), 0.1);

    find<QDoubleSpinBox>("value0")->setValue(40.0);
    ASSERT_TRUE(settled());
    EXPECT_EQ(window->getSession().getProductSettings()->getSurfaces().firstKey(), 40.0);
    EXPECT_GT(changeSince(before), 1.0);
    before = view().getPicture();
    find<QPushButton>("addSurface")->click();
    ASSERT_TRUE(settled());
    EXPECT_EQ(window->getSession().getProductSettings()->getSurfaces().size(), 2);
    auto* rendering = find<QComboBox>("rendering");
    rendering->setCurrentIndex(1);
    Q_EMIT rendering->activated(1);
    ASSERT_TRUE(settled());
    EXPECT_EQ(window->getSession().getProductSettings()->getRenderingType(), QUORProductSettings::Volume);

    before = view().getPicture();
    auto* height = find<QSlider>("heightFactor");
    height->setValue(2 * height->value());
    ASSERT_TRUE(settled());
    EXPECT_DOUBLE_EQ(window->getSession().getGeneralSettings()->getVerticalScale(), 10.0);
    EXPECT_GT(changeSince(before), 0.5);
    before = view().getPicture();
    view().setNight(true);
    EXPECT_FALSE(view().getPicture().isNull());
}

// Whatever a layer is drawn with; what lies on the ground stays under what stands there.
TEST_F(QUORViewerWindowTest, EveryLayerCanBeTranslucent) {
    open(paths.at(0));
    view().lookFrom(0.0, 60.0);
    find<QDoubleSpinBox>("value0")->setValue(10.0);
    ASSERT_TRUE(settled());
    auto& session = window->getSession();
    const auto picture = [&](int key, int percent) {
        find<QSlider>(QStringLiteral("opacity%1").arg(key).toLatin1().constData())->setValue(percent);
        return view().getPicture();
    };
    const auto middleOf = [](const QImage& image) {
        return image.pixel(image.width() / 2, image.height() / 2);
    };
    const QImage opaque = view().getPicture();
    for (const int key : {QUORDisplayState::PRODUCT_3D_LAYER, QUORDisplayState::PRODUCT_2D_LAYER,
                          QUORDisplayState::LAT_LON_GRID_LAYER, QUORDisplayState::RANGE_RINGS_LAYER}) {
        const QImage half = picture(key, 50);
        const QImage little = picture(key, 10);
        EXPECT_NE(half, opaque) << key;
        EXPECT_NE(little, half) << key;
        EXPECT_EQ(middleOf(half) == middleOf(opaque), key != QUORDisplayState::PRODUCT_3D_LAYER) << key;
        EXPECT_EQ(picture(key, 100), opaque) << key;
    }
    QUORProductSettings settings = *session.getProductSettings();
    settings.setRenderingType(QUORProductSettings::Volume);
    session.setProductSettings(settings);
    ASSERT_TRUE(settled());
    const QImage volume = view().getPicture();
    const QImage thin = picture(QUORDisplayState::PRODUCT_3D_LAYER, 30);
    EXPECT_GT(ImageComparer::compare(volume, thin).colour, 1.0);
    EXPECT_EQ(picture(QUORDisplayState::PRODUCT_3D_LAYER, 100), volume);
}

TEST_F(QUORViewerWindowTest, ReadsValuesAndPlotsThem) {
    open(paths.at(0));
    view().setReading(true);
    auto* panel = find<QUORReadingPanel>("reading");
    // The middle of the grid, half way up, in the storm.
    const QString text = panel->getText();
    EXPECT_TRUE(text.contains(QStringLiteral("59.99")) && text.contains(QStringLiteral("24.98")))
        << text.toStdString();
    const double stored =
        window->getSession().getScene().leaf->getFile()->getDataType().absoluteToDisplayValue(160);
    EXPECT_TRUE(text.contains(QString::number(stored, 'f', 1))) << text.toStdString();
    EXPECT_TRUE(text.contains(QStringLiteral("SRI"))) << text.toStdString();
    view().setReading(false);

    view().setDrawingLine(true);
    QPair<QUORPoint3D, QUORPoint3D> line;
    QObject::connect(&view(), &QUORSceneView::lineDrawn, [&](const QUORPoint3D& from, const QUORPoint3D& to) {
        line = {from, to};
    });
    const QPoint middle = view().rect().center();
    const QUORViewGeometry::View before = view().getView();
    drag(Qt::LeftButton, middle - QPoint(80, 0), {160, 0});
    const double length = line.second.x - line.first.x; // from above, north is up
    EXPECT_GT(length, 1000.0);
    EXPECT_NEAR(0.5 * (line.first.x + line.second.x), before.position.x, 0.05 * length);
    EXPECT_NEAR(line.first.y, before.position.y, 0.05 * length);
    EXPECT_EQ(view().getView().position.x, before.position.x);
}

// The cross-hair and the section without a mouse; the line lies on the ground when the view turns.
TEST_F(QUORViewerWindowTest, ReadsByTheKeys) {
    open(paths.at(0));
    view().setReading(true);
    auto* panel = find<QUORReadingPanel>("reading");
    const auto press = [&](Qt::Key key, Qt::KeyboardModifiers more = {}) {
        QTest::keyClick(&view(), key, Qt::AltModifier | more);
    };
    press(Qt::Key_Right);
    const QString start = panel->getText();
    const struct {
        Qt::Key there;
        Qt::Key back;
    } rows[] = {
        {Qt::Key_Right, Qt::Key_Left}, {Qt::Key_Up, Qt::Key_Down}, {Qt::Key_PageUp, Qt::Key_PageDown}};
    for (const auto& row : rows) {
        press(row.there);
        EXPECT_NE(panel->getText(), start) << row.there;
        press(row.back);
        EXPECT_EQ(panel->getText(), start) << row.there;
    }
    press(Qt::Key_PageUp, Qt::ShiftModifier); // not out of the volume
    EXPECT_TRUE(panel->getText().contains(QStringLiteral("Reflectivity: -31.5 dBZ")))
        << panel->getText().toStdString();

    QPair<QUORPoint3D, QUORPoint3D> line;
    QObject::connect(&view(), &QUORSceneView::lineDrawn, [&](const QUORPoint3D& from, const QUORPoint3D& to) {
        line = {from, to};
    });
    view().beginLine();
    press(Qt::Key_Right, Qt::ShiftModifier);
    view().endLine();
    EXPECT_NEAR(line.second.x - line.first.x, 20000.0, 1.0);
    EXPECT_NEAR(line.second.y, line.first.y, 1.0);

    view().setReading(false);
    const auto yellow = [&] {
        const QImage image = view().grab().toImage();
        QRect box;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor color = image.pixelColor(x, y);
                if (color.red() > 240 && color.green() > 240 && color.blue() < 20) {
                    box |= QRect(x, y, 1, 1);
                }
            }
        }
        return box;
    };
    view().lookFrom(0.0, 90.0);
    const QRect flat = yellow();
    EXPECT_GT(flat.width(), 10 * flat.height());
    view().lookFrom(90.0, 90.0);
    const QRect turned = yellow();
    EXPECT_GT(turned.height(), 10 * turned.width());
}

TEST_F(QUORViewerWindowTest, SavesPicturesAndLoops) {
    open(paths.at(0));
    QStringList saved;
    QObject::connect(&window->getExport(), &QUORViewerExport::saved,
                     [&](const QString& path) { saved.append(path); });
    const QString target = folders.path(QStringLiteral("out/picture"));
    window->getExport().savePicture(target);
    EXPECT_EQ(saved, QStringList{target + QStringLiteral(".png")});
    EXPECT_EQ(QImage(saved.value(0)).size(), view().getPicture().size());

    // Not among products, whatever the folder is called, and not where it cannot be.
    ASSERT_TRUE(QFile::link(folders.path(QStringLiteral("2d")), folders.path(QStringLiteral("link"))));
    const QString product = paths.at(0);
    const QByteArray before = readFile(product);
    for (const char* path :
         {"3d/picture.png", "link/picture.png", "out/picture.xyz", "missing/picture.png"}) {
        window->getExport().savePicture(folders.path(QLatin1String(path)));
        EXPECT_FALSE(window->getMessage().isEmpty()) << path;
        EXPECT_FALSE(QFile::exists(folders.path(QLatin1String(path)))) << path;
        open(paths.at(0));
    }
    window->getExport().savePicture(product);
    window->getExport().saveTimes(product, 3);
    EXPECT_EQ(readFile(product), before);
    EXPECT_FALSE(window->getExport().isRunning());

    if (QStandardPaths::findExecutable(QStringLiteral("ffmpeg")).isEmpty()) {
        GTEST_SKIP() << "no ffmpeg";
    }
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", QFile::encodeName(QFileInfo(QStringLiteral(QUOR3D_BINARY)).absolutePath()) + ':' + path);
    open(paths.at(1));
    const QString loop = folders.path(QStringLiteral("out/loop.gif"));
    window->getExport().saveTimes(loop, 10);
    EXPECT_TRUE(window->getExport().isRunning());
    EXPECT_TRUE(waitUntil([&] { return QFile::exists(loop); }, DEADLINE))
        << window->getMessage().toStdString();
    EXPECT_FALSE(window->getExport().isRunning());
    ASSERT_TRUE(settled());
    EXPECT_EQ(clock(), QStringLiteral("12:05"));
    EXPECT_GE(QImageReader(loop).imageCount(), 3);
    EXPECT_EQ(QDir(folders.path(QStringLiteral("3d"))).entryList(QDir::Files).size(), 3);
    qputenv("PATH", path);
}

TEST_F(QUORViewerWindowTest, StepsThroughTime) {
    open(paths.at(0));
    EXPECT_EQ(clock(), QStringLiteral("12:00"));
    auto* list = find<QListWidget>("timeList");
    EXPECT_EQ(list->count(), 3);
    EXPECT_EQ(list->currentRow(), 0);
    window->getTimes().step(1);
    ASSERT_TRUE(settled());
    EXPECT_EQ(clock(), QStringLiteral("12:05"));
    find<QSlider>("timeSlider")->setValue(2);
    ASSERT_TRUE(settled());
    EXPECT_EQ(clock(), QStringLiteral("12:10"));
    EXPECT_EQ(list->currentRow(), 2);
    const QUORViewGeometry::View before = view().getView();
    auto* play = find<QPushButton>("play");
    play->click();
    EXPECT_TRUE(waitUntil([&] { return clock() == QStringLiteral("12:00"); }, DEADLINE));
    play->click();
    EXPECT_EQ(view().getView().position.z, before.position.z);
    window->getTimes().setFollowing(true);
    folders.drop(storm(15));
    EXPECT_TRUE(waitUntil([&] { return clock() == QStringLiteral("12:15"); }, DEADLINE));
}

TEST_F(QUORViewerWindowTest, SaysWhatCannotBeOpened) {
    writeFile(folders.path(QStringLiteral("text.cap")), QByteArray(2000, 'x'));
    writeFile(folders.path(QStringLiteral("cut.cap")), TestProduct().bytes().first(650));
    const struct {
        const char* path;
        const char* expected;
    } rows[] = {{"missing.cap", "does not exist"},
                {"text.cap", "no product file"},
                {"cut.cap", "not complete"},
                {"2d/SRI240601120000.sri", "2D product"},
                {"geo", "holds no volume"}};
    open(paths.at(0));
    for (const auto& row : rows) {
        window->open(folders.path(QLatin1String(row.path)));
        EXPECT_TRUE(window->getMessage().contains(QLatin1String(row.expected)))
            << row.path << ": " << window->getMessage().toStdString();
        EXPECT_TRUE(window->getSession().getScene().isComplete()) << row.path;
    }
    open(paths.at(1));
    EXPECT_TRUE(window->getMessage().isEmpty());
}

TEST_F(QUORViewerWindowTest, RemembersItsWindowInAFileOfItsOwn) {
    const QByteArray settings = readFile(ScratchHome::settingsDirectory() + QStringLiteral("/QUOR3D.conf"));
    window->resize(1000, 700);
    const QSize size = window->size();
    window->close();
    window.reset();
    EXPECT_EQ(readFile(ScratchHome::settingsDirectory() + QStringLiteral("/QUOR3D.conf")), settings);
    QUORViewerWindow again;
    EXPECT_EQ(again.size(), size);
}

TEST_F(QUORViewerWindowTest, SpeaksOtherLanguages) {
    window.reset();
    QTranslator german;
    if (!german.load(QStringLiteral(QUOR_TRANSLATIONS "/quor3d-view_de.qm"))) {
        GTEST_SKIP() << "built without translations";
    }
    QCoreApplication::installTranslator(&german);
    makeWindow();
    EXPECT_EQ(window->menuBar()->actions().at(0)->text(), QStringLiteral("&Datei"));
    window->open(folders.path(QStringLiteral("missing.cap")));
    EXPECT_TRUE(window->getMessage().endsWith(QStringLiteral(" gibt es nicht.")))
        << window->getMessage().toStdString();
    window.reset();
    QCoreApplication::removeTranslator(&german);
}

// Of the volumes in QUOR_GUIDE_VOLUMES over the tiles in QUOR_GUIDE_TERRAIN, to the folder
// QUOR_GUIDE_PICTURES.
TEST_F(QUORViewerWindowTest, DISABLED_DrawsThePicturesOfTheGuide) {
    const QString folder = QFile::decodeName(qgetenv("QUOR_GUIDE_PICTURES")) + QLatin1Char('/');
    ScratchHome::writePackaged(
        QStringLiteral("QUOR3DColors.conf"),
        QString::fromUtf8(readFile(sourcePath(QStringLiteral("share/QUOR3DColors.conf")))));
    window = std::make_unique<QUORViewerWindow>(
        QUORViewerWindow::Folders{{}, QFile::decodeName(qgetenv("QUOR_GUIDE_TERRAIN"))});
    window->resize(1500, 950);
    window->show();
    open(QFile::decodeName(qgetenv("QUOR_GUIDE_VOLUMES")));
    QUORProductSettings settings = *window->getSession().getProductSettings();
    settings.setSurfaces({{20.0, 30}, {35.0, 60}, {50.0, 100}});
    window->getSession().setProductSettings(settings);
    view().lookFrom(20.0, 35.0);
    wheel(3);
    ASSERT_TRUE(settled());
    QTest::qWait(1000);
    EXPECT_TRUE(window->grab().save(folder + QStringLiteral("viewer.png")));
    view().setReading(true);
    view().setDrawingLine(true);
    const QPoint middle = view().rect().center();
    drag(Qt::LeftButton, middle - QPoint(220, 60), {440, 90});
    QTest::qWait(1000);
    EXPECT_TRUE(window->grab().save(folder + QStringLiteral("viewer-section.png")));
    QTest::mouseMove(&view(), {100, 100});
    view().setDrawingLine(false);
    view().setNight(true);
    wheel(1);
    QTest::qWait(20);
    view().repaint();
    EXPECT_TRUE(window->grab().save(folder + QStringLiteral("viewer-moving.png")));
}

// By the tool, in a process of its own.
TEST_F(QUORViewerWindowTest, ShowsWhatTheServiceWouldDraw) {
    ScratchHome::writeSettings(QStringLiteral("bg.conf"),
                               QString::fromUtf8(folders.backgroundSettings()
                                                     .replace("width=160", "width=480")
                                                     .replace("height=120", "height=360")));
    qputenv("QUOR3D_BG_SETTINGS", QFile::encodeName(ScratchHome::settingsDirectory() + "/bg.conf"));
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", QFile::encodeName(QFileInfo(QStringLiteral(QUOR3D_BINARY)).absolutePath()) + ':' + path);
    open(paths.at(0));
    view().lookFrom(120.0, 40.0);
    window->getSession().setVisible(QUORDisplayState::OUTLINE_LAYER, false);
    ASSERT_TRUE(settled());
    window->savePreset(QStringLiteral("Side"));
    const QImage seen = view().drawPicture({480, 360});
    auto* names = find<QListWidget>("presetNames");
    names->setCurrentRow(0);
    find<QPushButton>("servicePictureButton")->click();
    ASSERT_TRUE(waitUntil(
        [&] {
            return window->findChild<QWidget*>(QStringLiteral("servicePicture")) != nullptr ||
                   !window->getMessage().isEmpty();
        },
        DEADLINE));
    EXPECT_TRUE(window->getMessage().isEmpty()) << window->getMessage().toStdString();
    const auto* label = find<QWidget>("servicePicture")->findChild<QLabel*>();
    const QImage drawn = label->pixmap().toImage();
    EXPECT_EQ(drawn.size(), QSize(480, 360));
    EXPECT_TRUE(ImageComparer::compare(seen, drawn).isSame());
    qputenv("PATH", path);
    qunsetenv("QUOR3D_BG_SETTINGS");
}

// The preset that is saved here is what a running service draws.
TEST_F(QUORViewerWindowTest, TheServiceDrawsTheSavedPreset) {
    open(paths.at(1));
    view().lookFrom(40.0, 35.0);
    drag(Qt::LeftButton, view().rect().center(), {30, 12});
    window->getSession().setVisible(QUORDisplayState::PRODUCT_2D_LAYER, false);
    window->getSession().setVisible(QUORDisplayState::LAT_LON_GRID_LAYER, false);
    ASSERT_TRUE(settled());
    window->savePreset(QStringLiteral("From here"));
    EXPECT_EQ(find<QListWidget>("presetNames")->count(), 1);
    const QImage seen = view().drawPicture({480, 360});
    const QUORViewGeometry::View saved = view().getView();

    ServiceProcess service;
    service.environment().insert(QStringLiteral("QUOR3D_BG_SETTINGS"),
                                 service.path(QStringLiteral("bg.conf")));
    service.write(QStringLiteral(".config/QUOR/QUOR3D.conf"),
                  readFile(ScratchHome::settingsDirectory() + QStringLiteral("/QUOR3D.conf")));
    service.write(QStringLiteral("bg.conf"),
                  folders.backgroundSettings("displaystate=From here\nviewangle=From here\n")
                      .replace("width=160", "width=480")
                      .replace("height=120", "height=360"));
    ASSERT_TRUE(service.startDaemon({QStringLiteral("--loglevel=3")}));
    ASSERT_TRUE(service.waitForLog(QStringLiteral("--- GOING TO SLEEP ---")));
    const QString again = folders.path(QStringLiteral("again"));
    ASSERT_TRUE(QFile::rename(paths.at(1), again));
    QTest::qWait(1200); // its going is seen
    ASSERT_TRUE(QFile::rename(again, paths.at(1)));
    const QString image = folders.image(QStringLiteral("TEST_Z_240601120500.png"));
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(image); }, DEADLINE)) << service.log().toStdString();
    const auto distance = ImageComparer::compare(seen, QImage(image));
    EXPECT_TRUE(distance.isSame()) << distance.structure << ' ' << distance.worstWindow << ' '
                                   << distance.colour;

    // Another view is another picture, and the preset brings the first one back.
    view().lookFrom(200.0, 60.0);
    EXPECT_FALSE(ImageComparer::compare(view().drawPicture({480, 360}), QImage(image)).isSame());
    window->showPreset(QStringLiteral("From here"));
    EXPECT_NEAR(view().getView().position.x, saved.position.x, 0.001);
}

} // namespace
