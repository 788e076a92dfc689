// SPDX-License-Identifier: MIT
#include "QUORLiveDataThread.h"

#include "LogCapture.h"
#include "QUORConfig.h"
#include "ScratchHome.h"
#include "ServiceFolders.h"
#include "TestFiles.h"
#include "WaitUntil.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

const QString SLEEP = QStringLiteral("QUORLiveDataThread: --- GOING TO SLEEP ---");
const QString GONE = QStringLiteral("W: Data not available anymore: ");

QString name(const char* prefix, int i) {
    return QStringLiteral("/gone/") + QLatin1String(prefix) + QString::number(i);
}

} // namespace

class QUORLiveDataThreadTest : public testing::Test {
protected:
    QUORLiveDataThreadTest() : _folders(_dir.path()) {
        _bgFile = _dir.filePath(QStringLiteral("bg.conf"));
        qputenv("QUOR3D_BG_SETTINGS", _bgFile.toUtf8());
        QUORConfig::destroy();
        writeSettings(_folders.mainSettings(), _folders.backgroundSettings());
    }
    ~QUORLiveDataThreadTest() override { qunsetenv("QUOR3D_BG_SETTINGS"); }

    void writeSettings(const QByteArray& main, const QByteArray& background) {
        ScratchHome::writeSettings(QStringLiteral("QUOR3D.conf"), QString::fromUtf8(main));
        writeFile(_bgFile, background);
    }

    QTemporaryDir _dir;
    ServiceFolders _folders;
    QString _bgFile;
    LogCapture _log;
};

TEST_F(QUORLiveDataThreadTest, ABurstIsWorkedOffInOrderWithoutSleeping) {
    QUORLiveDataThread thread;
    ASSERT_TRUE(_log.waitFor(SLEEP));
    _log.clear();
    thread.dataStoreNewDataAvailable3d(nullptr, {name("a", 1), name("a", 2), name("a", 3)}, {});
    ASSERT_TRUE(_log.waitFor(SLEEP));
    EXPECT_EQ(_log.lines().filter(QStringLiteral("W: ")),
              (QStringList{GONE + name("a", 1), GONE + name("a", 2), GONE + name("a", 3)}));
    EXPECT_EQ(_log.count(QStringLiteral("N: File visualization ignored.")), 3);
    EXPECT_EQ(_log.count(SLEEP), 1);
}

TEST_F(QUORLiveDataThreadTest, OnePassTakesA3DFileAndThenA2DFile) {
    QUORLiveDataThread thread;
    ASSERT_TRUE(_log.waitFor(SLEEP));
    {
        // The pass loads the settings before it looks at the queues.
        const QUORConfig::Access held;
        thread.dataStoreNewDataAvailable2d(nullptr, {name("x", 1), name("x", 2)}, {});
        thread.dataStoreNewDataAvailable3d(nullptr, {name("a", 1), name("a", 2)}, {name("a", 3)});
    }
    ASSERT_TRUE(_log.waitFor(GONE + name("x", 2)));
    const QString arrived3d = QStringLiteral("N: QUORLiveDataThread: new 3D file arrived ");
    const QString arrived2d = QStringLiteral("N: QUORLiveDataThread: new 2D file arrived ");
    EXPECT_EQ(_log.lines().filter(QStringLiteral(" file arrived ")),
              (QStringList{arrived3d + name("a", 1), arrived2d + name("x", 1), arrived3d + name("a", 2),
                           arrived2d + name("x", 2)}));
}

TEST_F(QUORLiveDataThreadTest, NoArrivalIsMissed) {
    QUORLiveDataThread thread;
    constexpr int files = 2000;
    for (int i = 0; i < files; ++i) {
        thread.dataStoreNewDataAvailable3d(nullptr, {name("a", i)}, {});
    }
    EXPECT_TRUE(_log.waitFor(GONE + name("a", files - 1), 60000));
    EXPECT_EQ(_log.count(GONE), files);
}

