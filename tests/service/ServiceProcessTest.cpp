// SPDX-License-Identifier: MIT
#include "ServiceProcess.h"
#include "QUORVersion.h"

#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <csignal>
#include <unistd.h>

namespace {

std::string text(const QString& s) {
    return s.toStdString();
}

constexpr const char* HELP =
    "Usage: quor3dd [options]\nOptions:\n"
    "\t--daemon\trun program in the background\n"
    "\t--help\t\tdisplay this help and exit\n"
    "\t--language\tlanguage='lang_[country]', lang is a two letter language code and \n"
    "\t\t\t country is an optinal country code\n"
    "\t--logfile\tlogfile='filename', name of the log file, only for background processes\n"
    "\t--loglevel\tloglevel='number', adjust logging level, number can be\n"
    "\t\t\t0 error (default)\n\t\t\t1 warning\n\t\t\t2 notice\n\t\t\t3 debug\n"
    "\t--metrics\tmetrics='filename', file of the metrics, in place of the setting\n"
    "\t--status\tstatus='filename', file of the status, by default in the run-time directory\n"
    "\t--version\tdisplay program version and exit\n";

const std::string VERSION_TEXT = std::string("Version: ") + QUOR_VERSION + "\n";

} // namespace

TEST(ServiceProcessTest, OptionsThatEndTheProgram) {
    const struct {
        const char* arguments;
        std::string output;
    } rows[] = {{"--help", HELP},
                {"-help", HELP},
                {"--version --help", HELP},
                {"word --version", VERSION_TEXT},
                {"--version=5", VERSION_TEXT},
                {"--logLevel=3", "Invalid option: log\n"},
                {"--x --help --y_z=1", "Invalid option: x\nInvalid option: y_z\n"},
                {"--", "Invalid option: \n"},
                {"--style=fusion -reverse --platform nosuch",
                 "Invalid option: style\nInvalid option: reverse\n"
                 "Invalid option: platform\n"}};
    ServiceProcess service;
    for (const auto& row : rows) {
        const auto result = service.run(QString::fromLatin1(row.arguments).split(QLatin1Char(' ')));
        EXPECT_EQ(text(result.output), row.output) << row.arguments;
        EXPECT_EQ(result.exitCode, 0) << row.arguments;
    }
}

TEST(ServiceProcessTest, TranslationsThatCannotBeFoundAreErrors) {
    ServiceProcess service;
    service.write(QStringLiteral("words.txt"), "no translation");
    const auto result = service.run({QStringLiteral("--language=words.txt"), QStringLiteral("--help")});
    EXPECT_EQ(text(result.errors), "quor3dd starting\nE: Invalid translation file: words.txt\n"
                                   "E: Could not locate application translation: words.txt\n"
                                   "E: Could not locate Qt translation: words.txt\n");
}

TEST(ServiceProcessTest, LogLevelsAreClampedAndTheLastValueCounts) {
    const struct {
        const char* arguments;
        bool notices, debug;
    } rows[] = {{"--loglevel=7", true, true},
                {"--loglevel=2", true, false},
                {"--loglevel=-2", false, false},
                {"--loglevel=x", false, false},
                {"--loglevel", false, false},
                {"--loglevel=0 --loglevel=2", true, false},
                {"--loglevel=3 --loglevel=1", false, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.arguments);
        ServiceProcess service;
        ASSERT_TRUE(service.startDaemon(QString::fromLatin1(row.arguments).split(QLatin1Char(' '))));
        EXPECT_EQ(service.terminate(), 0);
        EXPECT_EQ(service.log().contains(QStringLiteral(" N: Termination signal received - quitting...\n")),
                  row.notices);
        EXPECT_EQ(service.log().contains(QStringLiteral(" D: ")), row.debug);
    }
}

