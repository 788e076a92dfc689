// SPDX-License-Identifier: MIT
#include "QUORLiveDataThread.h"

#include "LogCapture.h"
#include "QUORConfig.h"
#include "ScratchHome.h"
#include "ServiceFolders.h"

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
        writeSettings(_folders.mainSettings(), _folders.backgroundSettings());
    }
    ~QUORLiveDataThreadTest() override { qunsetenv("QUOR3D_BG_SETTINGS"); }

    void writeSettings(const QByteArray& main, const QByteArray& background) {
        ScratchHome::writeSettings(QStringLiteral("QUOR3D.conf"), QString::fromUtf8(main));
        QFile file(_bgFile);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(background);
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

TEST_F(QUORLiveDataThreadTest, ChangedDirectoriesAreFollowed) {
    const QString reopened = QStringLiteral("D: Initializing 3d data directory..");
    QUORLiveDataThread thread;
    EXPECT_EQ(_log.count(reopened), 1);
    thread.updateDataDirectory();
    writeSettings(_folders.mainSettings("geolayer=/elsewhere\n"), _folders.backgroundSettings());
    thread.updateDataDirectory();
    EXPECT_EQ(_log.count(reopened), 1);
    EXPECT_FALSE(_log.contains(QStringLiteral("/elsewhere")));
    writeSettings(_folders.mainSettings("data3d=" + _dir.path().toUtf8() + "/other3d\n"),
                  _folders.backgroundSettings());
    thread.updateDataDirectory();
    EXPECT_EQ(_log.count(reopened), 2);
    EXPECT_TRUE(
        _log.contains(QStringLiteral("D: new 3d data path=") + _folders.path(QStringLiteral("other3d"))));
}

TEST_F(QUORLiveDataThreadTest, SettingsWithoutDirectoriesKeepTheDirectories) {
    const QString reopened = QStringLiteral("data directory..");
    const QString kept = QStringLiteral(" any more, this one is kept: ");
    QUORLiveDataThread thread;
    const int opened = _log.count(reopened);
    for (const QByteArray& text : {QByteArray(), QByteArray("[Gen"), QByteArray("[General]\ndata3d=\n")}) {
        writeSettings(text, _folders.backgroundSettings());
        thread.updateDataDirectory();
    }
    EXPECT_EQ(_log.count(reopened), opened);
    EXPECT_EQ(_log.lines().filter(kept),
              (QStringList{QStringLiteral("E: The settings name no 3D product directory") + kept +
                               _folders.path(QStringLiteral("3d")),
                           QStringLiteral("E: The settings name no 2D product directory") + kept +
                               _folders.path(QStringLiteral("2d"))}));
    writeSettings(_folders.mainSettings(), _folders.backgroundSettings());
    thread.updateDataDirectory();
    EXPECT_EQ(_log.count(reopened), opened);
    writeSettings("[General]\ndata3d=" + _dir.path().toUtf8() + "/other3d\n", _folders.backgroundSettings());
    thread.updateDataDirectory();
    EXPECT_EQ(_log.count(QStringLiteral("D: Initializing 3d data directory..")), 2);
    EXPECT_EQ(_log.count(reopened), opened + 1);
    EXPECT_EQ(_log.count(QStringLiteral("name no 2D product directory")), 2);
}

TEST_F(QUORLiveDataThreadTest, AStartWithoutDirectoriesIsOneErrorUntilTheyAreThere) {
    const QString missing = QStringLiteral("E: No 3D product directory is configured: ");
    writeSettings({}, _folders.backgroundSettings());
    QUORLiveDataThread thread;
    thread.updateDataDirectory();
    EXPECT_EQ(_log.count(missing), 1);
    writeSettings(_folders.mainSettings(), _folders.backgroundSettings());
    thread.updateDataDirectory();
    EXPECT_TRUE(_log.contains(QStringLiteral("D: new 3d data path=") + _folders.path(QStringLiteral("3d"))));
    EXPECT_EQ(_log.count(missing), 1);
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
