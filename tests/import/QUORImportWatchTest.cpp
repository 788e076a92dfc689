// SPDX-License-Identifier: MIT
#include "QUORImportWatch.h"

#include "QUORFolderEvents.h"
#include "QUORImportError.h"
#include "RadarFiles.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include <csignal>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// Of the processes that read files: how many began, and the signal that ends them, 0 for none.
int readings = 0;
int endOfReadings = 0;

void watchReadings() {
    [[maybe_unused]] static const int once = ::pthread_atfork(
        nullptr, [] { ++readings; },
        [] {
            if (endOfReadings != 0) {
                ::prctl(PR_SET_DUMPABLE, 0); // no core
                ::signal(endOfReadings, SIG_DFL);
                ::raise(endOfReadings);
            }
        });
    readings = 0;
}

/// SIGTERM waits to be taken.
class EndBlocked {
public:
    EndBlocked() {
        sigemptyset(&_ending);
        sigaddset(&_ending, SIGTERM);
        ::pthread_sigmask(SIG_BLOCK, &_ending, &_before);
    }
    ~EndBlocked() { ::pthread_sigmask(SIG_SETMASK, &_before, nullptr); }
    EndBlocked(const EndBlocked&) = delete;
    EndBlocked& operator=(const EndBlocked&) = delete;
    void take() const {
        int signal = 0;
        ::sigwait(&_ending, &signal);
    }

private:
    sigset_t _ending;
    sigset_t _before;
};

class QUORImportWatchTest : public testing::Test {
protected:
    QUORImportWatchTest() {
        QDir().mkpath(in());
        watchReadings();
        start();
    }
    ~QUORImportWatchTest() override { endOfReadings = 0; }

    void start() {
        watch = std::make_unique<QUORImportWatch>(
            in(), folder.filePath("out/record"), 600,
            QUORImportWatch::Limits{.settle = zero,
                                    .quiet = quiet,
                                    .again = again,
                                    .interrupted = interrupted,
                                    .pass = pass,
                                    .reading = limits,
                                    .memory = memory},
            [this](const QUORRadarData& data, const QStringList& files) {
                EXPECT_TRUE(data.hasValues);
                ++attempts;
                if (diskFull || (refusesCapitals && files.first()[0].isUpper())) {
                    throw QUORWriteError(QStringLiteral("disk full"));
                }
                if (askedTooMuch) {
                    throw QUORRequestError(QStringLiteral("too fine"));
                }
                readAtImport.push_back(readings);
                imported.append(files.join(QLatin1Char('+')));
                if (endsAtImport) {
                    ::kill(::getpid(), SIGTERM);
                }
            },
            [this](const QStringList& files, const QString& reason) {
                reported.append(files.join(QLatin1Char('+')) + QStringLiteral(": ") + reason);
            });
    }
    QString in() const { return folder.filePath("in"); }
    QString path(const char* name) const { return in() + QLatin1Char('/') + QLatin1String(name); }
    /// Other passes than these find nothing.
    QStringList look(int passes = 2) {
        imported.clear();
        for (int i = 0; i < passes; ++i) {
            watch->look({});
        }
        return imported;
    }

    static constexpr std::chrono::milliseconds zero{0};
    QTemporaryDir folder;
    std::chrono::milliseconds quiet{0};
    std::chrono::milliseconds again{0};
    std::size_t memory = QUORImportWatch::Limits().memory;
    bool diskFull = false;
    bool refusesCapitals = false; ///< cannot write the products of such names
    bool endsAtImport = false;
    int attempts = 0; ///< to write
    bool askedTooMuch = false;
    QUORReaderProcess::Limits limits;
    std::chrono::milliseconds interrupted{0};
    std::chrono::milliseconds pass = std::chrono::hours(1);
    std::vector<int> readAtImport; ///< readings so far
    QStringList imported;
    QStringList reported;
    std::unique_ptr<QUORImportWatch> watch;
    QByteArray volume = RadarFiles::makeLevel2().toBytes();
};

} // namespace

TEST_F(QUORImportWatchTest, ImportsEachContentOnceThroughRenamesCopiesAndRestarts) {
    writeFile(path("old"), volume.left(100));
    EXPECT_EQ(look(), QStringList()); // was there before the first start
    EXPECT_EQ(reported, QStringList());
    writeFile(path(".hidden"), volume);
    writeFile(path("a.part"), volume);
    EXPECT_EQ(look(), QStringList("a.part"));
    EXPECT_TRUE(QFile::rename(path("a.part"), path("a")));
    EXPECT_EQ(look(), QStringList());
    EXPECT_EQ(reported, QStringList());
    EXPECT_TRUE(QFile::copy(path("a"), path("copy")));
    EXPECT_EQ(look(), QStringList());
    EXPECT_EQ(reported.size(), 1);
    start();
    EXPECT_EQ(look(), QStringList());
    EXPECT_EQ(reported.size(), 1);
    // While it was down, another came; and a name that is known holds something else now.
    RadarFiles::writeOdim(path("b"));
    RadarFiles::writeCfRadial1(path("a"));
    start();
    EXPECT_EQ(look(), QStringList({"a", "b"}));
}

