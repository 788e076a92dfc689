// SPDX-License-Identifier: MIT
#include "QUOROffscreenVisualizer.h"

#include "ImageComparer.h"
#include "LogCapture.h"
#include "QUORVisualization.h"
#include "RenderChecks.h"
#include "ScratchHome.h"
#include "TestFiles.h"
#include "VisualizerFixture.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>

namespace {

/// A dense ball of echoes 20 km wide around the site, reaching from the ground to 6 km.
TestProduct ball() {
    TestProduct product;
    product.points = {41, 41, 13};
    product.radar = {20500, 20500, 0};
    product.fill = [](int x, int y, int z) {
        const double r = std::hypot((x - 20) / 10.0, (y - 20) / 10.0, (z - 6) / 6.0);
        return r < 1.0 ? unsigned(100.0 + 80.0 * (1.0 - r)) : 0U;
    };
    return product;
}

class QUOROffscreenVisualizerTest : public VisualizerFixture {};

/// For a process whose driver gives no context: see QUOREglRenderWindowTest.
class QUORNoOpenGLVisualizerTest : public QUOROffscreenVisualizerTest {
protected:
    void SetUp() override {}
};

const QString NO_2D = QStringLiteral("displaystate=Data\n");

/// A display state "Data" with the 3D product and its outline alone, two view angles, and two surfaces.
void writeScene() {
    QString text = QStringLiteral(R"([PRODUCT%20CAPPI%20Z]
rendering=surface
colormap=Default
surface\size=2
surface\1\isovalue=20
surface\1\opacity=40
surface\2\isovalue=45
surface\2\opacity=100

[VIEWANGLE]
VIEWANGLES\size=3
VIEWANGLES\1\viewAngleName=Custom
VIEWANGLES\2\viewAngleName=North
VIEWANGLES\2\viewAngleCamPosZ=90000
VIEWANGLES\3\viewAngleName=South
VIEWANGLES\3\viewAngleCamPosX=-20000
VIEWANGLES\3\viewAngleCamPosY=-90000
VIEWANGLES\3\viewAngleCamPosZ=60000
VIEWANGLES\3\viewAngleCamDirX=0.2
VIEWANGLES\3\viewAngleCamDirY=0.9
VIEWANGLES\3\viewAngleCamDirZ=-0.45

[DISPLAYSTATE]
DISPLAYSTATES\size=2
DISPLAYSTATES\1\displayStateName=Custom
DISPLAYSTATES\2\displayStateName=Data
)");
    for (const int key : {10, 11, 12}) {
        text += QStringLiteral("DISPLAYSTATES\\2\\displayStateLayerVisible%1=true\n").arg(key);
    }
    ScratchHome::writeSettings(QStringLiteral("QUOR3D.conf"), text);
}

void writeColors() {
    QString text =
        QStringLiteral("[COLORSCALE%201]\nname=Default\ncolorset_index=1\ndata_units=dBZ\npoints\\size=5\n");
    for (int i = 0; i < 5; ++i) {
        text += QStringLiteral("points\\%1\\seam=%2\n").arg(i + 1).arg(i * 15);
    }
    constexpr int COLORS[4][3] = {{60, 120, 220}, {40, 170, 60}, {240, 220, 40}, {230, 50, 30}};
    text += QStringLiteral("[COLORSET%201]\nname=Storm\npoints\\size=4\n");
    for (int i = 0; i < 4; ++i) {
        for (const char* end : {"lower", "upper"}) {
            for (int c = 0; c < 3; ++c) {
                text += QStringLiteral("points\\%1\\%2\\%3=%4\n")
                            .arg(i + 1)
                            .arg(QLatin1String(end))
                            .arg(QLatin1Char("rgb"[c]))
                            .arg(COLORS[i][c]);
            }
        }
    }
    ScratchHome::writeSettings(QStringLiteral("QUOR3DColors.conf"), text);
}

} // namespace

TEST_F(QUOROffscreenVisualizerTest, WritesTheImageInTheChosenFormatAndSize) {
    writeScene();
    const QUORDataFrame::Ptr frame = _store.frame(ball());
    ASSERT_TRUE(frame);
    QUOROffscreenVisualizer visualizer;
    struct Row {
        const char* format;
        const char* magic;
        QSize size;
    };
    for (const Row& row : {Row{"PNG", "\x89PNG", {480, 360}}, Row{"JPEG", "\xff\xd8", {300, 400}},
                           Row{"unknown", "\x89PNG", {64, 64}}}) {
        writeBackground(NO_2D + QStringLiteral("outputformat=%1\n").arg(QLatin1String(row.format)),
                        row.size.width(), row.size.height());
        ASSERT_TRUE(render(visualizer, frame, output("a"))) << row.format;
        EXPECT_TRUE(readFile(output("a")).startsWith(row.magic)) << row.format;
        EXPECT_EQ(QImage(output("a")).size(), row.size) << row.format;
    }
}

TEST_F(QUOROffscreenVisualizerTest, PresetsThatAreMissingGiveTheDefault) {
    writeScene();
    writeBackground(QStringLiteral("displaystate=Gone\nviewangle=Lost\n"));
    const LogCapture log;
    QUOROffscreenVisualizer visualizer;
    visualizer.initVisualization(QUORGeneralSettings(), QUORBackgroundSettings());
    visualizer.initVisualization(QUORGeneralSettings(), QUORBackgroundSettings());
    EXPECT_EQ(log.count(QStringLiteral("D: Use display state preset: (0) ")), 2);
    EXPECT_EQ(log.count(QStringLiteral("W: There is no display state preset \"Gone\"")), 1);
    EXPECT_TRUE(visualizer.getVisualizationDisplayState()->has2DEnabled());
    writeBackground(QStringLiteral("displaystate=Default\n"));
    visualizer.initVisualization(QUORGeneralSettings(), QUORBackgroundSettings());
    EXPECT_EQ(log.count(QStringLiteral("W: ")), 1);
}

