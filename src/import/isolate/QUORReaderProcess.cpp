// SPDX-License-Identifier: MIT
#include "QUORReaderProcess.h"

#include "QUORImportError.h"
#include "QUORRadarChecks.h"
#include "QUORRadarDataStream.h"
#include "QUORRadarReader.h"
#include "QUORSystem.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

enum ExitCode { DataFollow = 0, ReasonFollows = 1, NoMemory = 2, NoResult = 3 };

class Descriptor {
public:
    explicit Descriptor(int descriptor) : _descriptor(descriptor) {}
    ~Descriptor() {
        if (_descriptor >= 0) {
            ::close(_descriptor);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return _descriptor; }

private:
    int _descriptor;
};

void limit(__rlimit_resource resource, rlim_t soft, rlim_t hard) {
    const rlimit value{soft, hard};
    ::setrlimit(resource, &value);
}

/// Bytes of the process, which a child takes over from its parent.
[[maybe_unused]] rlim_t addressSpace() {
    QFile file(QStringLiteral("/proc/self/statm"));
    const QByteArray pages = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    return pages.left(pages.indexOf(' ')).toULongLong() * rlim_t(::sysconf(_SC_PAGESIZE));
}

/// In the child. What a library prints about a bad file is not for the user.
void confine(const QUORReaderProcess::Limits& limits, pid_t parent) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        ::_exit(NoResult);
    }
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL, SIGXCPU}) {
        ::signal(signal, SIG_DFL);
    }
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int standard : {0, 1, 2}) {
        ::dup2(null, standard);
    }
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    const rlim_t memory = addressSpace() + limits.memory;
    limit(RLIMIT_AS, memory, memory);
#endif
    const auto seconds = rlim_t(limits.processorSeconds);
    limit(RLIMIT_CPU, seconds, seconds + 5);
    limit(RLIMIT_CORE, 0, 0);
    // Before others when the machine's memory ends.
    if (const int score = ::open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC); score >= 0) {
        [[maybe_unused]] const auto written = ::write(score, "1000", 4);
        ::close(score);
    }
    // The library would lock a file that its producer may still hold.
    ::setenv("HDF5_USE_FILE_LOCKING", "FALSE", 1);
}

/// In the child; the code that it ends with.
int readInto(int file, int result) {
    QFile out;
    if (!out.open(result, QIODevice::WriteOnly | QIODevice::Unbuffered, QFileDevice::DontCloseHandle)) {
        return NoResult;
    }
    try {
        const QUORRadarData data = QUORRadarReader::read(file);
        return QUORRadarDataStream::write(out, data) ? DataFollow : NoMemory;
    } catch (const std::bad_alloc&) {
        return NoMemory;
    } catch (const std::exception& error) {
        out.write(error.what());
        return ReasonFollows;
    }
}

/// Those that end a program; where it blocks them, to take them later, they are pending meanwhile.
sigset_t endingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    return signals;
}

/// Waits for the end of the child; false when it was ended for the time it took, or because the program ends.
bool awaitEnd(pid_t child, std::chrono::milliseconds wall, int& status) {
    const Descriptor handle(int(::syscall(SYS_pidfd_open, child, 0)));
    const sigset_t signals = endingSignals();
    const Descriptor ending(
        ::signalfd(-1, &signals, SFD_CLOEXEC)); // polled only: who waits for them reads them
    const auto deadline = std::chrono::steady_clock::now() + wall;
    bool inTime = true;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        std::array<pollfd, 2> polls{{{handle.get(), POLLIN, 0}, {ending.get(), POLLIN, 0}}};
        const int ready = left.count() > 0 ? ::poll(polls.data(), polls.size(), int(left.count())) : 0;
        if (ready > 0 && polls[0].revents != 0) {
            break;
        }
        if (ready >= 0 || errno != EINTR) {
            inTime = ready < 0;
            ::kill(child, SIGKILL);
            break;
        }
    }
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return inTime;
}

[[noreturn]] void throwFate(int status, const QUORReaderProcess::Limits& limits) {
    if (WIFSIGNALED(status)) {
        const int signal = WTERMSIG(status);
        const QString name = QString::fromLocal8Bit(strsignal(signal));
        switch (signal) {
        case SIGXCPU:
            throw QUORReadingEnded(QStringLiteral("reading it took more than %1 s of processor time")
                                       .arg(limits.processorSeconds));
        case SIGKILL: // also by the system when memory ends
        case SIGTERM:
        case SIGINT:
        case SIGHUP:
            throw QUORReadingInterrupted(QStringLiteral("reading it was ended from outside (%1)").arg(name));
        default:
            throw QUORReadingEnded(QStringLiteral("reading it crashed (%1)").arg(name));
        }
    }
    if (WEXITSTATUS(status) == NoMemory) {
        throw QUORReadingEnded(
            QStringLiteral("reading it takes more than %1 MiB of memory").arg(limits.memory >> 20));
    }
    throw QUORReadingEnded(QStringLiteral("reading it failed"));
}

QString firstLine(const QByteArray& text) {
    QString line = QString::fromUtf8(text.left(2000));
    for (QChar& c : line) {
        if (c.category() == QChar::Other_Control) {
            c = QLatin1Char('_');
        }
    }
    return line;
}

} // namespace

bool QUORReaderProcess::isEnding() {
    sigset_t pending;
    return ::sigpending(&pending) == 0 &&
           (sigismember(&pending, SIGTERM) == 1 || sigismember(&pending, SIGINT) == 1);
}

QUORRadarData QUORReaderProcess::read(const QString& path) const {
    const Descriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat info {};
    if (file.get() < 0 || ::fstat(file.get(), &info) != 0) {
        throw QUORImportError(QUORSystem::errorText());
    }
    if (!S_ISREG(info.st_mode)) {
        throw QUORImportError(QStringLiteral("not a regular file"));
    }
    const Descriptor result(::memfd_create("radar data", MFD_CLOEXEC));
    const pid_t parent = ::getpid();
    const pid_t child = result.get() < 0 ? -1 : ::fork();
    if (child < 0) {
        throw QUORReadingInterrupted(QStringLiteral("no process to read it in: ") + QUORSystem::errorText());
    }
    if (child == 0) {
        confine(_limits, parent);
        ::_exit(readInto(file.get(), result.get()));
    }
    int status = 0;
    if (!awaitEnd(child, _limits.wall, status)) {
        if (isEnding()) {
            throw QUORReadingInterrupted(QStringLiteral("reading it was ended with the program"));
        }
        throw QUORReadingInterrupted(
            QStringLiteral("reading it took longer than %1 s").arg(_limits.wall.count() / 1000));
    }
    QFile in;
    ::lseek(result.get(), 0, SEEK_SET);
    if (!in.open(result.get(), QIODevice::ReadOnly, QFileDevice::DontCloseHandle)) {
        throw QUORImportError(in.errorString());
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == ReasonFollows) {
        throw QUORImportError(firstLine(in.readAll()));
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != DataFollow) {
        throwFate(status, _limits);
    }
    std::optional<QUORRadarData> data = QUORRadarDataStream::read(in);
    if (!data) {
        throw QUORImportError(QStringLiteral("reading it gave nothing usable"));
    }
    QUORRadarChecks::verify(*data);
    return std::move(*data);
}
