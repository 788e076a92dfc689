// SPDX-License-Identifier: MIT
#include "QUORDirectoryWatcher.h"

#include "LogCapture.h"
#include "QUORLog.h"
#include "TestFiles.h"
#include "TestProduct.h"
#include "WaitUntil.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

/// Collects what a watcher announces, and how often.
class Announced {
public:
    explicit Announced(QUORDirectoryWatcher& watcher) {
        QObject::connect(
            &watcher, &QUORDirectoryWatcher::newFiles, &watcher,
            [this, &watcher] {
                ++signalCount;
                take(added, [&watcher] { return watcher.getAddedFile(); });
                take(removed, [&watcher] { return watcher.getRemovedFile(); });
            },
            Qt::QueuedConnection);
    }

    QStringList added;
    QStringList removed;
    int signalCount = 0;

private:
    static void take(QStringList& names, const std::function<QString()>& next) {
        for (QString path = next(); !path.isEmpty(); path = next()) {
            names.append(path.mid(path.lastIndexOf(QLatin1Char('/')) + 1));
        }
    }
};

class QUORDirectoryWatcherTest : public testing::Test {
protected:
    QUORDirectoryWatcherTest() { QDir().mkpath(folder()); }

    QString folder() const { return _dir.path() + QStringLiteral("/products"); }
    QString pathOf(const QString& name) const { return folder() + QLatin1Char('/') + name; }
    static TestProduct product(int minute) {
        TestProduct product;
        product.time.setTime({12, minute});
        return product;
    }
    QString write(int minute) const {
        product(minute).write(folder());
        return product(minute).fileName();
    }
    void append(const QString& name, const QByteArray& bytes) const {
        QFile file(pathOf(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Append));
        file.write(bytes);
    }
    std::unique_ptr<QUORDirectoryWatcher> watch(QUORWatchTiming timing = {}) const {
        return std::make_unique<QUORDirectoryWatcher>(folder(), QUORDirectoryWatchData::Directory3d, timing);
    }
    /// The watcher has nothing left to do.
    static bool isAsleep(const LogCapture& log) {
        return log.waitFor(QStringLiteral("Directories clean - going to sleep"));
    }

    static constexpr QUORWatchTiming FAST{60000ms, 30ms};
    static constexpr QUORWatchTiming OFTEN{100ms, 30ms};
    QTemporaryDir _dir;
};

} // namespace

TEST_F(QUORDirectoryWatcherTest, AnnouncesWhatArrivesAndWhatGoes) {
    const LogCapture log;
    const QString before = write(0);
    const auto watcher = watch();
    Announced announced(*watcher);
    EXPECT_TRUE(watcher->getTree()->findLeaf(before));
    EXPECT_EQ(watcher->getAddedFile(), QString());
    ASSERT_TRUE(isAsleep(log));

    product(1).write(_dir.path());
    const QString name = product(1).fileName();
    ASSERT_TRUE(QFile::rename(_dir.path() + QLatin1Char('/') + name, pathOf(name)));
    ASSERT_TRUE(waitUntil([&] { return !announced.added.isEmpty(); }));
    EXPECT_EQ(announced.added, QStringList{name});
    EXPECT_EQ(announced.signalCount, 1);
    EXPECT_TRUE(watcher->getTree()->findLeaf(name));

    QFile::remove(pathOf(before));
    ASSERT_TRUE(waitUntil([&] { return !announced.removed.isEmpty(); }));
    EXPECT_EQ(announced.removed, QStringList{before});
    EXPECT_EQ(announced.added, QStringList{name});
    EXPECT_FALSE(watcher->getTree()->findLeaf(before));
}

TEST_F(QUORDirectoryWatcherTest, NothingIsLostThatArrivesDuringALook) {
    for (int i = 0; i < 2000; ++i) {
        append(QStringLiteral("CAZ%1").arg(i), QByteArray(640, 'x'));
    }
    const auto watcher = watch();
    Announced announced(*watcher);
    QElapsedTimer timer;
    for (int trial = 0; trial < 30; ++trial) {
        write(trial);
        timer.start();
        waitUntil([&] { return timer.elapsed() > 10 + trial % 20; });
        TestProduct second = product(trial);
        second.type = 3;
        second.write(folder());
        ASSERT_TRUE(waitUntil([&] { return announced.added.size() == 2 * (trial + 1); })) << trial;
    }
    announced.added.removeDuplicates();
    EXPECT_EQ(announced.added.size(), 60);
}

