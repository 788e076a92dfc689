// SPDX-License-Identifier: MIT
#include "QUORApplication.h"
#include "QUORLiveDataThread.h"
#include "QUORLog.h"
#include "QUORSystem.h"
#include "QUORVersion.h"

#include <QDir>

int main(int argc, char** argv) {
    QUORSystem::useConfiguredSystemScope();
    QUORApplication application(argc, argv);
    application.addOption(QStringLiteral("daemon"), QStringLiteral("run program in the background"));
    application.setPIDFilePath(QStringLiteral("/var/run/quor3dd.pid"));
    application.setVersion(QString::fromLatin1(QUOR_VERSION));
    QCoreApplication::setApplicationName(QStringLiteral("QUOR3D"));
    if (application.init() < 0) {
        return 0;
    }
    QUORLog& log = QUORLog::Instance();
    log.logDebug(QStringLiteral("Daemon home directory: ") + QDir::homePath());
    log.logDebug(QStringLiteral("Daemon working directory: ") + QDir::currentPath());
    const QUORLiveDataThread thread;
    return QCoreApplication::exec();
}