TEST_F(QUORLiveDataThreadTest, StopIsPromptAndLeavesTheQueue) {
    QElapsedTimer timer;
    {
        QUORLiveDataThread thread;
        ASSERT_TRUE(_log.waitFor(SLEEP));
        timer.start();
    }
    EXPECT_LT(timer.elapsed(), 2000);
    const QStringList lines = _log.lines();
    qsizetype position = 0;
    for (const char* line : {"run() finished.", "stop() finished.", "~QUORLiveDataThread() finished.",
                             "~QUORDataStore() called."}) {
        position = lines.indexOf(
            QRegularExpression(QStringLiteral(".*::") + QRegularExpression::escape(QLatin1String(line))),
            position);
        EXPECT_GE(position, 0) << line;
    }
    {
        QUORLiveDataThread thread;
        QStringList many;
        for (int i = 0; i < 100000; ++i) {
            many.append(name("a", i));
        }
        thread.dataStoreNewDataAvailable3d(nullptr, many, {});
        timer.start();
    }
    EXPECT_LT(timer.elapsed(), 2000);
    EXPECT_LT(_log.count(GONE), 100000);
}

TEST_F(QUORLiveDataThreadTest, AStopDuringAJobReturnsAfterItsImage) {
    _folders.drop(ServiceFolders::storm());
    writeSettings(_folders.mainSettings(),
                  _folders.backgroundSettings("products\\size=4\nproducts\\4\\product=(none)\n"));
    {
        QUORLiveDataThread thread;
        const QString file = _folders.path(QStringLiteral("3d/")) + ServiceFolders::storm().fileName();
        thread.dataStoreNewDataAvailable3d(nullptr, {file, file}, {});
        // No events are delivered before the stop, so that the image still needs the main thread.
        while (!_log.contains(QStringLiteral("D: QUOROffscreenVisualizer::startVisualization() finished."))) {
            QThread::msleep(1);
        }
    }
    EXPECT_EQ(_log.count(QStringLiteral("N: File visualized in ")), 1);
    EXPECT_TRUE(QFile::exists(_folders.image(QStringLiteral("TEST_Z_240601120000.png"))));
}

TEST_F(QUORLiveDataThreadTest, AStopDuringA2DArrivalLeavesItsOtherImages) {
    TestProduct width = ServiceFolders::storm();
    width.type = 4;
    for (const TestProduct& volume : {width, ServiceFolders::storm()}) {
        _folders.drop(volume);
    }
    const QString rain = _folders.drop(ServiceFolders::rain(), QStringLiteral("2d"));
    {
        QUORLiveDataThread thread;
        thread.dataStoreNewDataAvailable2d(nullptr, {rain}, {});
        while (!_log.contains(QStringLiteral("D: QUOROffscreenVisualizer::startVisualization() finished."))) {
            QThread::msleep(1);
        }
    }
    EXPECT_EQ(_log.count(QStringLiteral(" file matching 2d product ")), 2);
    EXPECT_EQ(_log.count(QStringLiteral("N: File visualized in ")), 1);
}