TEST_F(QUORDirectoryWatcherTest, WaitsForGrowingFiles) {
    const QByteArray whole = product(0).bytes();
    const QString name = product(0).fileName();
    const LogCapture log;
    const auto watcher = watch(FAST);
    Announced announced(*watcher);
    append(name, {});
    ASSERT_TRUE(log.waitFor(QStringLiteral("ADD: FILE IS NOT COMPLETE ") + name));
    for (const auto& [first, length] : {std::pair{0, 300}, {300, 380}}) {
        append(name, whole.mid(first, length));
        const QString size = QStringLiteral("size now: ") + QString::number(first + length);
        ASSERT_TRUE(log.waitFor(size));
    }
    EXPECT_TRUE(announced.added.isEmpty());
    append(name, whole.mid(680));
    ASSERT_TRUE(waitUntil([&] { return !announced.added.isEmpty(); }));
    EXPECT_EQ(announced.added, QStringList{name});
    EXPECT_TRUE(watcher->getTree()->findLeaf(name));
}

TEST_F(QUORDirectoryWatcherTest, GivesUpWhatStopsGrowingButLooksAgainWhenItChanges) {
    for (const bool isBusy : {false, true}) {
        SCOPED_TRACE(isBusy ? "there at the start, in a directory that is always dirty" : "arrives");
        const QByteArray whole = product(isBusy).bytes();
        const QString name = product(isBusy).fileName();
        const LogCapture log;
        std::unique_ptr<QUORDirectoryWatcher> watcher = isBusy ? nullptr : watch(OFTEN);
        append(name, whole.left(650));
        watcher = watcher ? std::move(watcher) : watch(OFTEN);
        Announced announced(*watcher);
        const auto wait = [&](const std::function<bool()>& reached) {
            return waitUntil([&] {
                if (isBusy) {
                    watcher->directoryChanged(folder());
                }
                return reached();
            });
        };
        ASSERT_TRUE(
            wait([&] { return log.contains(QStringLiteral("W: TOO MANY RETRIES, FILE DISCARDED: ")); }));
        EXPECT_TRUE(log.contains(QStringLiteral("RETRY(11): FILE STILL INCOMPLETE: ") + name));
        EXPECT_FALSE(log.contains(QStringLiteral("RETRY(12)")));
        append(name, whole.mid(650));
        EXPECT_TRUE(wait([&] { return announced.added == QStringList{name}; }));
    }
}

TEST_F(QUORDirectoryWatcherTest, ABusyDirectoryDoesNotShortenTheRetries) {
    append(product(0).fileName(), product(0).bytes().left(650));
    QUORDirectoryWatchData data(QUORDirectoryWatchData::Directory3d, QUORWatchTiming{60000ms, 60000ms});
    data.initialize(folder());
    for (int i = 0; i < 30; ++i) {
        data.doRetries();
    }
    EXPECT_EQ(data.getWaiting(), 1);
}

TEST_F(QUORDirectoryWatcherTest, DiscardsWhatIsNoNewProduct) {
    const LogCapture log;
    const QString first = write(0);
    const auto watcher = watch();
    Announced announced(*watcher);
    const QString copy = first + QStringLiteral(".copy");
    QFile::copy(pathOf(first), pathOf(copy));
    EXPECT_TRUE(log.waitFor(QStringLiteral("W: INCOMING FILE DISCARDED (DUPLICATE):  ") + copy));
    append(QStringLiteral("text"), QByteArray(1000, 'x'));
    EXPECT_TRUE(log.waitFor(QStringLiteral("W: INCOMING FILE DISCARDED: (INVALID OR NO PERMISSIONS): text")));
    append(QStringLiteral("waits"), {});
    EXPECT_TRUE(log.waitFor(QStringLiteral("ADD: FILE IS NOT COMPLETE waits")));
    QFile::remove(pathOf(QStringLiteral("waits")));
    EXPECT_TRUE(log.waitFor(QStringLiteral("N: COULD NOT REMOVE FILE (NOT IN DIRECTORY) waits")));
    const QString last = write(1);
    ASSERT_TRUE(waitUntil([&] { return !announced.added.isEmpty(); }));
    EXPECT_EQ(announced.added, QStringList{last});
    EXPECT_TRUE(announced.removed.isEmpty());
    EXPECT_FALSE(log.contains(QStringLiteral("TOO MANY RETRIES")));
}

