// SPDX-License-Identifier: MIT
#include "FuzzScratch.h"

#include "QUORSystem.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

#include <cstdio>
#include <cstdlib>

namespace {

/// More than the settings layer keeps of files that nobody uses.
constexpr unsigned HOMES = 64;
constexpr qint64 SETTLED_S = 3600;

} // namespace

FuzzScratch& FuzzScratch::instance() {
    static FuzzScratch scratch;
    return scratch;
}

FuzzScratch::FuzzScratch() {
    const QByteArray home = QFile::encodeName(_dir.path());
    qputenv("HOME", home);
    qputenv("XDG_CONFIG_DIRS", home + "/xdg");
    qputenv("QUOR3D_BG_SETTINGS", home + "/quor3dd.conf");
    qunsetenv("XDG_CONFIG_HOME");
    QCoreApplication::setOrganizationName(QUORSystem::ORGANIZATION_NAME);
    QCoreApplication::setOrganizationDomain(QUORSystem::ORGANIZATION_DOMAIN);
    QCoreApplication::setApplicationName(QStringLiteral("QUOR3D"));
}

QString FuzzScratch::write(const QString& name, const QByteArray& bytes) const {
    const QString path = _dir.filePath(name);
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    FUZZ_REQUIRE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush());
    // A file that has just changed may be one that somebody is still saving, and readers wait for the end.
    file.setFileTime(QDateTime::currentDateTime().addSecs(-SETTLED_S), QFileDevice::FileModificationTime);
    return path;
}

void FuzzScratch::useSettings(const QString& application, const QByteArray& bytes) {
    const QString home = QStringLiteral("home%1").arg(_homes++ % HOMES);
    write(home + QStringLiteral("/QUOR/") + application + QStringLiteral(".conf"), bytes);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, _dir.filePath(home));
}

void fuzzRequirementFailed(const char* expression, const char* file, int line) {
    std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, expression);
    std::abort();
}
