// SPDX-License-Identifier: MIT
#include "QUORProcessSetup.h"

#include "QUORBackgroundSettings.h"
#include "QUORLog.h"
#include "QUORSystem.h"

#include <QDir>
#include <QFile>

#include <array>
#include <clocale>
#include <csignal>
#include <fcntl.h>
#include <pwd.h>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr const char* NULL_DEVICE = "/dev/null";
constexpr const char* SHADER_CACHE_VARIABLE = "MESA_SHADER_CACHE_DIR";
constexpr int MIB_BITS = 20;
// A start on two cores maps a little over 1 GiB; software rendering that gets no more crashes.
constexpr rlim_t SMALLEST_ADDRESS_SPACE = rlim_t(1536) << MIB_BITS;
constexpr const char* RUNTIME_VARIABLE = "XDG_RUNTIME_DIR";

QByteArray ownDirectory(const char* name) {
    return QFile::encodeName(QUORSystem::expandHome(QStringLiteral("~/.quor3d"))) + name;
}

struct FatalSignal {
    int number;
    const char* text;
};

constexpr std::array FATAL_SIGNALS{
    FatalSignal{SIGABRT, "The service ends by signal 6: a library or an assertion gave up"},
    FatalSignal{SIGSEGV, "The service ends by signal 11: memory was used that is not there"},
    FatalSignal{SIGBUS, "The service ends by signal 7: memory or a mapped file is not there"},
    FatalSignal{SIGILL, "The service ends by signal 4: an instruction that this machine does not know"},
    FatalSignal{SIGFPE, "The service ends by signal 8: an arithmetic fault"},
};

[[maybe_unused]] void sayLastWords(int signal) {
    for (const FatalSignal& row : FATAL_SIGNALS) {
        if (row.number == signal) {
            QUORLog::writeLastWords(row.text);
        }
    }
    ::raise(signal);
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

void reportFatalSignals() {
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // which report more
    for (const FatalSignal& row : FATAL_SIGNALS) {
        struct sigaction action {};
        action.sa_handler = sayLastWords;
        action.sa_flags = SA_RESETHAND | SA_NODEFER;
        ::sigaction(row.number, &action, nullptr);
    }
#endif
}

void requireAddressSpace() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur < SMALLEST_ADDRESS_SPACE) {
        throw std::runtime_error("its address space is limited to " +
                                 std::to_string(limit.rlim_cur >> MIB_BITS) + " MiB (ulimit -v), it needs " +
                                 std::to_string(SMALLEST_ADDRESS_SPACE >> MIB_BITS));
    }
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