TEST_F(QUORImportWatchTest, WaitsForFilesThatGrowAndNamesBadOnesOnce) {
    look();
    writeFile(path("growing"), volume.left(1000));
    EXPECT_EQ(look(3), QStringList());
    EXPECT_TRUE(watch->isWaiting());
    writeFile(path("growing"), volume);
    EXPECT_EQ(look(), QStringList("growing"));
    EXPECT_EQ(reported, QStringList());
    writeFile(path("bad"), "no radar data");
    EXPECT_EQ(look(30), QStringList());
    ASSERT_EQ(reported.size(), 1);
    EXPECT_TRUE(reported[0].startsWith("bad: none of ODIM_H5"));
    EXPECT_FALSE(watch->isWaiting());
    writeFile(path("bad"), volume + "x"); // and is good in the end
    EXPECT_EQ(look(), QStringList("bad"));
}

TEST_F(QUORImportWatchTest, JoinsSweepsAndTriesAgainWhatCouldNotBeWritten) {
    look();
    quiet = std::chrono::hours(1);
    start();
    RadarFiles::writeOdimScan(path("s1"), 0.5, "DBZH", 0);
    RadarFiles::writeOdimScan(path("s2"), 1.5, "DBZH", 20);
    EXPECT_EQ(look(), QStringList());
    // What was not complete is read again after a restart.
    quiet = zero;
    diskFull = true;
    start();
    EXPECT_EQ(look(3), QStringList());
    EXPECT_EQ(reported, QStringList("s1+s2: disk full"));
    diskFull = false;
    EXPECT_EQ(look(), QStringList("s1+s2"));
    EXPECT_FALSE(watch->isWaiting());
}

TEST_F(QUORImportWatchTest, KnowsPiecesThatWereRenamedWhileTheyWaited) {
    look();
    quiet = std::chrono::hours(1);
    start();
    RadarFiles::writeOdimScan(path("s1"), 0.5, "DBZH", 0);
    EXPECT_EQ(look(), QStringList());
    EXPECT_TRUE(QFile::copy(path("s1"), path("copy")));
    EXPECT_EQ(look(), QStringList()); // of a content that waits: must not count as imported
    EXPECT_TRUE(QFile::remove(path("copy")));
    quiet = zero;
    diskFull = true;
    start();
    EXPECT_EQ(look(), QStringList());
    EXPECT_TRUE(QFile::rename(path("s1"), path("renamed")));
    EXPECT_EQ(look(), QStringList());
    diskFull = false;
    EXPECT_EQ(look(), QStringList("s1"));
    reported.clear();
    start();
    EXPECT_EQ(look(), QStringList());
    EXPECT_EQ(reported, QStringList());
}

TEST_F(QUORImportWatchTest, TakesTheFirstFilesOfAFolderThatComesLater) {
    QDir(in()).removeRecursively();
    start();
    EXPECT_EQ(look(), QStringList());
    EXPECT_EQ(reported.size(), 1);
    QDir().mkpath(in());
    writeFile(path("first"), volume);
    EXPECT_EQ(look(), QStringList("first"));
}

TEST_F(QUORImportWatchTest, TriesAgainForAWhileWhatWasInterrupted) {
    look();
    const struct {
        const char* file;
        bool isLate;
        int signal;
        int readings;
        QStringList reasons;
    } rows[] = {
        {"slow",
         true,
         0,
         5,
         {"slow: reading it took longer than 0 s; it will be tried again, 4 times at most",
          "slow: reading it took longer than 0 s; given up, it will not be tried again until it changes"}},
        {"killed",
         false,
         SIGKILL,
         5,
         {"killed: reading it was ended from outside (Killed); it will be tried again, 4 times at most",
          "killed: reading it was ended from outside (Killed); given up, it will not be tried again until "
          "it changes"}},
        {"crash", false, SIGABRT, 1, {"crash: reading it crashed (Aborted)"}},
        {"costly", false, SIGXCPU, 1, {"costly: reading it took more than 60 s of processor time"}},
    };
    for (const auto& row : rows) {
        limits.wall = row.isLate ? zero : QUORReaderProcess::Limits().wall;
        endOfReadings = row.signal;
        start();
        readings = 0;
        reported.clear();
        writeFile(path(row.file), volume + row.file);
        EXPECT_EQ(look(10), QStringList());
        EXPECT_EQ(readings, row.readings) << row.file;
        EXPECT_EQ(reported, row.reasons);
        EXPECT_FALSE(watch->isWaiting());
        endOfReadings = 0;
        EXPECT_EQ(look(), QStringList());
        EXPECT_TRUE(QFile::remove(path(row.file)));
    }
    // In between it succeeds.
    limits = {};
    endOfReadings = SIGKILL;
    start();
    writeFile(path("good"), volume);
    EXPECT_EQ(look(3), QStringList());
    endOfReadings = 0;
    EXPECT_EQ(look(), QStringList("good"));
    EXPECT_EQ(reported.size(), 2);
    // Not before its time.
    interrupted = std::chrono::hours(1);
    endOfReadings = SIGKILL;
    start();
    writeFile(path("later"), volume + "later");
    readings = 0;
    EXPECT_EQ(look(5), QStringList());
    EXPECT_EQ(readings, 1);
}