TEST_F(QUORDirectoryWatcherTest, ARenameIntoPlaceKeepsTheProduct) {
    const auto watcher = watch();
    Announced announced(*watcher);
    const QString name = product(0).fileName();
    const QString temporary = name + QStringLiteral(".tmp");
    product(0).writeTo(pathOf(temporary));
    ASSERT_TRUE(waitUntil([&] { return announced.added.contains(temporary); }));
    ASSERT_TRUE(QDir(folder()).rename(temporary, name));
    ASSERT_TRUE(waitUntil([&] { return announced.added.contains(name); }));
    EXPECT_TRUE(watcher->getTree()->findLeaf(name));
    EXPECT_TRUE(waitUntil([&] { return announced.removed == QStringList{temporary}; }));
    const QString any = QStringLiteral("*");
    const auto leaves = watcher->getTree()->findLeaves(any, any, any, product(0).time, 0);
    ASSERT_EQ(leaves.size(), 1);
    EXPECT_EQ(leaves.first(), watcher->getTree()->findLeaf(name));
}

TEST_F(QUORDirectoryWatcherTest, ADuplicateFollowsItsOriginalAndIsAnnouncedWhenItIsNew) {
    const struct {
        const char* name;
        bool atStart;
        std::chrono::milliseconds recent;
        bool announced;
    } rows[] = {{"just arrived", false, 60000ms, true},
                {"known for long", false, 0ms, false},
                {"there at the start", true, 60000ms, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const QString original = write(0);
        const QStringList names{original, original + QStringLiteral(".copy"),
                                original + QStringLiteral(".more")};
        QUORDirectoryWatchData data(QUORDirectoryWatchData::Directory3d, {60000ms, 1000ms, row.recent});
        const auto look = [&data] {
            data.markForCheck();
            EXPECT_TRUE(data.checkUpdates());
            return data.takeAddedNames();
        };
        if (!row.atStart) {
            data.initialize(folder());
        }
        for (const QString& copy : names.mid(1)) {
            EXPECT_EQ(::link(qPrintable(pathOf(original)), qPrintable(pathOf(copy))), 0);
        }
        if (row.atStart) {
            data.initialize(folder());
        }
        EXPECT_EQ(look(), QStringList());
        for (int i = 0; i < 2; ++i) {
            QFile::remove(pathOf(names[i]));
            EXPECT_EQ(look(), row.announced ? QStringList{names[i + 1]} : QStringList());
            EXPECT_TRUE(data.getTree()->findLeaf(names[i + 1]));
        }
        QFile::remove(pathOf(names[2]));
    }
}

TEST_F(QUORDirectoryWatcherTest, WhatIsWrittenAnewUnderItsNameIsAnnounced) {
    const QString name = product(0).fileName();
    const QString path = pathOf(name);
    const QString aside = _dir.filePath(QStringLiteral("aside"));
    TestProduct other = product(0);
    other.groundElevationM = 7;
    TestProduct sameHeader = product(0);
    sameHeader.fill = [](int, int, int) { return 3U; };
    const auto moveIn = [&](const TestProduct& next) {
        next.writeTo(aside);
        EXPECT_EQ(std::rename(qPrintable(aside), qPrintable(path)), 0);
    };
    const auto setBack = [&] {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadWrite));
        EXPECT_TRUE(file.setFileTime(QDateTime({2020, 1, 1}, {0, 0}), QFileDevice::FileModificationTime));
    };
    const struct {
        const char* what;
        std::function<void()> act;
        bool announced;
    } rows[] = {
        {"renamed over", [&] { moveIn(other); }, true},
        {"the same header", [&] { moveIn(sameHeader); }, true},
        {"removed and renamed",
         [&] {
             QFile::remove(path);
             moveIn(other);
         },
         true},
        {"written in place", [&] { sameHeader.writeTo(path); }, true},
        {"its time set back by a transfer", setBack, false},
        {"other rights", [&] { QFile::setPermissions(path, QFile::ReadOwner); }, false},
        {"linked", [&] { EXPECT_EQ(::link(qPrintable(path), qPrintable(aside)), 0); }, false},
        {"not touched", [] {}, false},
    };
    for (const bool isNotified : {true, false}) {
        for (const auto& row : rows) {
            SCOPED_TRACE(row.what);
            QFile::remove(path);
            QFile::remove(aside);
            write(0);
            QUORDirectoryWatchData data(QUORDirectoryWatchData::Directory3d);
            data.initialize(folder());
            QThread::msleep(10); // a tick of the file system's clock
            row.act();
            const LogCapture log;
            if (isNotified) {
                data.markWritten({name, QStringLiteral("gone")});
                data.markDirty();
            } else {
                data.markForCheck();
            }
            EXPECT_TRUE(data.checkUpdates());
            EXPECT_EQ(data.takeAddedNames(), row.announced ? QStringList{name} : QStringList());
            EXPECT_EQ(log.count(QStringLiteral("N: PRODUCT ISSUED AGAIN, REPLACES THE ONE BEFORE: ") + name),
                      row.announced);
            EXPECT_FALSE(log.contains(QStringLiteral("W: ")));
            const QUORFileLeaf::CPtr leaf = data.getTree()->findLeaf(name);
            ASSERT_TRUE(leaf);
            EXPECT_TRUE(leaf->getFile()->isUnchanged());
            data.markForCheck();
            data.checkUpdates();
            EXPECT_TRUE(data.takeAddedNames().isEmpty());
        }
    }
}

