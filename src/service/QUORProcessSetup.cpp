// SPDX-License-Identifier: MIT
#include "QUORProcessSetup.h"

#include "QUORBackgroundSettings.h"
#include "QUORSystem.h"

#include <QDir>
#include <QFile>

#include <clocale>
#include <csignal>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr const char* NULL_DEVICE = "/dev/null";
constexpr const char* SHADER_CACHE_VARIABLE = "MESA_SHADER_CACHE_DIR";
constexpr const char* RUNTIME_VARIABLE = "XDG_RUNTIME_DIR";

QByteArray ownDirectory(const char* name) {
    return QFile::encodeName(QUORSystem::expandHome(QStringLiteral("~/.quor3d"))) + name;
}

void openMissingStandardStreams() {
    // The lowest free number is given out, so going upwards fills the gaps.
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) < 0 && ::open(NULL_DEVICE, O_RDWR) < 0) {
            return;
        }
    }
}

void fillHome() {
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (qEnvironmentVariableIsEmpty("HOME") &&
        ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr) {
        qputenv("HOME", found->pw_dir);
    }
}

// A daemon changes its working directory.
void resolvePaths() {
    for (const char* variable : {"PIDFILE", QUORBackgroundSettings::FILE_VARIABLE, SHADER_CACHE_VARIABLE}) {
        if (!qEnvironmentVariableIsEmpty(variable)) {
            const QString path = 
                QDir::current().absoluteFilePath(QUORSystem::toPath(QFile::decodeName(qgetenv(variable))));
            qputenv(variable, QFile::encodeName(path));
        }
    }
}

// Where it cannot be made, its user says so.
void provideDirectory(const char* variable, const char* name, mode_t mode) {
    if (qEnvironmentVariableIsEmpty(variable)) {
        ::mkdir(ownDirectory("").constData(), 0755);
        ::mkdir(ownDirectory(name).constData(), mode);
        qputenv(variable, ownDirectory(name));
    }
}

void ignoreWriteSignals() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

} // namespace

namespace QUORProcessSetup {

void beforeToolkit() {
    ignoreWriteSignals();
    openMissingStandardStreams();
    fillHome();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // A desktop's theme would open its display.
    qunsetenv("QT_QPA_PLATFORMTHEME");
    qunsetenv("QT_STYLE_OVERRIDE");
    resolvePaths();
    provideDirectory(RUNTIME_VARIABLE, "/run", 0700);
    provideDirectory(SHADER_CACHE_VARIABLE, "/cache", 0755);
}

void afterToolkit() {
    std::setlocale(LC_NUMERIC, "C");
}

void detachStandardStreams() {
    const int null = ::open(NULL_DEVICE, O_RDWR | O_CLOEXEC);
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (null < 0 || ::dup2(null, descriptor) < 0) {
            ::close(descriptor);
        }
    }
    if (null > STDERR_FILENO) {
        ::close(null);
    }
}

} // namespace QUORProcessSetup