TEST(ServiceProcessTest, ADaemonDetachesAndFollowsItsSignals) {
    ServiceProcess service;
    // The log's own file and the first sockets must not take the numbers of the closed descriptors.
    for (const QString& redirections : {QString(), QStringLiteral("0<&- 1>&- 2>&-")}) {
        ASSERT_TRUE(service.startDaemon({QStringLiteral("--loglevel=3")}, redirections));
        EXPECT_EQ(service.read(QStringLiteral("pid")), QByteArray::number(service.daemonPid()) + '\n');
        const QString process = QStringLiteral("/proc/%1/").arg(service.daemonPid());
        for (int descriptor = 0; descriptor <= 2; ++descriptor) {
            EXPECT_EQ(text(QFile::symLinkTarget(process + QStringLiteral("fd/%1").arg(descriptor))),
                      "/dev/null");
        }
        EXPECT_EQ(QFile::symLinkTarget(process + QStringLiteral("cwd")),
                  QFileInfo(service.path(QStringLiteral("pid"))).path());
        ASSERT_TRUE(service.waitForLog(QStringLiteral("installing signal handlers")));
        service.signal(SIGHUP);
        EXPECT_TRUE(service.waitForLog(QStringLiteral(" N: HANGUP signal received\n")));
        ASSERT_TRUE(QFile::rename(service.path(QStringLiteral("log")), service.path(QStringLiteral("old"))));
        service.signal(SIGHUP);
        EXPECT_TRUE(service.waitForLog(QStringLiteral(" N: HANGUP signal received\n")));
        EXPECT_EQ(service.terminate(), 0);
        ASSERT_TRUE(QFile::remove(service.path(QStringLiteral("log"))) &&
                    QFile::rename(service.path(QStringLiteral("old")), service.path(QStringLiteral("log"))));
        EXPECT_TRUE(service.log().contains(QStringLiteral("quor3dd starting\n")));
        QFile::remove(service.path(QStringLiteral("log")));
    }
}

TEST(ServiceProcessTest, APidFileIsHeldByOneDaemonAndGoesWithIt) {
    ServiceProcess service;
    const QString file = service.path(QStringLiteral("pid"));
    service.write(QStringLiteral("pid"), "99999999 of a daemon that was killed\n");
    ASSERT_TRUE(service.startDaemon());
    const QByteArray pid = QByteArray::number(service.daemonPid());
    const auto second = service.run(
        {QStringLiteral("--daemon"), QStringLiteral("--logfile=") + service.path(QStringLiteral("log2"))});
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_EQ(text(second.errors), "Not started: another service works under the pid-file " + text(file) +
                                       ", process " + pid.toStdString() + "\n");
    EXPECT_TRUE(service.read(QStringLiteral("log2")).contains(" E: Not started: "));
    EXPECT_EQ(service.read(QStringLiteral("pid")), pid + '\n');
    EXPECT_EQ(service.terminate(), 0);
    EXPECT_FALSE(QFile::exists(file));

    ASSERT_TRUE(service.startDaemon());
    ASSERT_TRUE(QFile::remove(file));
    service.write(QStringLiteral("pid"), "of somebody else");
    EXPECT_EQ(service.terminate(), 0);
    EXPECT_EQ(service.read(QStringLiteral("pid")), "of somebody else");
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(ServiceProcessTest, AFatalSignalLeavesALine) {
    ServiceProcess service;
    ASSERT_TRUE(service.startDaemon());
    service.signal(SIGABRT);
    EXPECT_EQ(service.waitForEnd(), -SIGABRT);
    EXPECT_TRUE(service.log().contains(QStringLiteral("E: The service ends by signal 6")));
}
#endif

TEST(ServiceProcessTest, AReaderOfTheLogThatHasGoneStopsNothing) {
    int pipe[2] = {-1, -1};
    ASSERT_EQ(::pipe(pipe), 0);
    ::close(pipe[0]);
    ServiceProcess service;
    ASSERT_TRUE(service.startForeground({QStringLiteral("--version")}, pipe[1]));
    ::close(pipe[1]);
    EXPECT_EQ(service.waitForEnd(), 0);
}

TEST(ServiceProcessTest, ThePidFileFollowsNoLinkAndIsReadableByAll) {
    ServiceProcess service;
    service.write(QStringLiteral("precious"), "keep");
    QFile::link(service.path(QStringLiteral("precious")), service.path(QStringLiteral("link")));
    service.environment().insert(QStringLiteral("PIDFILE"), service.path(QStringLiteral("link")));
    ASSERT_TRUE(service.startDaemon({}, QStringLiteral("2>") + service.path(QStringLiteral("terminal"))));
    EXPECT_EQ(service.terminate(), 0);
    EXPECT_EQ(service.read(QStringLiteral("precious")), "keep");
    EXPECT_TRUE(service.log().contains(QStringLiteral("E: Opening pid-file failed: ")));
    EXPECT_TRUE(service.read(QStringLiteral("terminal")).startsWith("Opening pid-file failed: "));

    service.environment().insert(QStringLiteral("PIDFILE"), QStringLiteral("pid"));
    ASSERT_TRUE(service.startDaemon());
    EXPECT_EQ(QFileInfo(service.path(QStringLiteral("pid"))).permissions() & 0x777,
              QFile::Permissions(0x644));
    EXPECT_EQ(service.terminate(), 0);
}
