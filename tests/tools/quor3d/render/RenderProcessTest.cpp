// SPDX-License-Identifier: MIT
#include "ServiceFolders.h"
#include "ServiceProcess.h"
#include "TestFiles.h"
#include "WaitUntil.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <csignal>

namespace {

constexpr const char* PRESETS = R"(
[VIEWANGLE]
VIEWANGLES\size=2
VIEWANGLES\1\viewAngleName=Custom
VIEWANGLES\2\viewAngleName=South
VIEWANGLES\2\viewAngleCamPosY=-40000
VIEWANGLES\2\viewAngleCamPosZ=30000
VIEWANGLES\2\viewAngleCamDirY=0.8
VIEWANGLES\2\viewAngleCamDirZ=-0.6
[DISPLAYSTATE]
DISPLAYSTATES\size=2
DISPLAYSTATES\1\displayStateName=Custom
DISPLAYSTATES\2\displayStateName=Data
DISPLAYSTATES\2\displayStateLayerVisible10=true
DISPLAYSTATES\2\displayStateLayerVisible12=true
[PRODUCT%20CAPPI%20Z]
rendering=surface
colormap=Default
surface\size=1
surface\1\isovalue=10
surface\1\opacity=100
)";

/// One home for the service and for `quor3d render`, with a storm and its rain.
class RenderProcess : public ::testing::Test {
protected:
    void SetUp() override {
        home.write(".config/QUOR/QUOR3D.conf", folders.mainSettings(PRESETS));
        home.write("bg.conf", folders.backgroundSettings("viewangle=South\n"));
        home.environment().insert("QUOR3D_BG_SETTINGS", home.path("bg.conf"));
        home.environment().insert("TMPDIR", home.path("tmp/x").chopped(2));
        rain = folders.drop(ServiceFolders::rain(), "2d");
        storm = folders.drop(ServiceFolders::storm());
    }

    struct Ran {
        int status;
        QByteArray out;
        QString error;
    };
    Ran render(const QStringList& arguments) {
        QProcess process;
        process.setProcessEnvironment(home.environment());
        process.setWorkingDirectory(home.path("x").chopped(2));
        process.start(QUOR3D_BINARY, QStringList{"render"} + arguments);
        process.waitForFinished(120000);
        const bool ended =
            process.state() == QProcess::NotRunning && process.exitStatus() == QProcess::NormalExit;
        return {ended ? process.exitCode() : -1, process.readAllStandardOutput(),
                QString::fromUtf8(process.readAllStandardError())};
    }

    static bool cannotDraw(const Ran& ran) { return ran.error.contains("OpenGL is not usable"); }
    QStringList drawn(const QString& folder) const {
        return QDir(home.path(folder + "/x").chopped(2)).entryList(QDir::Files | QDir::Hidden);
    }

    ServiceProcess home;
    ServiceFolders folders{home.path("x").chopped(2)};
    QString rain;
    QString storm;
};

} // namespace

TEST_F(RenderProcess, DrawsThePictureOfTheServiceAndLeavesTheSettingsAlone) {
    // The service draws what arrives: the same files in another place.
    const QByteArray settings = home.read(".config/QUOR/QUOR3D.conf");
    const Ran ran = render({storm, "-o", "hand.png"});
    if (cannotDraw(ran)) {
        GTEST_SKIP() << qPrintable(ran.error);
    }
    ASSERT_EQ(ran.status, 0) << qPrintable(ran.error);
    EXPECT_EQ(home.read(".config/QUOR/QUOR3D.conf"), settings);
    EXPECT_EQ(home.read("hand.png").size() > 1000, true);

    QFile::remove(storm);
    ASSERT_TRUE(home.startDaemon({"--loglevel=3"}));
    ASSERT_TRUE(home.waitForLog("GOING TO SLEEP"));
    folders.drop(ServiceFolders::storm());
    ASSERT_TRUE(home.waitForLog("File visualized in "));
    const QFileInfo image = QDir(folders.path("out")).entryInfoList(QDir::Files).value(0);
    EXPECT_EQ(readFile(image.filePath()), home.read("hand.png"));

    // Under the service's name, and by way of standard output.
    EXPECT_EQ(render({storm, "-o", "again/"}).status, 0);
    EXPECT_EQ(readFile(home.path("again/" + image.fileName())), home.read("hand.png"));
    EXPECT_EQ(render({storm, "-o", "-"}).out, home.read("hand.png"));
    EXPECT_EQ(drawn("tmp"), QStringList{});
}