TEST_F(QUORImportWatchTest, ReadsNothingMoreWhenTheProgramEnds) {
    look();
    for (const char* name : {"a", "b"}) {
        writeFile(path(name), volume + name);
    }
    const EndBlocked block;
    const pid_t other = ::fork();
    if (other == 0) {
        ::usleep(100000);
        ::kill(::getppid(), SIGTERM);
        ::_exit(0);
    }
    endOfReadings = SIGSTOP; // hangs
    EXPECT_EQ(look(3), QStringList()) << "long before the wall-clock limit";
    block.take();
    ::waitpid(other, nullptr, 0);
    EXPECT_EQ(reported, QStringList());
    endOfReadings = 0;
    EXPECT_EQ(look(), QStringList({"a", "b"}));
}

TEST_F(QUORImportWatchTest, WritesNothingMoreWhenTheProgramEnds) {
    look();
    for (const char* name : {"0", "1", "2"}) {
        RadarFiles::writeOdimScan(path(name), 0.5, "DBZH", 300 * (name[0] - '0'));
    }
    const EndBlocked block;
    endsAtImport = true;
    EXPECT_EQ(look(), QStringList("0"));
    block.take();
    endsAtImport = false;
    diskFull = true;
    start();
    EXPECT_EQ(look(), QStringList()) << "what was left has not been recorded";
    EXPECT_EQ(reported, QStringList({"1: disk full", "2: disk full"}));
    diskFull = false;
    endsAtImport = true;
    EXPECT_EQ(look(), QStringList("1"));
    block.take();
}

TEST_F(QUORImportWatchTest, ImportsWhatStandsAloneAtOnceAndInItsTurn) {
    look();
    for (const char* name : {"a", "b", "c"}) {
        writeFile(path(name), volume + name);
    }
    readings = 0;
    EXPECT_EQ(look(1), QStringList({"a", "b", "c"}));
    EXPECT_EQ(readAtImport, (std::vector{1, 2, 3})) << "each before the next is read";

    pass = zero; // others have their turn before the first file
    start();
    writeFile(path("p"), volume + "p");
    EXPECT_EQ(look(2), QStringList());
    EXPECT_TRUE(watch->hasMore());
    QDir(in()).removeRecursively();
    EXPECT_EQ(look(1), QStringList());
    EXPECT_FALSE(watch->hasMore()) << "a folder that is away is not looked at without pause";
}

TEST_F(QUORImportWatchTest, JoinsWholeVolumesOfABacklogThatMemoryHasNoRoomFor) {
    look();
    for (int i = 0; i < 12; ++i) { // the sweep comes first in the name
        const char name[]{char('A' + i / 4), char('0' + i % 4), '\0'};
        RadarFiles::writeOdimScan(path(name), 0.5 + i / 4, "DBZH", 300 * (i % 4) + 20 * (i / 4));
    }
    pass = std::chrono::milliseconds(1);                  // a file or two
    for (const std::size_t room : {0U, 800U, 1U << 20}) { // of about 200 bytes a sweep
        memory = room;
        QFile::remove(folder.filePath("out/record"));
        start();
        watch->takeExisting();
        readings = 0;
        EXPECT_EQ(look(100), QStringList({"A0+B0+C0", "A1+B1+C1", "A2+B2+C2", "A3+B3+C3"})) << room;
        EXPECT_EQ(readings, room > 10000 ? 12 : 24) << room;
    }
    EXPECT_EQ(reported, QStringList());
}