TEST_F(QUORDirectoryWatcherTest, AnotherProductUnderANameIsARemovalAndAnArrival) {
    const QString first = write(0);
    const QString second = write(1);
    QUORDirectoryWatchData data(QUORDirectoryWatchData::Directory3d);
    data.initialize(folder());
    const auto look = [&data] {
        data.markForCheck();
        EXPECT_TRUE(data.checkUpdates());
        return std::pair(data.takeAddedNames(), data.takeRemovedNames());
    };
    const auto siteOf = [&data](const QString& name) {
        const auto leaf = data.getTree()->findLeaf(name);
        return leaf ? leaf->getSite() : QString();
    };
    TestProduct other = product(0);
    other.site = "OTHER";
    other.writeTo(pathOf(first));
    EXPECT_EQ(look(), std::pair(QStringList{first}, QStringList{first}));
    EXPECT_EQ(siteOf(first), QStringLiteral("OTHER"));

    // Each takes what the other had, so that for a moment one is a duplicate.
    TestProduct swapped = product(0);
    swapped.type = 3;
    swapped.writeTo(pathOf(first));
    const QString copy = QStringLiteral("X") + first.mid(1);
    other.writeTo(pathOf(copy));
    EXPECT_EQ(look(), std::pair(QStringList({first, copy}), QStringList{first}));
    QThread::msleep(10);
    other.writeTo(pathOf(first));
    swapped.writeTo(pathOf(copy));
    EXPECT_EQ(look(), std::pair(QStringList({copy, first}), QStringList({first, copy})));
    EXPECT_EQ(data.getTree()->findLeaf(first)->getConfiguration(), QStringLiteral("Z"));
    EXPECT_EQ(data.getTree()->findLeaf(copy)->getConfiguration(), QStringLiteral("V"));

    writeFile(pathOf(second), QByteArray(1000, 'x'));
    EXPECT_EQ(look(), std::pair(QStringList(), QStringList{second}));
    EXPECT_FALSE(data.getTree()->findLeaf(second));
}

TEST_F(QUORDirectoryWatcherTest, AProductThatIsBeingWrittenAnewWaits) {
    const QByteArray whole = product(0).bytes();
    for (const bool isFinished : {true, false}) {
        SCOPED_TRACE(isFinished);
        const QString name = write(0);
        QUORDirectoryWatchData data(QUORDirectoryWatchData::Directory3d, QUORWatchTiming{60000ms, 0ms});
        data.initialize(folder());
        QThread::msleep(10);
        writeFile(pathOf(name), whole.left(650));
        data.markWritten({name});
        data.markDirty();
        EXPECT_TRUE(data.checkUpdates());
        EXPECT_EQ(data.getWaiting(), 1);
        EXPECT_TRUE(data.getTree()->findLeaf(name));
        if (isFinished) {
            append(name, whole.mid(650));
        }
        QStringList added;
        QStringList removed;
        for (int i = 0; i < 12; ++i) {
            data.markRetry();
            data.markForCheck();
            EXPECT_TRUE(data.checkUpdates());
            added.append(data.takeAddedNames());
            removed.append(data.takeRemovedNames());
        }
        EXPECT_EQ(data.getWaiting(), 0);
        EXPECT_EQ(added, isFinished ? QStringList{name} : QStringList());
        EXPECT_EQ(removed, isFinished ? QStringList() : QStringList{name});
        EXPECT_EQ(bool(data.getTree()->findLeaf(name)), isFinished);
    }
}