TEST_F(QUORLiveDataThreadTest, WhatIsLiveGoesBeforeAnArchiveAndBetweenTheImagesOfA2DArrival) {
    writeSettings(_folders.mainSettings(), _folders.backgroundSettings("products\\size=4\n"
                                                                       "products\\2\\product=(none)\n"));
    TestProduct width = ServiceFolders::storm();
    width.type = 4;
    TestProduct live = ServiceFolders::storm(60);
    live.type = 3;
    QStringList archive;
    for (const int minutes : {-20, -15, -10}) {
        TestProduct old = ServiceFolders::storm(minutes);
        old.type = 3;
        archive.append(_folders.drop(old));
    }
    _folders.drop(width);
    _folders.drop(ServiceFolders::storm());
    const QString now = _folders.drop(live);
    const QString rain = _folders.drop(ServiceFolders::rain(), QStringLiteral("2d"));
    QUORLiveDataThread thread;
    ASSERT_TRUE(_log.waitFor(SLEEP));
    thread.dataStoreNewDataAvailable2d(nullptr, {rain}, {});
    // No event is delivered, so that the first of its two images is not finished before the others come.
    while (!_log.contains(QStringLiteral("D: QUOROffscreenVisualizer::startVisualization() finished."))) {
        QThread::msleep(1);
    }
    thread.dataStoreNewDataAvailable3d(nullptr, archive + QStringList{now}, {});
    ASSERT_TRUE(waitUntil([&] { return _log.count(QStringLiteral("N: File visualized in ")) == 6; }, 30000));
    const QStringList order = _log.lines().filter(QRegularExpression(QStringLiteral("^D: /.*\\.cap$")));
    const auto line = [](const QString& path) { return QStringLiteral("D: ") + path; };
    EXPECT_EQ(order.filter(QStringLiteral("/3d/")),
              (QStringList{line(_folders.path(QStringLiteral("3d/")) + width.fileName()), line(now),
                           line(_folders.path(QStringLiteral("3d/")) + ServiceFolders::storm().fileName()),
                           line(archive[0]), line(archive[1]), line(archive[2])}));
}

TEST_F(QUORLiveDataThreadTest, ChangedDirectoriesAreFollowedButNeverToNowhere) {
    const QByteArray first = _folders.mainSettings();
    const QByteArray other =
        "[GENERAL]\ndata3d=" + _dir.path().toUtf8() + "/out\ngeolayer=" + _dir.path().toUtf8() + "/2d\n";
    const struct {
        const char* name;
        QByteArray settings;
        int opened, kept; ///< directories
        int errors;
    } rows[] = {{"nothing is configured", {}, 0, 0, 0},
                {"the first directories", first, 3, 0, 0},
                {"no change", first, 0, 0, 0},
                {"other terrain alone", first + "geolayer=/elsewhere\n", 0, 0, 0},
                {"an empty file", {}, 0, 0, 1},
                {"an empty name", "[General]\ndata3d=\n", 0, 2, 2},
                {"a file being written", "[Gen", 0, 0, 1},
                {"as before", first, 0, 0, 0},
                {"another 3D directory, no 2D directory", other, 2, 1, 1}};
    writeSettings({}, _folders.backgroundSettings());
    QUORLiveDataThread thread;
    EXPECT_EQ(_log.count(QStringLiteral("E: No 3D product directory is configured: ")), 1);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        _log.clear();
        writeSettings(row.settings, _folders.backgroundSettings());
        thread.updateDataDirectory();
        EXPECT_EQ(_log.count(QStringLiteral(" data directory..")), row.opened);
        EXPECT_EQ(_log.count(QStringLiteral(" directory any more, this one is kept: ") + _dir.path()),
                  row.kept);
        EXPECT_EQ(_log.count(QStringLiteral("E: ")), row.errors);
    }
    EXPECT_TRUE(_log.contains(QStringLiteral("D: new 3d data path=") + _folders.path(QStringLiteral("out"))));
    EXPECT_FALSE(_log.contains(QStringLiteral("new 2d data path=")));
}

TEST_F(QUORLiveDataThreadTest, RenderingThatIsSwitchedOffIsOneWarning) {
    writeSettings(_folders.mainSettings(), _folders.backgroundSettings("activated=false\n"));
    QUORLiveDataThread thread;
    ASSERT_TRUE(_log.waitFor(SLEEP));
    thread.dataStoreNewDataAvailable3d(nullptr, {name("a", 1), name("a", 2)}, {});
    ASSERT_TRUE(_log.waitFor(GONE + name("a", 2)));
    EXPECT_EQ(
        _log.count(QStringLiteral("W: QUORLiveDataThread: background rendering is off - nothing generated")),
        1);
}
