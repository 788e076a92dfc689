// SPDX-License-Identifier: MIT
#include "QUORLog.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QMutexLocker>

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>

namespace {

// Trivially destructible, so that it can be asked after the logger has gone.
std::atomic<bool> logAlive{false};

QString onOneLine(QString text) {
    for (QChar& c : text) {
        if (c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
            c == QChar::ParagraphSeparator) {
            c = QLatin1Char('_');
        }
    }
    return text;
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
    writeLine(name + QStringLiteral(" starting"));
}

void QUORLog::logOpen(const QString& fileName) {
    bool failed = false;
    {
        const QMutexLocker lock(&_mutex);
        closeFile();
        if (!fileName.isEmpty()) {
            _descriptor = ::open(QFile::encodeName(fileName).constData(),
                                 O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0644);
            _ownsDescriptor = _descriptor >= 0;
            failed = !_ownsDescriptor;
        }
        if (!_ownsDescriptor) {
            _descriptor = STDERR_FILENO;
        }
    }
    if (failed) {
        logError(QStringLiteral("ERROR 0 WHEN OPENING LOG FILE ") + fileName +
                 QStringLiteral(", LOGGING TO CONSOLE"));
    }
}

void QUORLog::logLog(const QString& text, int level) {
    if (level <= this->level()) {
        writeLine(text);
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

void QUORLog::writeLine(const QString& text) {
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
        if (_ownsDescriptor) {
            line += QDateTime::currentDateTime().toString(Qt::TextDate).toUtf8() + ' ';
        }
        line += onOneLine(text).toUtf8() + '\n';
        const ssize_t written = ::write(_descriptor, line.constData(), size_t(line.size()));
        _isCutOff = written > 0 ? written < line.size() : _isCutOff;
    }
    writing = false;
}

void QUORLog::closeFile() {
    if (_ownsDescriptor) {
        ::close(_descriptor);
    }
    _ownsDescriptor = false;
    _descriptor = -1;
}

void logDebug(const QString& text) {
    QUORLog::Instance().logDebug(text);
}

void logWarning(const QString& text) {
    QUORLog::Instance().logWarning(text);
}

QUORLogScope::QUORLogScope(const char* method) : _method(method) {
    QUORLog::Instance().logDebug(QString::fromUtf8(_method) + QStringLiteral("() called."));
}

QUORLogScope::~QUORLogScope() {
    QUORLog::Instance().logDebug(QString::fromUtf8(_method) + QStringLiteral("() finished."));
}
