// SPDX-License-Identifier: MIT
#include "QUORDirectoryWatcher.h"

#include "LogCapture.h"
#include "ProductFolder.h"
#include "QUORLog.h"
#include "WaitUntil.h"

#include <QElapsedTimer>

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
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

class QUORDirectoryWatcherTest : public ProductFolder {
protected:
    std::unique_ptr<QUORDirectoryWatcher> watch(QUORWatchTiming timing = {}) const {
        return std::make_unique<QUORDirectoryWatcher>(folder(), QUORDirectoryWatchData::Directory3d, timing);
    }
    /// The watcher has nothing left to do.
    static bool isAsleep(const LogCapture& log) {
        return log.waitFor(QStringLiteral("Directories clean - going to sleep"));
    }

    static constexpr QUORWatchTiming FAST{60000ms, 30ms};
    static constexpr QUORWatchTiming OFTEN{100ms, 30ms};
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

TEST_F(QUORDirectoryWatcherTest, ACorrectionOfEqualSizeAndTimeIsAnnounced) {
    const LogCapture log;
    const QString name = write(0);
    struct stat info {};
    ASSERT_EQ(::stat(qPrintable(pathOf(name)), &info), 0);
    const std::array times{info.st_atim, info.st_mtim};
    TestProduct corrected = product(0);
    corrected.fill = [](int, int, int) { return 3U; };
    const auto watcher = watch();
    Announced announced(*watcher);
    ASSERT_TRUE(isAsleep(log));

    // As copying tools write that keep the times of their source.
    const int fd = ::open(qPrintable(pathOf(name)), O_WRONLY | O_TRUNC);
    const QByteArray bytes = corrected.bytes();
    EXPECT_EQ(::write(fd, bytes.constData(), std::size_t(bytes.size())), bytes.size());
    EXPECT_EQ(::futimens(fd, times.data()), 0);
    ::close(fd);
    EXPECT_TRUE(waitUntil([&] { return announced.added == QStringList{name}; }));

    const QString aside = _dir.filePath(QStringLiteral("aside"));
    product(0).writeTo(aside);
    EXPECT_EQ(::utimensat(AT_FDCWD, qPrintable(aside), times.data(), 0), 0);
    EXPECT_EQ(std::rename(qPrintable(aside), qPrintable(pathOf(name))), 0);
    EXPECT_TRUE(waitUntil([&] { return announced.added == QStringList({name, name}); }));

    // Only the time and the rights.
    const int unwritten = ::open(qPrintable(pathOf(name)), O_WRONLY);
    EXPECT_EQ(::futimens(unwritten, times.data()), 0);
    ::close(unwritten);
    EXPECT_EQ(::chmod(qPrintable(pathOf(name)), 0600), 0);
    const QString next = write(1);
    EXPECT_TRUE(waitUntil([&] { return announced.added.contains(next); }));
    EXPECT_EQ(announced.added, QStringList({name, name, next}));
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
