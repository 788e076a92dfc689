// SPDX-License-Identifier: MIT
#include "QUORLog.h"

#include "LogCapture.h"
#include "TestFiles.h"

#include <QDateTime>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

void logAllLevels() {
    QUORLog& log = QUORLog::Instance();
    log.logError(QStringLiteral("one"));
    log.logWarning(QStringLiteral("two"));
    log.logNotice(QStringLiteral("three"));
    log.logDebug(QStringLiteral("four"));
}

} // namespace

TEST(QUORLogTest, LinesUpToTheLevelAppearWithTheirPrefixes) {
    const QStringList all{QStringLiteral("E: one"), QStringLiteral("W: two"), QStringLiteral("N: three"),
                          QStringLiteral("D: four")};
    const struct {
        int level;
        qsizetype lines;
    } rows[] = {{0, 1}, {1, 2}, {2, 3}, {3, 4}, {9, 4}, {-4, 1}};
    LogCapture capture;
    for (const auto& row : rows) {
        QUORLog::Instance().setLevel(row.level);
        logAllLevels();
        EXPECT_EQ(capture.lines(), all.mid(0, row.lines)) << row.level;
        capture.clear();
    }
}

TEST(QUORLogTest, FileLinesAreAppendedWithATimestampAndConsoleLinesHaveNone) {
    const LogCapture restoreAfterwards;
    const QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("x.log"));
    QUORLog& log = QUORLog::Instance();
    for (const QString& text : {QStringLiteral("a"), QStringLiteral("b")}) {
        log.logInit(QStringLiteral("prog"), name);
        log.logError(text);
    }
    const QList<QByteArray> lines = readFile(name).split('\n');
    ASSERT_EQ(lines.size(), 5);
    EXPECT_TRUE(lines[0].endsWith(" prog starting"));
    EXPECT_TRUE(lines[1].endsWith(" E: a"));
    EXPECT_TRUE(lines[3].endsWith(" E: b"));
    EXPECT_TRUE(QDateTime::fromString(QString::fromUtf8(lines[1].chopped(5)), Qt::TextDate).isValid());

    testing::internal::CaptureStderr();
    log.logInit(QStringLiteral("prog"), {});
    log.logError(QStringLiteral("a\nb"));
    log.logInit(QStringLiteral("prog"), QStringLiteral("/no/such/dir/log"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "prog starting\nE: a_b\n"
              "E: ERROR 0 WHEN OPENING LOG FILE /no/such/dir/log, LOGGING TO CONSOLE\nprog starting\n");
}

TEST(QUORLogTest, LinesForTheJournalBeginWithTheirPriority) {
    LogCapture restoreAfterwards;
    testing::internal::CaptureStderr();
    struct stat info {};
    ASSERT_EQ(::fstat(STDERR_FILENO, &info), 0);
    for (const ino_t inode : {info.st_ino, info.st_ino + 1}) {
        qputenv("JOURNAL_STREAM",
                QByteArray::number(qulonglong(info.st_dev)) + ':' + QByteArray::number(qulonglong(inode)));
        QUORLog::Instance().logOpen({});
        logAllLevels();
    }
    qunsetenv("JOURNAL_STREAM");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "<3>E: one\n<4>W: two\n<5>N: three\n<7>D: four\nE: one\nW: two\nN: three\nD: four\n");
}

TEST(QUORLogTest, AFullDiskLosesOnlyTheLinesOfThatTime) {
    const LogCapture restoreAfterwards;
    const QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("x.log"));
    QUORLog::Instance().logOpen(name);
    QUORLog::Instance().logError(QStringLiteral("before"));
    {
        const ResourceLimit tight(RLIMIT_FSIZE, rlim_t(readFile(name).size() + 10));
        QUORLog::Instance().logError(QStringLiteral("cut"));
        QUORLog::Instance().logError(QStringLiteral("lost"));
    }
    QUORLog::Instance().logError(QStringLiteral("after"));
    const QList<QByteArray> lines = readFile(name).split('\n');
    ASSERT_EQ(lines.size(), 4);
    EXPECT_TRUE(lines[0].endsWith("E: before"));
    EXPECT_EQ(lines[1].size(), 10);
    EXPECT_TRUE(lines[2].endsWith("E: after"));
}

TEST(QUORLogTest, LinesOfManyThreadsStayWhole) {
    const LogCapture capture;
    const QString text(200, QLatin1Char('x'));
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int line = 0; line < 250; ++line) {
                QUORLog::Instance().logNotice(text);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(capture.lines(), QStringList(1000, QStringLiteral("N: ") + text));
}