TEST_F(QUORDirectoryWatcherTest, NotificationsTellOfFilesThatAreWrittenInPlace) {
    const LogCapture log;
    const QString name = write(0);
    const auto watcher = watch();
    Announced announced(*watcher);
    ASSERT_TRUE(isAsleep(log));
    product(0).writeTo(pathOf(name));
    EXPECT_TRUE(waitUntil([&] { return announced.added == QStringList{name}; }));
    // A growing file is taken when it is closed, before the next retry.
    QElapsedTimer timer;
    timer.start();
    append(product(1).fileName(), product(1).bytes().left(650));
    ASSERT_TRUE(log.waitFor(QStringLiteral("ADD: FILE IS NOT COMPLETE ")));
    append(product(1).fileName(), product(1).bytes().mid(650));
    EXPECT_TRUE(waitUntil([&] { return announced.added.contains(product(1).fileName()); }));
    EXPECT_LT(timer.elapsed(), 900);
}

TEST_F(QUORDirectoryWatcherTest, ADirectoryWithoutNotificationsIsTwoErrorLinesAndLookedAt) {
    const LogCapture log;
    const QString failed = QStringLiteral("E: Changes are not notified (Too many open files");
    QUORDirectoryWatcher watcher({}, QUORDirectoryWatchData::Directory3d, {500ms, 30ms, 60000ms, 20ms});
    ASSERT_TRUE(isAsleep(log)); // its thread has what it needs
    {
        const ResourceLimit noDescriptors(RLIMIT_NOFILE, 3);
        watcher.pathChanged(folder());
        QThread::msleep(100);
    }
    Announced announced(watcher);
    // Before a check tries to be notified again no event is delivered.
    const QString name = write(0);
    QElapsedTimer timer;
    timer.start();
    while (!log.contains(QStringLiteral("FILES QUEUED (1)")) && timer.elapsed() < 10000) {
        QThread::msleep(1);
    }
    EXPECT_FALSE(log.contains(QStringLiteral("E: Changes are notified again: ")));
    EXPECT_TRUE(waitUntil([&] { return announced.added == QStringList{name}; }));
    EXPECT_TRUE(log.waitFor(QStringLiteral("E: Changes are notified again: ") + folder()));
    EXPECT_EQ(log.count(failed), 1);
    EXPECT_EQ(log.count(QStringLiteral("E: ")), 2);
}

TEST_F(QUORDirectoryWatcherTest, ForeignFilesAtStartAreFewLinesAndLookedAtAgain) {
    const QString warning = QStringLiteral("W: INCOMING FILE DISCARDED: (INVALID OR NO PERMISSIONS): ");
    const LogCapture log;
    const QString name = product(0).fileName();
    append(name, QByteArray(1000, 'x'));
    for (int i = 0; i < 24; ++i) {
        append(QStringLiteral("foreign%1").arg(i), QByteArray(1000, 'x'));
    }
    const auto watcher = watch(OFTEN);
    Announced announced(*watcher);
    EXPECT_TRUE(log.contains(warning + name));
    EXPECT_TRUE(log.contains(warning + QStringLiteral("5 more files")));
    ASSERT_TRUE(isAsleep(log));
    product(0).writeTo(pathOf(name));
    EXPECT_TRUE(waitUntil([&] { return announced.added == QStringList{name}; }));
    EXPECT_EQ(log.count(warning), 21);
}

