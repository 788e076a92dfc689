// SPDX-License-Identifier: MIT
#include "QUORImportWatch.h"

#include "QUORFolderEvents.h"
#include "QUORImportError.h"
#include "RadarFiles.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

namespace {

class QUORImportWatchTest : public testing::Test {
protected:
    QUORImportWatchTest() {
        QDir().mkpath(in());
        start();
    }

    void start() {
        watch = std::make_unique<QUORImportWatch>(
            in(), folder.filePath("out/record"), 600,
            QUORImportWatch::Timing{.settle = zero, .quiet = quiet, .again = zero, .reading = limits},
            [this](const QUORRadarData&, const QStringList& files) {
                if (diskFull) {
                    throw QUORWriteError(QStringLiteral("disk full"));
                }
                if (askedTooMuch) {
                    throw QUORRequestError(QStringLiteral("too fine"));
                }
                imported.append(files.join(QLatin1Char('+')));
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
    bool diskFull = false;
    bool askedTooMuch = false;
    QUORReaderProcess::Limits limits;
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

TEST_F(QUORImportWatchTest, TriesOnceWhatEndsTheReader) {
    look();
    limits.wall = zero;
    start();
    writeFile(path("slow"), volume);
    EXPECT_EQ(look(1), QStringList());
    ASSERT_EQ(reported.size(), 1);
    EXPECT_TRUE(reported[0].startsWith("slow: reading it took longer"));
    EXPECT_FALSE(watch->isWaiting());
}

TEST_F(QUORImportWatchTest, RecordsNeitherWhatOptionsRefuseNorCutOffLines) {
    look();
    askedTooMuch = true;
    writeFile(path("a"), volume);
    EXPECT_EQ(look(), QStringList());
    EXPECT_EQ(reported, QStringList("a: too fine"));
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