TEST_F(RenderProcess, TheServiceDrawsFurtherViewsAsEachAlone) {
    if (const Ran ran = render({storm, "-o", "hand/"}); cannotDraw(ran)) {
        GTEST_SKIP() << qPrintable(ran.error);
    }
    const QString name = drawn("hand").value(0).chopped(4);
    QFile::remove(storm);
    home.write("bg.conf", folders.backgroundSettings("viewangle=South\nviews\\size=5\n"
                                                     "views\\1\\viewangle=Default\n"
                                                     "views\\2\\displaystate=Data\n"
                                                     "views\\3\\width=90\nviews\\3\\height=70\n"
                                                     "views\\4\\viewangle=South\n"
                                                     "views\\5\\viewangle=Default\n"
                                                     "views\\5\\displaystate=Data\n"));
    const struct {
        QString suffix;
        QStringList options;
    } rows[] = {{"", {"--view", "South", "--state", "Default"}},
                {"_Default", {"--view", "Default", "--state", "Default"}},
                {"_Data", {"--view", "South", "--state", "Data"}},
                {"_90x70", {"--view", "South", "--state", "Default", "--size", "90x70"}},
                {"_Default_Data", {"--view", "Default", "--state", "Data"}}};
    ASSERT_TRUE(home.startDaemon({"--loglevel=3"}));
    ASSERT_TRUE(home.waitForLog("GOING TO SLEEP"));
    folders.drop(ServiceFolders::storm());
    ASSERT_TRUE(home.waitForLog("File visualized in "));
    EXPECT_EQ(QDir(folders.path("out")).entryList(QDir::Files).size(), std::ssize(rows));
    for (const auto& row : rows) {
        ASSERT_EQ(render(QStringList{storm, "-o", "one.png"} + row.options).status, 0);
        EXPECT_EQ(readFile(folders.path("out/" + name + row.suffix + ".png")), home.read("one.png"))
            << qPrintable(row.suffix);
    }
}

TEST_F(RenderProcess, DrawsEveryCombinationFromOneSceneAsEachAlone) {
    const QStringList both{"--view", "South", "--view", "Default", "--state", "Data", "--state", "Default"};
    const Ran ran = render(QStringList{storm, "-o", "all", "--report", "report"} + both);
    if (cannotDraw(ran)) {
        GTEST_SKIP() << qPrintable(ran.error);
    }
    ASSERT_EQ(ran.status, 0) << qPrintable(ran.error);
    const QStringList names = drawn("all");
    ASSERT_EQ(names.size(), 4);
    for (const QString view : {"South", "Default"}) {
        for (const QString state : {"Data", "Default"}) {
            ASSERT_EQ(render({storm, "-o", "one.png", "--view", view, "--state", state}).status, 0);
            const QString name = names.filter("_" + view + "_" + state).value(0);
            EXPECT_EQ(home.read("one.png"), home.read("all/" + name)) << qPrintable(name);
        }
    }
    const QList<QByteArray> lines = home.read("report").trimmed().split('\n');
    ASSERT_EQ(lines.size(), 4);
    const QJsonObject line = QJsonDocument::fromJson(lines[0]).object();
    EXPECT_EQ(line["input"].toString(), storm);
    EXPECT_TRUE(line["output"].toString().endsWith(".png"));
    EXPECT_GT(line["seconds"].toDouble(), 0.0);
    EXPECT_TRUE(line["error"].isNull());
    // Angles, size, settings and the 2D product change the picture.
    QSet<QByteArray> pictures{home.read("one.png")};
    for (const QStringList& more :
         {QStringList{"--heading", "90"}, QStringList{"--heading", "90", "--pitch", "70", "--distance", "60"},
          QStringList{"--with", "none"}, QStringList{"--set", "verticalscale=1"},
          QStringList{"--size", "200x100"}, QStringList{"--set", "PRODUCT CAPPI Z/surface/1/opacity=30"}}) {
        ASSERT_EQ(render(QStringList{storm, "-o", "one.png"} + more).status, 0) << qPrintable(more.join(' '));
        EXPECT_FALSE(pictures.contains(home.read("one.png"))) << qPrintable(more.join(' '));
        pictures.insert(home.read("one.png"));
    }
    EXPECT_EQ(render({storm, "-o", "one.png", "--with", rain}).status, 0);
}