TEST_F(QUORDirectoryWatcherTest, ThousandsOfShortFilesAreFewLinesAndDelayNothing) {
    const QString warning = QStringLiteral("W: TOO MANY RETRIES, FILE DISCARDED: ");
    constexpr int files = 3000;
    QUORDirectoryWatchData data(QUORDirectoryWatchData::Directory3d, QUORWatchTiming{60000ms, 0ms});
    for (int i = 0; i < files; ++i) {
        append(QStringLiteral("CAZ%1").arg(i), product(0).bytes().left(650));
    }
    data.initialize(folder());
    ASSERT_EQ(data.getWaiting(), files);
    const LogCapture log;
    QUORLog::Instance().setLevel(QUORLog::Warning);
    for (int i = 0; i < 12; ++i) {
        data.doRetries();
    }
    EXPECT_EQ(log.count(warning), 20);
    data.markForCheck();
    data.checkUpdates();
    EXPECT_TRUE(log.contains(warning + QString::number(files - 20) + QStringLiteral(" more files")));

    for (int i = 0; i < files; ++i) {
        append(QStringLiteral("CAZ%1").arg(i), QByteArray(1, 'x'));
    }
    data.markForCheck();
    data.checkUpdates();
    ASSERT_EQ(data.getWaiting(), files);
    QDir(folder()).removeRecursively();
    QDir().mkpath(folder());
    write(0);
    QElapsedTimer timer;
    timer.start();
    data.markForCheck();
    data.checkUpdates();
    EXPECT_EQ(data.takeAddedNames(), QStringList{product(0).fileName()});
    EXPECT_EQ(data.getWaiting(), 0);
    EXPECT_LT(timer.elapsed(), 500);
}

TEST_F(QUORDirectoryWatcherTest, AFileThatCannotBeReadAtTheMomentWaits) {
    const LogCapture log;
    QUORDirectoryWatchData data(QUORDirectoryWatchData::Directory3d, QUORWatchTiming{60000ms, 0ms});
    data.initialize(folder());
    const QString first = write(0);
    ASSERT_TRUE(data.isChanged());
    {
        const ResourceLimit noDescriptors(RLIMIT_NOFILE, 3);
        data.refresh();
    }
    EXPECT_EQ(data.getWaiting(), 1);
    data.doRetries();
    EXPECT_EQ(data.takeAddedNames(), QStringList{first});

    const QString second = write(1);
    ASSERT_TRUE(data.isChanged());
    {
        const ResourceLimit noDescriptors(RLIMIT_NOFILE, 3);
        for (int i = 0; i < 12; ++i) {
            data.refresh();
        }
    }
    EXPECT_TRUE(log.contains(QStringLiteral("W: TOO MANY RETRIES, FILE DISCARDED: ") + second));
    EXPECT_EQ(data.getWaiting(), 0);
    data.markForCheck();
    EXPECT_TRUE(data.checkUpdates());
    EXPECT_EQ(data.takeAddedNames(), QStringList{second});
}

TEST_F(QUORDirectoryWatcherTest, AVanishedDirectoryNeitherSpinsNorStaysLost) {
    const LogCapture log;
    const QString first = write(0);
    const auto watcher = watch(OFTEN);
    Announced announced(*watcher);
    ASSERT_TRUE(QDir(folder()).removeRecursively());
    ASSERT_TRUE(waitUntil([&] { return announced.removed == QStringList{first}; }));
    ASSERT_TRUE(log.waitFor(QStringLiteral("W: Directory has gone: ") + folder()));
    const int passes = log.count(QStringLiteral("--- WAKE UP --"));
    QElapsedTimer timer;
    timer.start();
    ASSERT_TRUE(waitUntil([&] { return log.count(QStringLiteral("--- WAKE UP --")) >= passes + 3; }));
    EXPECT_GE(timer.elapsed(), 190);

    QDir().mkpath(folder());
    const QString second = write(1);
    EXPECT_TRUE(waitUntil([&] { return announced.added == QStringList{second}; }));
    EXPECT_EQ(log.count(QStringLiteral("Directory has gone: ")), 1);
}

TEST_F(QUORDirectoryWatcherTest, ADirectoryThatIsMadeAnewIsHeardAtOnce) {
    const LogCapture log;
    const QString first = write(0);
    const auto watcher = watch();
    Announced announced(*watcher);
    const auto sleeps = [&log] {
        return waitUntil(
            [&log] { return log.lines().constLast().contains(QStringLiteral("going to sleep")); });
    };
    ASSERT_TRUE(sleeps());
    // File systems give the new directory the number of the old one.
    ASSERT_TRUE(QDir(folder()).removeRecursively() && QDir().mkpath(folder()));
    ASSERT_TRUE(waitUntil([&] { return announced.removed == QStringList{first}; }));
    // The first may be found by the look that follows, the second must be heard.
    QStringList names;
    for (const int minute : {1, 2}) {
        ASSERT_TRUE(sleeps());
        names.append(write(minute));
        ASSERT_TRUE(waitUntil([&] { return announced.added == names; }));
    }
}