TEST_F(QUOROffscreenVisualizerTest, The2DRule) {
    writeScene();
    const QUORDataFrame::Ptr without2d = _store.frame(ball());
    const LogCapture log;
    QUOROffscreenVisualizer visualizer;
    writeBackground({});
    visualizer.initVisualization(QUORGeneralSettings(), QUORBackgroundSettings());
    EXPECT_FALSE(visualizer.canVisualize(without2d, false));
    EXPECT_TRUE(log.contains(QStringLiteral("D: 2d layer is enabled")));
    EXPECT_TRUE(log.contains(QStringLiteral("D: Data frame does not have required 2d data")));
    writeBackground(NO_2D, 480, 361);
    visualizer.initVisualization(QUORGeneralSettings(), QUORBackgroundSettings());
    EXPECT_TRUE(visualizer.canVisualize(without2d, false));
    EXPECT_FALSE(visualizer.canVisualize(without2d, true));
    EXPECT_TRUE(log.contains(QStringLiteral("D: Don't want to visualize without 2D data")));
}

TEST_F(QUOROffscreenVisualizerTest, FailuresAreSaidAndTheNextImageComes) {
    writeScene();
    writeBackground(NO_2D + QStringLiteral("outputformat=PNG\n"));
    const QUORDataFrame::Ptr frame = _store.frame(ball());
    const LogCapture log;
    QUOROffscreenVisualizer visualizer;
    EXPECT_FALSE(render(visualizer, frame, output("missing/a.png")));
    EXPECT_EQ(log.count(QStringLiteral("E: Writing output failed: ") + output("missing/a.png") +
                        QStringLiteral(": No such file or directory")),
              1);
    EXPECT_FALSE(QFileInfo::exists(output("missing")));
    EXPECT_TRUE(render(visualizer, frame, output("a.png")));
    EXPECT_TRUE(QFileInfo::exists(output("a.png")));
    EXPECT_TRUE(log.contains(QStringLiteral("campos=0, 0, 112800"))) << "2.82 times 40 km";
    QFile::remove(frame->getData3d()->getPath());
    EXPECT_FALSE(render(visualizer, frame, output("b.png"))) << "its data are gone";
    EXPECT_FALSE(QFileInfo::exists(output("b.png")));
    TestProduct dry = ball();
    dry.fill = nullptr;
    EXPECT_TRUE(render(visualizer, _store.frame(dry), output("c.png"))) << "no echoes are an image too";
    EXPECT_TRUE(QFileInfo::exists(output("c.png")));
}

TEST_F(QUORNoOpenGLVisualizerTest, DISABLED_EachJobSaysSoAndEnds) {
    writeScene();
    writeBackground(NO_2D);
    const QUORDataFrame::Ptr frame = _store.frame(ball());
    const LogCapture log;
    QUOROffscreenVisualizer visualizer;
    EXPECT_EQ(log.count(QStringLiteral("E: No image can be rendered, OpenGL is not usable: ")), 1);
    for (int job = 1; job <= 2; ++job) {
        EXPECT_FALSE(render(visualizer, frame, output("a.tiff")));
        EXPECT_EQ(log.count(QStringLiteral("E: Not rendered: ") + output("a.tiff")), job);
    }
    EXPECT_FALSE(QFileInfo::exists(output("a.tiff")));
}

TEST_F(QUOROffscreenVisualizerTest, ThePictureIsTheExpectedOne) {
    writeScene();
    writeColors();
    writeBackground(NO_2D + QStringLiteral("outputformat=PNG\nviewangle=South\n"));
    QUOROffscreenVisualizer visualizer;
    ASSERT_TRUE(render(visualizer, _store.frame(ball()), output("a.png")));
    const QImage image(output("a.png"));
    EXPECT_TRUE(ImageComparer::matchesBaseline(image, QStringLiteral("offscreen-ball")));
    EXPECT_TRUE(isColor(image.pixelColor(9, 35), 230, 50, 30)) << "the bar's highest colour";
    EXPECT_TRUE(isColor(image.pixelColor(9, 120), 60, 120, 220)) << "its lowest";
    EXPECT_TRUE(isColor(image.pixelColor(240, 10), 38, 64, 77)) << "the background";
}

TEST_F(QUOROffscreenVisualizerTest, MemoryStaysFlat) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers keep what is freed";
#endif
    writeScene();
    writeBackground(NO_2D + QStringLiteral("outputformat=JPEG\n"), 320, 240);
    const QUORDataFrame::Ptr frame = _store.frame(ball());
    QUOROffscreenVisualizer visualizer;
    const auto residentPages = [] {
        return readFile(QStringLiteral("/proc/self/statm")).split(' ').at(1).toLongLong();
    };
    for (int image = 0; image < 20; ++image) {
        ASSERT_TRUE(render(visualizer, frame, output("a.jpg")));
    }
    const auto before = residentPages();
    for (int image = 0; image < 60; ++image) {
        ASSERT_TRUE(render(visualizer, frame, output("a.jpg")));
    }
    EXPECT_LT(residentPages() - before, 1500) << "pages of 4 KiB for 60 images";
}
