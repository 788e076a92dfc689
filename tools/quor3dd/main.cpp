// SPDX-License-Identifier: MIT
#include "QUORApplication.h"
#include "QUORLiveDataThread.h"
#include "QUORLog.h"
#include "QUORProcessSetup.h"
#include "QUORSystem.h"
#include "QUORVersion.h"

#include <QDir>

#include <exception>

int main(int argc, char** argv) {
    QUORSystem::useConfiguredSystemScope();
    QUORApplication application(argc, argv);
    application.addOption(QStringLiteral("daemon"), QStringLiteral("run program in the background"));
    application.setPIDFilePath(QStringLiteral("/var/run/quor3dd.pid"));
    application.setVersion(QString::fromLatin1(QUOR_VERSION));
    QCoreApplication::setApplicationName(QStringLiteral("QUOR3D"));
    if (application.init() < 0) {
        return application.exitStatus();
    }
    QUORLog& log = QUORLog::Instance();
    log.logDebug(QStringLiteral("Daemon home directory: ") + QDir::homePath());
    log.logDebug(QStringLiteral("Daemon working directory: ") + QDir::currentPath());
    try {
        QUORProcessSetup::requireAddressSpace();
        const QUORLiveDataThread thread;
        application.confirmStart();
        return QCoreApplication::exec();
    } catch (const std::exception& error) {
        log.logError(QStringLiteral("The service cannot start: ") + QString::fromLocal8Bit(error.what()));
        return 1;
    }
}
