// SPDX-License-Identifier: MIT
#include "ScratchHome.h"

#include "QUORSystem.h"
#include "TestFiles.h"

#include <QCoreApplication>
#include <QFile>
#include <QSettings>

ScratchHome::ScratchHome() {
    const QByteArray home = _dir.path().toLocal8Bit();
    qputenv("HOME", home);
    qputenv("XDG_CONFIG_HOME", home + "/.config");
    qputenv("XDG_CONFIG_DIRS", home + "/xdg");
    qputenv("XDG_RUNTIME_DIR", home);
    qunsetenv("QUOR3D_BG_SETTINGS");
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope,
                       _dir.path() + QStringLiteral("/.config"));
    QCoreApplication::setOrganizationName(QUORSystem::ORGANIZATION_NAME);
    QCoreApplication::setOrganizationDomain(QUORSystem::ORGANIZATION_DOMAIN);
    QCoreApplication::setApplicationName(QStringLiteral("QUOR3D"));
}

QString ScratchHome::settingsDirectory() {
    return QFile::decodeName(qgetenv("HOME")) + QStringLiteral("/.config/QUOR");
}

void ScratchHome::writeSettings(const QString& name, const QString& text) {
    writeFile(settingsDirectory() + QLatin1Char('/') + name, text.toUtf8());
}

void ScratchHome::writePackaged(const QString& name, const QString& text) {
    writeFile(QFile::decodeName(qgetenv("XDG_CONFIG_DIRS")) + QStringLiteral("/QUOR/") + name, text.toUtf8());
}

void ScratchHome::removeSettings(const QString& name) {
    QFile::remove(settingsDirectory() + QLatin1Char('/') + name);
}
