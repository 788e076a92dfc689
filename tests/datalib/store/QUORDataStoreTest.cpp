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
    write("B", 10);
    write("A", 10, "CAA");
    write("A", 5, "CAA");
    QUORDataStore store(nullptr);
    EXPECT_FALSE(store.getLatestData(any, any, any));
    setDirectories(store);
    EXPECT_EQ(store.getLatestData(any, any, any)->getKey(), QStringLiteral("A/CAPPI/Z/240601121000"));
    QVector<QUORFileLeaf::Ptr> sequence;
    store.getDataSequence(sequence, any, any, any);
    ASSERT_EQ(sequence.size(), 3);
    EXPECT_EQ(sequence[0]->getTime(), QStringLiteral("240601120500"));
    EXPECT_EQ(sequence[2]->getSite(), QStringLiteral("B"));
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
