// SPDX-License-Identifier: MIT
#include "QUORDataStore.h"

#include "LogCapture.h"
#include "QUORDataStoreObserver.h"
#include "QUORTerrainDir.h"
#include "TestProduct.h"
#include "WaitUntil.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

class Observer : public QUORDataStoreObserver {
public:
    struct Batch {
        QStringList added;
        QStringList removed;
    };
    void dataStoreNewDataAvailable3d(QUORDataStore*, const QStringList& added,
                                     const QStringList& removed) override {
        volumes.append({added, removed});
    }
    void dataStoreNewDataAvailable2d(QUORDataStore*, const QStringList& added,
                                     const QStringList& removed) override {
        flat.append({added, removed});
    }

    QVector<Batch> volumes;
    QVector<Batch> flat;
};

class QUORDataStoreTest : public testing::Test {
protected:
    QUORDataStoreTest() {
        for (const QString& path : {folder("3d"), folder("2d"), folder("geo"), folder("other")}) {
            QDir().mkpath(path);
        }
    }
    QString folder(const char* name) const { return _dir.filePath(QLatin1String(name)); }
    void setDirectories(QUORDataStore& store, const char* path3d = "3d", const char* path2d = "2d") const {
        store.setDirectories(folder(path3d), folder(path2d), folder("geo"), folder("cache"));
    }
    QString write(const char* site, int minute, const char* prefix = "CAZ") const {
        TestProduct product;
        product.site = site;
        product.prefix = QLatin1String(prefix);
        product.time.setTime({12, minute});
        return product.write(folder("3d"));
    }

    QTemporaryDir _dir;
    Observer _observer;
};

} // namespace

TEST_F(QUORDataStoreTest, ReportsBatchesToTheObserver) {
    const LogCapture log;
    const QString old = write("A", 0);
    QUORDataStore store(&_observer);
    EXPECT_FALSE(store.get3DTop() || store.get2DTop() || store.getTerrainDir());
    EXPECT_TRUE(store.getLandmarkList());
    setDirectories(store);
    EXPECT_EQ(store.getPath3d(), folder("3d"));
    EXPECT_EQ(store.getPath2d(), folder("2d"));
    EXPECT_EQ(store.getTerrainDir()->getSourcePath(), folder("geo"));
    EXPECT_TRUE(store.get3DTop()->findLeaf(QFileInfo(old).fileName()));

    QFile::remove(old);
    ASSERT_TRUE(waitUntil([&] { return !_observer.volumes.isEmpty(); }));
    EXPECT_TRUE(_observer.volumes[0].added.isEmpty());
    EXPECT_EQ(_observer.volumes[0].removed, QStringList{old});

    const QString sri = TestProduct::sri().write(folder("2d"));
    ASSERT_TRUE(waitUntil([&] { return !_observer.flat.isEmpty(); }));
    EXPECT_EQ(_observer.flat[0].added, QStringList{sri});
    EXPECT_EQ(_observer.volumes.size(), 1);
    EXPECT_TRUE(store.get2DTop()->findLeaf(QFileInfo(sri).fileName()));
    EXPECT_TRUE(log.contains(QStringLiteral("D: new 3d data path=") + folder("3d")));
    EXPECT_TRUE(log.contains(QStringLiteral("D: new 2d data path=") + folder("2d")));
    EXPECT_TRUE(log.contains(QStringLiteral("D:  - removed filename=") + old));
    EXPECT_TRUE(log.contains(QStringLiteral("D:  - added filename=") + sri));
}

TEST_F(QUORDataStoreTest, ReplacesOnlyWhatChanged) {
    QUORDataStore store(nullptr);
    setDirectories(store);
    const auto top3d = store.get3DTop();
    const auto top2d = store.get2DTop();
    const auto terrain = store.getTerrainDir();
    setDirectories(store);
    EXPECT_TRUE(top3d == store.get3DTop() && top2d == store.get2DTop() && terrain == store.getTerrainDir());
    setDirectories(store, "3d", "other");
    EXPECT_TRUE(top3d == store.get3DTop() && top2d != store.get2DTop() && terrain == store.getTerrainDir());
    EXPECT_EQ(store.getPath2d(), folder("other"));
    store.setDirectories(folder("3d"), folder("other"), folder("geo"), folder("cache2"));
    EXPECT_TRUE(top3d == store.get3DTop() && terrain != store.getTerrainDir());
}

TEST_F(QUORDataStoreTest, DropsWhatTheOldDirectoryQueued) {
    const LogCapture log;
    QFile file(folder("3d") + QStringLiteral("/CAZ240601120000.cap"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    const QByteArray bytes = TestProduct().bytes();
    file.write(bytes.left(100));
    QUORDataStore store(&_observer);
    setDirectories(store);
    file.write(bytes.mid(100));
    QElapsedTimer timer;
    timer.start();
    while (!log.contains(QStringLiteral("FILES QUEUED (1)"))) {
        ASSERT_LT(timer.elapsed(), 10000);
        QThread::msleep(5);
    }
    setDirectories(store, "other");
    const QString name = TestProduct().write(folder("other"));
    ASSERT_TRUE(waitUntil([&] { return !_observer.volumes.isEmpty(); }));
    EXPECT_EQ(_observer.volumes[0].added, QStringList{name});
}

TEST_F(QUORDataStoreTest, FindsTheLatestDataAndTheSequence) {
    const QString any = QStringLiteral("*");
    QUORDataStore store(nullptr);
    EXPECT_FALSE(store.getLatestData(any, any, any));
    QVector<QUORFileLeaf::Ptr> sequence;
    store.getDataSequence(sequence, any, any, any);
    EXPECT_TRUE(sequence.isEmpty());

    write("B", 10);
    write("A", 10, "CAA");
    write("A", 5, "CAA");
    TestProduct impossible;
    impossible.site = "A";
    impossible.time = QDateTime();
    impossible.prefix = QStringLiteral("CAX999999999999");
    impossible.write(folder("3d"));
    setDirectories(store);
    const auto latest = [&store](const char* site) {
        const auto leaf =
            store.getLatestData(QLatin1String(site), QStringLiteral("CAPPI"), QStringLiteral("Z"));
        return leaf ? leaf->getSite() + leaf->getTime().right(4) : QString();
    };
    EXPECT_EQ(latest("*"), QStringLiteral("A1000"));
    EXPECT_EQ(latest("b"), QStringLiteral("B1000"));
    EXPECT_EQ(latest("C"), QString());
    store.getDataSequence(sequence, any, any, any);
    ASSERT_EQ(sequence.size(), 4);
    EXPECT_EQ(sequence[0]->getTime(), QStringLiteral("240601120500"));
    EXPECT_EQ(sequence[3]->getSite(), QStringLiteral("B"));
}

TEST_F(QUORDataStoreTest, JobsReadWhileTheDirectoriesAreReplaced) {
    write("A", 0);
    QUORDataStore store(&_observer);
    setDirectories(store);
    std::atomic<bool> running{true};
    std::thread job([&] {
        const QString any = QStringLiteral("*");
        while (running) {
            const auto top = store.get3DTop();
            EXPECT_TRUE(top && store.get2DTop() && store.getTerrainDir());
            top->findLeaves(any, any, any, any);
            store.getLatestData(any, any, any);
            store.getPath3d();
        }
    });
    for (int i = 0; i < 20; ++i) {
        setDirectories(store, i % 2 == 0 ? "other" : "3d", i % 2 == 0 ? "3d" : "2d");
        QCoreApplication::processEvents();
    }
    running = false;
    job.join();
}