TEST_F(RenderProcess, RefusesWhatCannotBeMeantBeforeAnythingIsDrawn) {
    home.write("copy/" + QFileInfo(storm).fileName(), readFile(storm));
    const QString copy = home.path("copy/" + QFileInfo(storm).fileName());
    const QList<QPair<QStringList, const char*>> rows{
        {{"-o", "out"}, "FILE"},
        {{storm}, "--output"},
        {{storm, copy, "-o", "o"}, "two pictures"},
        {{storm, copy, "-o", "o.png"}, "several pictures"},
        {{storm, "-o", "o", "--view", "North"}, "\"South\""},
        {{storm, "-o", "o", "--state", "Night"}, "\"Data\""},
        {{storm, "-o", "o", "--view", "South", "--heading", "3"}, "--view"},
        {{storm, "-o", "o", "--size", "0x100"}, "--size"},
        {{storm, "-o", "o", "--with", "nothing"}, "nothing"},
        {{storm, "-o", "o", "--set", "vertikalscale=3"}, "vertikalscale"},
        {{storm, "-o", "o", "--set", "verticalscale=high"}, "high"},
        {{storm, "-o", "o", "--name", "../{site}"}, "below"},
        {{storm, "-o", "o", "--name", "{sight}"}, "{sight}"},
        {{storm, "-o", "o", "--fit", "--distance", "9"}, "--distance"},
    };
    for (const auto& [arguments, text] : rows) {
        const Ran ran = render(arguments);
        EXPECT_EQ(ran.status, 2) << text;
        EXPECT_TRUE(ran.error.contains(text)) << text << " in " << qPrintable(ran.error);
    }
    EXPECT_EQ(drawn("o"), QStringList{});
}

TEST_F(RenderProcess, BadFilesCostTheirPictureAndAnotherRunGoesOn) {
    QStringList inputs{storm};
    for (int minutes : {5, 10, 15}) {
        inputs << folders.drop(ServiceFolders::storm(minutes));
    }
    home.write("noise.cap", "no product");
    home.write("cut.cap", readFile(storm).left(900));
    inputs << home.path("noise.cap") << home.path("cut.cap") << rain;
    const QStringList options{"-o", "o", "--name", "{site}/{time}", "--jobs", "2", "--report", "report"};
    Ran ran = render(inputs + options);
    if (cannotDraw(ran)) {
        GTEST_SKIP() << qPrintable(ran.error);
    }
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.out.count('\n'), 4);
    for (const char* name : {"noise.cap", "cut.cap", "SRI"}) {
        EXPECT_TRUE(ran.error.contains(name)) << name;
    }
    EXPECT_EQ(home.read("report").count("\"error\":null"), 4);
    EXPECT_EQ(home.read("report").count('\n'), 7);
    const QString site =
        QDir(home.path("o/x").chopped(2)).entryList(QDir::Dirs | QDir::NoDotAndDotDot).value(0);
    ASSERT_EQ(drawn("o/" + site).size(), 4);
    // Only what is missing or older is drawn again.
    QFile::remove(home.path("o/" + site + "/" + drawn("o/" + site)[0]));
    ran = render(inputs.first(4) + options + QStringList{"--resume"});
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.out.count('\n'), 1);
    EXPECT_EQ(home.read("report").count('\n'), 8);
    ran = render(inputs.first(4) + options + QStringList{"--resume"});
    EXPECT_EQ(ran.out.count('\n') + ran.status, 0);
}

TEST_F(RenderProcess, GoesOnWhenAProcessThatDrawsIsKilled) {
    QStringList inputs{storm};
    for (int minutes = 5; minutes < 100; minutes += 5) {
        inputs << folders.drop(ServiceFolders::storm(minutes));
    }
    QProcess process;
    process.setProcessEnvironment(home.environment());
    process.setWorkingDirectory(home.path("x").chopped(2));
    process.start(QUOR3D_BINARY, QStringList{"render"} + inputs + QStringList{"-o", "o"});
    ASSERT_TRUE(process.waitForStarted());
    const bool began = waitUntil([&] { return drawn("o").filter(".png").size() > 1; }, 60000);
    if (!began && QString::fromUtf8(process.readAllStandardError()).contains("OpenGL")) {
        GTEST_SKIP() << "cannot draw here";
    }
    const QByteArray children =
        readFile(QStringLiteral("/proc/%1/task/%1/children").arg(process.processId()));
    ASSERT_GT(children.simplified().toInt(), 0);
    ::kill(children.simplified().toInt(), SIGKILL);
    process.waitForFinished(120000);
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
    EXPECT_EQ(drawn("o").filter(QRegularExpression("^[^.].*png$")).size(), inputs.size());
    EXPECT_EQ(process.readAllStandardOutput().count('\n'), inputs.size());
}