TEST_F(QUORDirectoryWatcherTest, AFailedListingRemovesNothing) {
    const LogCapture log;
    const QString aside = _dir.path() + QStringLiteral("/aside");
    const QString first = write(0);
    const auto watcher = watch(OFTEN);
    Announced announced(*watcher);
    ASSERT_TRUE(QFile::rename(folder(), aside) && QFile::link(folder(), folder()));
    ASSERT_TRUE(log.waitFor(QStringLiteral("W: Directory cannot be listed (")));
    ASSERT_TRUE(QFile::remove(folder()) && QFile::rename(aside, folder()));
    const QString second = write(1);
    ASSERT_TRUE(waitUntil([&] { return !announced.added.isEmpty(); }));
    EXPECT_EQ(announced.added, QStringList{second});
    EXPECT_TRUE(announced.removed.isEmpty());
    EXPECT_TRUE(watcher->getTree()->findLeaf(first));
}

TEST_F(QUORDirectoryWatcherTest, AReplacedDirectoryIsWatchedAnew) {
    LogCapture log;
    const QString link = _dir.path() + QStringLiteral("/link");
    const QString other = _dir.path() + QStringLiteral("/other");
    QDir().mkpath(other);
    const QString first = write(0);
    product(1).write(other);
    ASSERT_TRUE(QFile::link(folder(), link));
    QUORDirectoryWatcher watcher(link, QUORDirectoryWatchData::Directory3d, OFTEN);
    Announced announced(watcher);
    ASSERT_TRUE(QFile::remove(link) && QFile::link(other, link));
    ASSERT_TRUE(waitUntil([&] { return !announced.added.isEmpty() && !announced.removed.isEmpty(); }));
    EXPECT_EQ(announced.added, QStringList{product(1).fileName()});
    EXPECT_EQ(announced.removed, QStringList{first});

    ASSERT_TRUE(isAsleep(log));
    log.clear();
    product(2).write(other);
    EXPECT_TRUE(waitUntil([&] { return announced.added.contains(product(2).fileName()); }));
    EXPECT_TRUE(log.waitFor(QStringLiteral("Changed directory: ") + link));
}

TEST_F(QUORDirectoryWatcherTest, ADirectoryThatComesLaterIsFound) {
    const LogCapture log;
    QDir().rmdir(folder());
    const auto watcher = watch(OFTEN);
    Announced announced(*watcher);
    EXPECT_TRUE(log.contains(QStringLiteral("Not a valid directory: ") + folder()));
    ASSERT_TRUE(watcher->getTree());
    QDir().mkpath(folder());
    const QString name = write(0);
    EXPECT_TRUE(waitUntil([&] { return announced.added == QStringList{name}; }));
}

TEST_F(QUORDirectoryWatcherTest, TheCheckMakesUpForLostNotifications) {
    const LogCapture log;
    const auto watcher = watch(OFTEN);
    QElapsedTimer timer;
    timer.start();
    // No event is processed, so no notification comes through.
    while (!log.contains(QStringLiteral("going to sleep")) && timer.elapsed() < 10000) {
        QThread::msleep(1);
    }
    const QString name = write(0);
    QString found;
    while (found.isEmpty() && timer.elapsed() < 10000) {
        QThread::msleep(1);
        found = watcher->getAddedFile();
    }
    EXPECT_EQ(found, pathOf(name));
}

TEST_F(QUORDirectoryWatcherTest, StopsAtOnceAndSleepsWhenIdle) {
    const LogCapture log;
    auto watcher = watch();
    ASSERT_TRUE(isAsleep(log));
    QElapsedTimer timer;
    timer.start();
    waitUntil([&] { return timer.elapsed() > 300; });
    EXPECT_EQ(log.count(QStringLiteral("--- WAKE UP --")), 0);
    timer.restart();
    watcher.reset();
    EXPECT_LT(timer.elapsed(), 1000);
}
