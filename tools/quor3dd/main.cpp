// SPDX-License-Identifier: MIT
#include "QUORApplication.h"
#include "QUORLiveDataThread.h"
#include "QUORLog.h"
#include "QUORProcessSetup.h"
#include "QUORServiceMonitor.h"
#include "QUORSystem.h"
#include "QUORVersion.h"

#include <QDir>

#include <exception>

namespace {

const QString METRICS = QStringLiteral("metrics");
const QString STATUS = QStringLiteral("status");

/// Before a daemon changes its directory.
QUORServiceMonitor::Files findFiles(const QUORApplication& application) {
    QString metrics;
    QString status;
    application.optionValue(METRICS, metrics, {});
    application.optionValue(STATUS, status, QUORServiceMonitor::getDefaultStatusFile());
    return {metrics.isEmpty() ? metrics : QDir::current().absoluteFilePath(QUORSystem::toPath(metrics)),
            QDir::current().absoluteFilePath(QUORSystem::toPath(status))};
}

} // namespace

int main(int argc, char** argv) {
    QUORSystem::useConfiguredSystemScope();
    QUORApplication application(argc, argv);
    application.addOption(QStringLiteral("daemon"), QStringLiteral("run program in the background"));
    application.addOption(METRICS, QStringLiteral("metrics='filename', file of the metrics, in place of the "
                                                  "setting"));
    application.addOption(STATUS, QStringLiteral("status='filename', file of the status, by default in the "
                                                 "run-time directory"));
    application.setPIDFilePath(QStringLiteral("/var/run/quor3dd.pid"));
    application.setVersion(QString::fromLatin1(QUOR_VERSION));
    QCoreApplication::setApplicationName(QStringLiteral("QUOR3D"));
    const QUORServiceMonitor::Files files = findFiles(application);
    if (application.init() < 0) {
        return application.exitStatus();
    }
    QUORLog& log = QUORLog::Instance();
    log.logDebug(QStringLiteral("Daemon home directory: ") + QDir::homePath());
    log.logDebug(QStringLiteral("Daemon working directory: ") + QDir::currentPath());
    try {
        QUORProcessSetup::requireAddressSpace();
        const QUORLiveDataThread thread;
        const QUORServiceMonitor monitor(thread.getDataStore(), application.getVersion(), files);
        application.confirmStart();
        return QCoreApplication::exec();
    } catch (const std::exception& error) {
        log.logError(QStringLiteral("The service cannot start: ") + QString::fromLocal8Bit(error.what()));
        return 1;
    }
}