TEST_F(QUORImportWatchTest, ReadsAgainUnderTheNameOfToday) {
    look();
    memory = 0;
    diskFull = true;
    start();
    const char* const names[] = {"s1", "s2", "s3", "s4"};
    for (int i = 0; i < 4; ++i) {
        RadarFiles::writeOdimScan(path(names[i]), 0.5 + i, "DBZH", 20 * i);
    }
    EXPECT_EQ(look(), QStringList());
    EXPECT_EQ(reported, QStringList("s1+s2+s3+s4: disk full"));
    EXPECT_TRUE(QFile::rename(path("s2"), path("renamed")));
    EXPECT_TRUE(QFile::remove(path("s3")));
    RadarFiles::writeOdimScan(path("s4"), 0.5, "DBZH", 600);
    diskFull = false;
    endOfReadings = SIGKILL;
    EXPECT_EQ(look(1), QStringList());
    endOfReadings = 0;
    reported.clear();
    EXPECT_EQ(look(3), QStringList({"s1+s2", "s4"}));
    EXPECT_EQ(reported, QStringList({"s3: gone or changed before its volume was made",
                                     "s4: gone or changed before its volume was made"}));
    reported.clear();
    start();
    EXPECT_EQ(look(), QStringList());
    EXPECT_EQ(reported, QStringList());
}

TEST_F(QUORImportWatchTest, GoesOnBesideWhatCannotBeWritten) {
    look();
    for (const std::size_t room : {std::size_t(0), memory}) {
        memory = room;
        refusesCapitals = true;
        start();
        reported.clear();
        for (int i = 0; i < 20; ++i) {
            const char name[]{char((i % 2 == 0 ? 'A' : 'a') + i), room > 0 ? '+' : '-', '\0'};
            writeFile(path(name), volume + name);
        }
        readings = 0;
        EXPECT_EQ(look(1).size(), 10) << "those of other radars";
        EXPECT_EQ(reported.size(), 10);
        EXPECT_EQ(readings, 20);
        EXPECT_FALSE(watch->hasMore());
        EXPECT_TRUE(watch->isWaiting());
        attempts = 0;
        EXPECT_EQ(look(1), QStringList());
        EXPECT_EQ(attempts, 8) << "no more in one round";
        EXPECT_EQ(readings, room > 0 ? 20 : 28) << "read again where memory had no room";
        refusesCapitals = false;
        EXPECT_EQ(look(1).size(), 10);
        EXPECT_FALSE(watch->isWaiting());
        EXPECT_EQ(reported.size(), 10);
    }
    again = std::chrono::hours(1); // not again before its time
    diskFull = true;
    start();
    writeFile(path("z"), volume + "z");
    attempts = 0;
    EXPECT_EQ(look(3), QStringList());
    EXPECT_EQ(attempts, 1);
}

TEST_F(QUORImportWatchTest, RefusesAHugeFileUnread) {
    look();
    QFile huge(path("huge"));
    ASSERT_TRUE(huge.open(QIODevice::WriteOnly));
    if (!huge.resize(qint64(1) << 40)) {
        GTEST_SKIP() << "no room for a file of holes";
    }
    huge.close();
    EXPECT_EQ(look(12), QStringList());
    EXPECT_EQ(reported, QStringList("huge: larger than 2 GiB"));
}

TEST_F(QUORImportWatchTest, RecordsNeitherWhatOptionsRefuseNorCutOffLines) {
    look();
    askedTooMuch = true;
    writeFile(path("named"), volume);
    EXPECT_EQ(look(), QStringList());
    EXPECT_TRUE(QFile::rename(path("named"), path("a")));
    EXPECT_EQ(look(), QStringList());
    EXPECT_EQ(reported, QStringList("named: too fine"));
    askedTooMuch = false;
    const QString record = folder.filePath("out/record");
    writeFile(record, readFile(record) + "0123\t12"); // the power went
    start();
    EXPECT_EQ(look(), QStringList("a"));
    start();
    EXPECT_EQ(look(), QStringList());
}

TEST_F(QUORImportWatchTest, HearsOfFilesThatAreComplete) {
    QUORFolderEvents events(in());
    EXPECT_TRUE(events.wait(std::chrono::milliseconds(1)).isEmpty());
    writeFile(path("closed"), "x");
    EXPECT_TRUE(QFile::rename(path("closed"), path("renamed")));
    EXPECT_TRUE(events.wait(std::chrono::seconds(10)).contains(QStringLiteral("renamed")));
    EXPECT_FALSE(events.isStopped());
    QDir(in()).removeRecursively();
    QDir().mkpath(in());
    events.wait(std::chrono::milliseconds(10)); // of the removal
    events.wait(std::chrono::milliseconds(1));  // watches the folder that took its place
    writeFile(path("again"), "x");
    EXPECT_TRUE(events.wait(std::chrono::seconds(10)).contains(QStringLiteral("again")));
}
