// SPDX-License-Identifier: MIT
#include "ScratchHome.h"

#include "QUORSystem.h"
#include "TestFiles.h"

#include <QCoreApplication>
#include <QFile>
#include <QSettings>

#include <utility>

namespace {

const ScratchHome* innermost = nullptr;

} // namespace

ScratchHome::ScratchHome() : _previous(std::exchange(innermost, this)) {
    enter();
    QCoreApplication::setOrganizationName(QUORSystem::ORGANIZATION_NAME);
    QCoreApplication::setOrganizationDomain(QUORSystem::ORGANIZATION_DOMAIN);
    QCoreApplication::setApplicationName(QStringLiteral("QUOR3D"));
}

ScratchHome::~ScratchHome() {
    innermost = _previous;
    if (innermost != nullptr) {
        innermost->enter();
    }
}

// The settings class looks at the environment once in a process, so it is told as well.
void ScratchHome::enter() const {
    const QByteArray home = _dir.path().toLocal8Bit();
    qputenv("HOME", home);
    qputenv("XDG_CONFIG_HOME", home + "/.config");
    qputenv("XDG_CONFIG_DIRS", home + "/xdg");
    qputenv("XDG_RUNTIME_DIR", home);
    qunsetenv("QUOR3D_BG_SETTINGS");
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope,
                       _dir.path() + QStringLiteral("/.config"));
    QSettings::setPath(QSettings::NativeFormat, QSettings::SystemScope, _dir.path() + QStringLiteral("/xdg"));
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
