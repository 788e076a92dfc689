// SPDX-License-Identifier: MIT
#include "QUORServiceMonitor.h"

#include "LogCapture.h"
#include "QUORActivity.h"
#include "QUORDataStore.h"
#include "ScratchHome.h"
#include "ServiceFolders.h"
#include "TestFiles.h"
#include "WaitUntil.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

/// In the place of systemd: collects what it is told.
class Supervisor {
public:
    explicit Supervisor(const QString& path) : _socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0)) {
        const QByteArray name = QFile::encodeName(path);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::copy(name.cbegin(), name.cend(), address.sun_path);
        EXPECT_EQ(::bind(_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        qputenv("NOTIFY_SOCKET", name);
        qputenv("WATCHDOG_USEC", "300000");
    }
    ~Supervisor() {
        ::close(_socket);
        qunsetenv("NOTIFY_SOCKET");
        qunsetenv("WATCHDOG_USEC");
    }
    /// What it was told since the last call.
    QByteArray take() {
        QByteArray all;
        std::array<char, 4096> text{};
        for (ssize_t size = 0; (size = ::read(_socket, text.data(), text.size())) > 0;) {
            all += QByteArray(text.data(), qsizetype(size)) + '\n';
        }
        return all;
    }
    bool waitFor(const QByteArray& text) {
        QByteArray all;
        return waitUntil([&] { return (all += take()).contains(text); }, 10000);
    }

private:
    int _socket;
};

QUORServiceReport makeReport() {
    QUORServiceReport report;
    report.activity = QUORActivity::Instance().getSnapshot();
    report.version = QStringLiteral("1.2.3");
    report.directory3d = {QStringLiteral("/3d"), 7};
    report.readMemory();
    return report;
}

void runJob(const QString& site, QUORActivity::Outcome outcome) {
    QUORActivity& activity = QUORActivity::Instance();
    activity.arrived(site);
    activity.beginJob(site);
    activity.describeJob(site, QStringLiteral("Z"), QDateTime::currentDateTimeUtc().addSecs(-120));
    activity.setOutcome(outcome, QStringLiteral("/out/") + site);
    activity.endJob();
}

} // namespace

TEST(QUORServiceReportTest, MetricsCountWhatBecameOfTheJobs) {
    QUORActivity::Instance().reset();
    using Outcome = QUORActivity::Outcome;
    for (const Outcome outcome : {Outcome::Written, Outcome::Written, Outcome::NotWritten, Outcome::Waits2D,
                                  Outcome::Gone, Outcome::NotBuilt}) {
        runJob(QString::fromUtf8("A\"B\\C é"), outcome);
    }
    const QByteArray text = makeReport().toMetrics();
    for (const char* line :
         {"quor3dd_build_info{version=\"1.2.3\"} 1", "quor3dd_images_written_total 2",
          "quor3dd_images_failed_total{reason=\"not_written\"} 1",
          "quor3dd_images_failed_total{reason=\"not_drawn\"} 0",
          "quor3dd_files_ignored_total{reason=\"no_2d_product\"} 1", "quor3dd_products{kind=\"3d\"} 7",
          "quor3dd_stage_duration_seconds_count{stage=\"job\"} 2",
          "quor3dd_image_lateness_seconds_bucket{since=\"product\",le=\"60\"} 0",
          "quor3dd_image_lateness_seconds_bucket{since=\"product\",le=\"300\"} 2",
          "quor3dd_image_lateness_seconds_bucket{since=\"arrival\",le=\"+Inf\"} 2"}) {
        EXPECT_TRUE(text.contains(QByteArray("\n") + line + '\n')) << line << text.toStdString();
    }
    EXPECT_TRUE(text.contains("{site=\"A\\\"B\\\\C é\",configuration=\"Z\"} "));
    if (const QString promtool = QStandardPaths::findExecutable(QStringLiteral("promtool"));
        !promtool.isEmpty()) {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(promtool, {QStringLiteral("check"), QStringLiteral("metrics")});
        process.write(text);
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished());
        EXPECT_EQ(process.readAll(), QByteArray());
        EXPECT_EQ(process.exitCode(), 0);
    }
}

TEST(QUORServiceReportTest, SitesWithoutNumberAreCountedAsOther) {
    QUORActivity::Instance().reset();
    for (int i = 0; i < 2 * QUORActivity::MAXIMUM_SITES; ++i) {
        runJob(QString::number(i), QUORActivity::Outcome::Written);
    }
    const QByteArray text = makeReport().toMetrics();
    EXPECT_EQ(text.count("quor3dd_last_image_time_seconds{"), QUORActivity::MAXIMUM_SITES + 1);
    EXPECT_TRUE(text.contains("{site=\"other\",configuration=\"other\"} "));
}

TEST(QUORServiceMonitorTest, TellsASupervisorAndFeedsItsWatchdogWhileNoJobIsStuck) {
    const ScratchHome home;
    const QTemporaryDir dir;
    const ServiceFolders folders(dir.path());
    folders.drop(ServiceFolders::storm());
    writeFile(dir.filePath(QStringLiteral("bg.conf")), folders.backgroundSettings("joblimit=1\n"));
    qputenv("QUOR3D_BG_SETTINGS", QFile::encodeName(dir.filePath(QStringLiteral("bg.conf"))));
    QUORActivity& activity = QUORActivity::Instance();
    activity.reset();
    const LogCapture log;
    Supervisor supervisor(dir.filePath(QStringLiteral("notify")));
    const auto store = std::make_shared<QUORDataStore>(nullptr);
    store->setDirectories(folders.path(QStringLiteral("3d")), {}, {}, dir.path());
    const QString metrics = dir.filePath(QStringLiteral("m.prom"));
    const QString status = dir.filePath(QStringLiteral("s.json"));
    {
        const QUORServiceMonitor monitor(store, QStringLiteral("1"), {metrics, status});
        EXPECT_TRUE(supervisor.waitFor("READY=1"));
        EXPECT_TRUE(
            log.contains(QStringLiteral("N: Watching 3D products in ") + store->getPath3d() +
                         QStringLiteral(" (1 products), 2D products in nothing; writing images to ")));
        EXPECT_TRUE(supervisor.waitFor("WATCHDOG=1"));

        activity.beginJob(QStringLiteral("/3d/stuck"));
        EXPECT_TRUE(
            waitUntil([&] { return log.contains(QStringLiteral("E: The job is stuck for ")); }, 10000));
        supervisor.take();
        waitUntil([] { return false; }, 500);
        EXPECT_EQ(supervisor.take(), QByteArray());
        activity.setOutcome(QUORActivity::Outcome::Written, QStringLiteral("/out/x.png"));
        activity.endJob();
        EXPECT_TRUE(supervisor.waitFor("WATCHDOG=1"));
        EXPECT_TRUE(waitUntil(
            [&] { return readFile(metrics).contains("\nquor3dd_images_written_total 1\n"); }, 10000));
        const QJsonObject object = QJsonDocument::fromJson(readFile(status)).object();
        EXPECT_EQ(object[QStringLiteral("written")].toInt(), 1);
        EXPECT_EQ(object[QStringLiteral("directory3d")][QStringLiteral("products")].toInt(), 1);
        EXPECT_EQ(object[QStringLiteral("lastImage")][QStringLiteral("file")].toString(),
                  QStringLiteral("/out/x.png"));
        EXPECT_EQ(QFile::permissions(status) & 0x777, QFile::Permissions(0x644));
    }
    EXPECT_TRUE(supervisor.waitFor("STOPPING=1"));
    qunsetenv("QUOR3D_BG_SETTINGS");
}
