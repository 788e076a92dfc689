// SPDX-License-Identifier: MIT
#include "QUORDirectoryWatchData.h"

#include "LogCapture.h"
#include "ProductFolder.h"
#include "QUORLog.h"

#include <QElapsedTimer>
#include <QThread>

#include <functional>
#include <sys/stat.h>
#include <unistd.h>

using namespace std::chrono_literals;

using QUORDirectoryWatchDataTest = ProductFolder;

TEST_F(QUORDirectoryWatchDataTest, ABusyDirectoryDoesNotShortenTheRetries) {
    append(product(0).fileName(), product(0).bytes().left(650));
    QUORDirectoryWatchData data(QUORDirectoryWatchData::Directory3d, QUORWatchTiming{60000ms, 60000ms});
    data.initialize(folder());
    for (int i = 0; i < 30; ++i) {
        data.doRetries();
    }
    EXPECT_EQ(data.getWaiting(), 1);
}

TEST_F(QUORDirectoryWatchDataTest, ADuplicateFollowsItsOriginalAndIsAnnouncedWhenItIsNew) {
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

namespace {

/// What may be done to the file of a product.
class Replacing : public ProductFolder {
protected:
    Replacing() {
        other.groundElevationM = 7;
        sameHeader.fill = [](int, int, int) { return 3U; };
    }
    void moveIn(const TestProduct& next, bool keepsTime = false) const {
        next.writeTo(aside);
        if (keepsTime) {
            setTime(aside, then);
        }
        EXPECT_EQ(std::rename(qPrintable(aside), qPrintable(path)), 0);
    }
    void overwrite(const TestProduct& next, const QDateTime& time = {}) const {
        next.writeTo(path);
        if (time.isValid()) {
            setTime(path, time);
        }
    }
    QStringList look(QUORDirectoryWatchData& data, bool isNotified, bool closesWriter) const {
        const QStringList names{name, QStringLiteral("gone")};
        if (isNotified) {
            data.markNotified(names, closesWriter ? names : QStringList());
            data.markDirty();
        } else {
            data.markForCheck();
        }
        EXPECT_TRUE(data.checkUpdates());
        return data.takeAddedNames();
    }
    const QString name = product(0).fileName();
    const QString path = pathOf(name);
    const QString aside = _dir.filePath(QStringLiteral("aside"));
    const QDateTime then{QDate(2020, 1, 1), QTime(0, 0)};
    TestProduct other = product(0);
    TestProduct sameHeader = product(0);
};

} // namespace

TEST_F(Replacing, WhatIsWrittenAnewUnderItsNameIsAnnounced) {
    const struct {
        const char* what;
        std::function<void()> act;
        bool closesWriter; ///< of which a notification tells
        bool byNotification;
        bool byCheck;
    } rows[] = {
        {"renamed over", [&] { moveIn(other); }, false, true, true},
        {"the same header", [&] { moveIn(sameHeader); }, false, true, true},
        {"the same header, size and time", [&] { moveIn(sameHeader, true); }, false, true, true},
        {"removed and renamed", [&] { QFile::remove(path), moveIn(other); }, false, true, true},
        {"written in place", [&] { overwrite(sameHeader); }, true, true, true},
        {"and its time kept", [&] { overwrite(sameHeader, then); }, true, true, false},
        {"and its time set back", [&] { overwrite(sameHeader, then.addDays(-1)); }, true, true, false},
        {"its time set back by a transfer", [&] { setTime(path, then.addDays(-1)); }, false, false, false},
        {"other rights", [&] { QFile::setPermissions(path, QFile::ReadOwner); }, false, false, false},
        {"linked", [&] { EXPECT_EQ(::link(qPrintable(path), qPrintable(aside)), 0); }, false, false, false},
        {"closed by who wrote it", [] {}, true, false, false},
    };
    for (const auto& row : rows) {
        for (const bool isNotified : {true, false}) {
            SCOPED_TRACE(testing::Message() << row.what << ", notified " << isNotified);
            const bool announced = isNotified ? row.byNotification : row.byCheck;
            QFile::remove(path);
            QFile::remove(aside);
            write(0);
            setTime(path, then);
            QUORDirectoryWatchData data(QUORDirectoryWatchData::Directory3d);
            data.initialize(folder());
            QThread::msleep(10); // a tick of the file system's clock
            row.act();
            const LogCapture log;
            EXPECT_EQ(look(data, isNotified, row.closesWriter),
                      announced ? QStringList{name} : QStringList());
            EXPECT_EQ(log.count(QStringLiteral("N: PRODUCT ISSUED AGAIN, REPLACES THE ONE BEFORE: ") + name),
                      announced);
            EXPECT_FALSE(log.contains(QStringLiteral("W: ")));
            const QUORFileLeaf::CPtr leaf = data.getTree()->findLeaf(name);
            ASSERT_TRUE(leaf);
            EXPECT_TRUE(leaf->getFile()->isUnchanged());
            EXPECT_EQ(look(data, false, false), QStringList());
        }
    }
}

TEST_F(QUORDirectoryWatchDataTest, AnotherProductUnderANameIsARemovalAndAnArrival) {
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

TEST_F(QUORDirectoryWatchDataTest, AProductThatIsBeingWrittenAnewWaits) {
    const QByteArray whole = product(0).bytes();
    const struct {
        const char* what;
        bool isFinished;
        bool keepsTime;
    } rows[] = {{"finished", true, false}, {"its time kept", true, true}, {"given up", false, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const QString name = write(0);
        const QDateTime time = QFileInfo(pathOf(name)).lastModified();
        QUORDirectoryWatchData data(QUORDirectoryWatchData::Directory3d, QUORWatchTiming{60000ms, 0ms});
        data.initialize(folder());
        QThread::msleep(10);
        writeFile(pathOf(name), whole.left(650));
        data.markNotified({name}, {});
        data.markDirty();
        EXPECT_TRUE(data.checkUpdates());
        EXPECT_EQ(data.getWaiting(), 1);
        EXPECT_TRUE(data.getTree()->findLeaf(name));
        if (row.isFinished) {
            append(name, whole.mid(650));
        }
        if (row.keepsTime) {
            setTime(pathOf(name), time);
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
        EXPECT_EQ(added, row.isFinished ? QStringList{name} : QStringList());
        EXPECT_EQ(removed, row.isFinished ? QStringList() : QStringList{name});
        EXPECT_EQ(bool(data.getTree()->findLeaf(name)), row.isFinished);
    }
}

TEST_F(QUORDirectoryWatchDataTest, ThousandsOfShortFilesAreFewLinesAndDelayNothing) {
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

TEST_F(QUORDirectoryWatchDataTest, AFileThatCannotBeReadAtTheMomentWaits) {
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
