// SPDX-License-Identifier: MIT
#include "QUORSystem.h"

#include "QUORLog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

#include <cstring>
#include <pwd.h>
#include <vector>

namespace {

const QString PASSWORD_FILE = QStringLiteral("/etc/passwd");
constexpr qsizetype NAME_FIELD = 0;
constexpr qsizetype HOME_FIELD = 5;

QString findHome(const QList<QByteArray>& lines, const QByteArray& user) {
    for (const QByteArray& line : lines) {
        const QList<QByteArray> fields = line.split(':');
        if (fields.size() > HOME_FIELD && fields[NAME_FIELD] == user) {
            return QFile::decodeName(fields[HOME_FIELD]);
        }
    }
    return {};
}

// Users of a directory service have no line in the password file.
QString findHomeInDatabase(const QByteArray& user) {
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwnam_r(user.constData(), &entry, buffer.data(), buffer.size(), &found) != 0 ||
        found == nullptr) {
        return {};
    }
    return QFile::decodeName(found->pw_dir);
}

/// An installation that was moved has its packaged settings beside its programs.
QString installedSettingsDirectory() {
    const QString fromPrograms = QStringLiteral(QUOR_SETTINGS_FROM_PROGRAMS);
    if (!fromPrograms.isEmpty()) {
        const QDir programs = QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).dir();
        const QString moved = QDir::cleanPath(programs.filePath(fromPrograms));
        if (QFileInfo(moved).isDir()) {
            return moved;
        }
    }
    return QStringLiteral(QUOR_SETTINGS_DIRECTORY);
}

} // namespace

namespace QUORSystem {

QString getUserHomeDirectory(const QString& user) {
    QFile file(PASSWORD_FILE);
    if (!file.exists()) {
        return QStringLiteral("/");
    }
    QString fallback = QStringLiteral("/home/") + user;
    if (!file.open(QIODevice::ReadOnly)) {
        QUORLog::Instance().logWarning(
            QStringLiteral("Error reading /etc/passwd, using default home directory for user ") + user);
        QUORLog::Instance().logNotice(QStringLiteral("  - default home directory is ") + fallback);
        return fallback;
    }
    const QByteArray name = user.toLocal8Bit();
    QString home = findHome(file.readAll().split('\n'), name);
    if (home.isEmpty()) {
        home = findHomeInDatabase(name);
    }
    return home.isEmpty() ? fallback : home;
}

QString getUserSettingsDirectory(const QString& user) {
    return getUserHomeDirectory(user) + QStringLiteral("/.config/") + ORGANIZATION_NAME;
}

QString getSystemConfigurationDirectory() {
    for (const QString& directory : {QStringLiteral("/etc/sysconfig"), QStringLiteral("/etc/default")}) {
        if (QFileInfo::exists(directory)) {
            return directory;
        }
    }
    return {};
}

QString errorText(int error) {
    return QString::fromLocal8Bit(std::strerror(error));
}

QString expandHome(const QString& path) {
    if (path == QLatin1Char('~') || path.startsWith(QStringLiteral("~/"))) {
        return QDir::homePath() + path.mid(1);
    }
    return path;
}

QString toPath(const QString& text) {
    const QString path = expandHome(text);
    return path.startsWith(QLatin1Char(':')) ? QDir::currentPath() + QLatin1Char('/') + path : path;
}

QStringList getSystemSettingsFolders() {
    const QString named = QFile::decodeName(qgetenv("XDG_CONFIG_DIRS"));
    return named.isEmpty() ? QStringList{installedSettingsDirectory()}
                           : named.split(QLatin1Char(':'), Qt::SkipEmptyParts);
}

void useConfiguredSystemScope() {
    if (!qEnvironmentVariableIsEmpty("XDG_CONFIG_DIRS")) {
        return;
    }
    for (const QSettings::Format format : {QSettings::NativeFormat, QSettings::IniFormat}) {
        QSettings::setPath(format, QSettings::SystemScope, installedSettingsDirectory());
    }
}

} // namespace QUORSystem
