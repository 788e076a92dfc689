// SPDX-License-Identifier: MIT
#include "QUORLog.h"

#include "QUORSystem.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QMutexLocker>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Trivially destructible, so that it can be asked after the logger has gone.
std::atomic<bool> logAlive{false};
// For a signal handler.
std::atomic<int> openDescriptor{-1};

QString onOneLine(QString text) {
    for (QChar& c : text) {
        if (c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
            c == QChar::ParagraphSeparator) {
            c = QLatin1Char('_');
        }
    }
    return text;
}

/// What the journal's priorities are called here, by level.
constexpr std::array<const char*, 4> PRIORITIES{"<3>", "<4>", "<5>", "<7>"};

/// The journal names the stream that it reads by device and inode.
bool isJournalStream(int descriptor) {
    struct stat info {};
    return ::fstat(descriptor, &info) == 0 &&
           qgetenv("JOURNAL_STREAM") == QByteArray::number(qulonglong(info.st_dev)) + ':' +
                                            QByteArray::number(qulonglong(info.st_ino));
}

/// A pipe is opened anew, because those who share it must go on writing to it as they did; -1 for what is
/// none.
int openWithoutWaiting(int descriptor) {
    struct stat info {};
    if (::fstat(descriptor, &info) != 0 || !S_ISFIFO(info.st_mode)) {
        return -1;
    }
    const QByteArray path = "/proc/self/fd/" + QByteArray::number(descriptor);
    return ::open(path.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
}

bool hasRoom(int descriptor) {
    pollfd room{descriptor, POLLOUT, 0};
    return ::poll(&room, 1, 0) > 0 && (room.revents & POLLOUT) != 0;
}

} // namespace

QUORLog& QUORLog::Instance() {
    static QUORLog log;
    static const bool marked = [] {
        logAlive = true;
        return true;
    }();
    Q_UNUSED(marked);
    return log;
}

bool QUORLog::isAlive() {
    return logAlive;
}

QUORLog::~QUORLog() {
    logAlive = false;
    closeFile();
}

void QUORLog::setLevel(int level) {
    _level = std::clamp(level, int(Error), int(Debug));
}

void QUORLog::logInit(const QString& name, const QString& fileName) {
    logOpen(fileName);
    writeLine(name + QStringLiteral(" starting"), Notice);
}

void QUORLog::logOpen(const QString& fileName) {
    bool failed = false;
    {
        const QMutexLocker lock(&_mutex);
        closeFile();
        failed = !fileName.isEmpty() && !openFile(fileName);
        if (!_ownsDescriptor) {
            openConsole();
        }
    }
    if (failed) {
        logError(QStringLiteral("ERROR 0 WHEN OPENING LOG FILE ") + fileName +
                 QStringLiteral(", LOGGING TO CONSOLE"));
    }
}

void QUORLog::logReopen() {
    QString failure;
    {
        const QMutexLocker lock(&_mutex);
        const QString name = _fileName;
        const int previous = _descriptor;
        if (name.isEmpty() || openFile(name)) {
            if (!name.isEmpty()) {
                ::close(previous);
            }
            return;
        }
        failure = name + QStringLiteral(": ") + QUORSystem::errorText();
    }
    logError(QStringLiteral("The log file cannot be opened again, the one in use stays: ") + failure);
}

// Changes nothing when it fails.
bool QUORLog::openFile(const QString& fileName) {
    const int descriptor = ::open(QFile::encodeName(fileName).constData(),
                                  O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0644);
    if (descriptor < 0) {
        return false;
    }
    _descriptor = descriptor;
    openDescriptor = descriptor;
    _ownsDescriptor = true;
    _isJournal = false;
    // A daemon changes its working directory before it opens the file again.
    _fileName =
        fileName.startsWith(QLatin1Char('/')) ? fileName : QDir::currentPath() + QLatin1Char('/') + fileName;
    return true;
}

void QUORLog::openConsole() {
    _isJournal = isJournalStream(STDERR_FILENO);
    const int pipe = openWithoutWaiting(STDERR_FILENO);
    _ownsDescriptor = pipe >= 0;
    _descriptor = _ownsDescriptor ? pipe : STDERR_FILENO;
    openDescriptor = _descriptor;
}

