// SPDX-License-Identifier: MIT
#include "QUORServiceMonitor.h"

#include "QUORDataStore.h"
#include "QUORFilePublisher.h"
#include "QUORLog.h"
#include "QUORLogOnce.h"
#include "QUORProductSurvey.h"
#include "QUORSystem.h"

#include <QDir>
#include <QFile>
#include <QTimer>

#include <chrono>
#include <cstdint>
#include <systemd/sd-daemon.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr std::chrono::minutes UPDATE_INTERVAL(1);

void publish(const QString& path, const QByteArray& content) {
    if (path.isEmpty()) {
        return;
    }
    const QString subject = QStringLiteral("publish ") + path;
    QUORFilePublisher publisher(path);
    QString error = publisher.getError();
    if (publisher.isReady()) {
        QFile file(publisher.getTemporaryPath());
        const bool isWhole =
            file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush();
        error = isWhole ? QString() : file.errorString();
        if (isWhole && !publisher.publish(false)) {
            error = publisher.getError();
        }
    }
    if (error.isEmpty()) {
        QUORLogOnce::forget(subject);
    } else {
        QUORLogOnce::logError(subject, QStringLiteral("Not written: ") + path + QStringLiteral(": ") + error);
    }
}

void notifySupervisor(const QString& state) {
    ::sd_notify(0, state.toUtf8().constData());
}

template <class Tree>
QUORServiceReport::Directory describe(const QString& path, const Tree& tree) {
    return {path, tree ? tree->countFiles() : 0};
}

/// Products are not looked for in folders; an operator who named the one above them sees nothing at all.
void explainEmpty(const QUORServiceReport::Directory& directory, const char* key) {
    const QString subject = QStringLiteral("products below ") + QLatin1String(key);
    const QString folder = directory.path.isEmpty() || directory.products > 0
                               ? QString()
                               : QUORProductSurvey::findProductFolder(directory.path);
    if (folder.isEmpty()) {
        QUORLogOnce::forget(subject);
    } else {
        QUORLogOnce::logError(
            subject, directory.path + QStringLiteral(" holds no products, but a folder of it does; write ") +
                         QLatin1String(key) + QLatin1Char('=') + folder);
    }
}

QString nameDirectory(const QUORServiceReport::Directory& directory) {
    return directory.path.isEmpty() ? QStringLiteral("nothing")
                                    : directory.path + QStringLiteral(" (") +
                                          QString::number(directory.products) + QStringLiteral(" products)");
}

} // namespace

QUORServiceMonitor::QUORServiceMonitor(std::shared_ptr<const QUORDataStore> store, const QString& version,
                                       Files files)
    : _store(std::move(store)), _version(version), _files(std::move(files)) {
    connect(&QUORActivity::Instance(), &QUORActivity::jobEnded, this, &QUORServiceMonitor::write,
            Qt::QueuedConnection);
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &QUORServiceMonitor::update);
    timer->start(UPDATE_INTERVAL);
    const QUORServiceReport report = makeReport();
    QUORLog::Instance().logNotice(
        QStringLiteral("Watching 3D products in ") + nameDirectory(report.directory3d) +
        QStringLiteral(", 2D products in ") + nameDirectory(report.directory2d) +
        QStringLiteral("; writing images to ") + report.output + QStringLiteral(" as ") + report.imageFormat +
        QStringLiteral(" of ") + QString::number(report.width) + QStringLiteral(" x ") +
        QString::number(report.height) + QStringLiteral(" pixels"));
    look();
    write();
    startWatchdog();
    notifySupervisor(QStringLiteral("READY=1"));
}

QUORServiceMonitor::~QUORServiceMonitor() {
    notifySupervisor(QStringLiteral("STOPPING=1"));
}

QString QUORServiceMonitor::getDefaultStatusFile() {
    const QString folder = QFile::decodeName(qgetenv("RUNTIME_DIRECTORY")).section(QLatin1Char(':'), 0, 0);
    return (folder.isEmpty() ? QUORSystem::expandHome(QStringLiteral("~/.quor3d")) : folder) +
           QStringLiteral("/status.json");
}

void QUORServiceMonitor::startWatchdog() {
    std::uint64_t limit = 0; // microseconds
    if (::sd_watchdog_enabled(0, &limit) <= 0) {
        return;
    }
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &QUORServiceMonitor::feedWatchdog);
    timer->start(std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::microseconds(limit)) / 3);
    feedWatchdog();
}

void QUORServiceMonitor::feedWatchdog() {
    const double seconds = QUORActivity::Instance().secondsInJob();
    const bool wasStuck = std::exchange(_isStuck, seconds > _settings.getJobLimit());
    if (!_isStuck) {
        notifySupervisor(QStringLiteral("WATCHDOG=1"));
    } else if (!wasStuck) {
        QUORLog::Instance().logError(QStringLiteral("The job is stuck for ") + QString::number(int(seconds)) +
                                     QStringLiteral(" seconds, the watchdog is no longer fed: ") +
                                     QUORActivity::Instance().getSnapshot().job);
    }
}

void QUORServiceMonitor::update() {
    _settings.load();
    look();
    write();
}

void QUORServiceMonitor::look() {
    _settingsWatch.look();
    const QUORServiceReport report = makeReport();
    explainEmpty(report.directory3d, "data3d");
    explainEmpty(report.directory2d, "data2d");
}

void QUORServiceMonitor::write() {
    const QUORServiceReport report = makeReport();
    publish(_files.metrics.isEmpty() ? _settings.getMetricsFile() : _files.metrics, report.toMetrics());
    publish(_files.status, report.toStatus());
    notifySupervisor(QStringLiteral("STATUS=") + report.toLine());
}

QUORServiceReport QUORServiceMonitor::makeReport() const {
    QUORServiceReport report;
    report.activity = QUORActivity::Instance().getSnapshot();
    report.version = _version;
    report.pid = ::getpid();
    report.directory3d = describe(_store->getPath3d(), _store->get3DTop());
    report.directory2d = describe(_store->getPath2d(), _store->get2DTop());
    report.output = QDir(_settings.getDirectory()).absolutePath();
    report.imageFormat = _settings.getOutputFormatString();
    report.width = _settings.getWidth();
    report.height = _settings.getHeight();
    report.readMemory();
    return report;
}