void QUORLog::logLog(const QString& text, int level) {
    if (level <= this->level()) {
        writeLine(text, level);
    }
}

void QUORLog::logError(const QString& text) {
    logLog(QStringLiteral("E: ") + text, Error);
}

void QUORLog::logWarning(const QString& text) {
    logLog(QStringLiteral("W: ") + text, Warning);
}

void QUORLog::logNotice(const QString& text) {
    logLog(QStringLiteral("N: ") + text, Notice);
}

void QUORLog::logDebug(const QString& text) {
    if (level() >= Debug) {
        logLog(QStringLiteral("D: ") + text, Debug);
    }
}

void QUORLog::logStatus(const QString& text, int secs) {
    logDebug(QStringLiteral("Update status"));
    Q_EMIT statusAdd(text, secs);
}

void QUORLog::logHistory(const QString& text) {
    Q_EMIT historyAdd(text);
}

void QUORLog::logHistory(const QStringList& texts) {
    Q_EMIT historyAdd(texts);
}

void QUORLog::logConnect(QObject* object, const char* historySlot, const char* statusSlot) {
    connect(this, SIGNAL(historyAdd(QString)), object, historySlot);
    Q_EMIT historyAdd(QCoreApplication::translate("QUORLog", "Welcome to QUOR 3D"));
    connect(this, SIGNAL(statusAdd(QString, int)), object, statusSlot);
}

void QUORLog::writeLine(const QString& text, int level) {
    // A library that complains while its line is written would lock the mutex twice.
    thread_local bool writing = false;
    if (writing || !logAlive) {
        return;
    }
    writing = true;
    const QMutexLocker lock(&_mutex);
    if (_descriptor >= 0) {
        QByteArray line;
        if (_isCutOff) {
            line += '\n';
        }
        if (_dropped > 0) {
            line += beginLine(Error) + "E: " + QByteArray::number(_dropped) +
                    " log lines were dropped, because nobody took them in time\n";
        }
        line += beginLine(level) + onOneLine(text).toUtf8() + '\n';
        writeOut(line);
    }
    writing = false;
}

QByteArray QUORLog::beginLine(int level) const {
    if (_isJournal) {
        return PRIORITIES.at(std::size_t(std::clamp(level, int(Error), int(Debug))));
    }
    return _fileName.isEmpty() ? QByteArray()
                               : QDateTime::currentDateTime().toString(Qt::TextDate).toUtf8() + ' ';
}

void QUORLog::writeOut(const QByteArray& line) {
    if (!hasRoom(_descriptor)) {
        ++_dropped;
        return;
    }
    const ssize_t written = ::write(_descriptor, line.constData(), size_t(line.size()));
    if (written > 0) {
        _isCutOff = written < line.size();
        _dropped = 0;
    } else if (errno == EAGAIN) {
        ++_dropped;
    }
}

void QUORLog::writeLastWords(const char* text) noexcept {
    std::array<char, 256> line{};
    std::size_t size = 0;
    for (const char* part : {"E: ", text, "\n"}) {
        for (; *part != '\0' && size < line.size(); ++part) {
            line[size++] = *part;
        }
    }
    if (const int descriptor = openDescriptor; descriptor >= 0 && hasRoom(descriptor)) {
        const ssize_t written = ::write(descriptor, line.data(), size);
        Q_UNUSED(written);
    }
}

void QUORLog::closeFile() {
    openDescriptor = -1;
    if (_ownsDescriptor) {
        ::close(_descriptor);
    }
    _ownsDescriptor = false;
    _descriptor = -1;
    _fileName.clear();
    _dropped = 0;
}

void logDebug(const QString& text) {
    QUORLog::Instance().logDebug(text);
}

void logWarning(const QString& text) {
    QUORLog::Instance().logWarning(text);
}

QUORLogScope::QUORLogScope(const char* method, const char* rest) : _method(method), _rest(rest) {
    logDebug(QString::fromUtf8(_method) + QString::fromUtf8(_rest) + QStringLiteral("() called."));
}

QUORLogScope::~QUORLogScope() {
    logDebug(QString::fromUtf8(_method) + QString::fromUtf8(_rest) + QStringLiteral("() finished."));
}
