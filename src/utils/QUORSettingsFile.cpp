// SPDX-License-Identifier: MIT
#include "QUORSettingsFile.h"

#include "QUORSystem.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QList>
#include <QMutex>
#include <QMutexLocker>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr auto BYTE_ORDER_MARK = "\xEF\xBB\xBF";
constexpr qint64 MAXIMUM_SIZE = 64 << 20; // holds some 300,000 landmarks
// Values that begin with "@", which may be written as an escape, can be lists in lists, read recursively.
constexpr qsizetype MAXIMUM_SERIALISED = 32768;
constexpr qint64 SAVE_PAUSE_MS = 1000;
constexpr qint64 SAVE_TIMEOUT_MS = 3000;
constexpr unsigned long SAVE_STEP_MS = 20;

struct Line {
    int number;
    QByteArray text;        ///< with the line ends inside it
    bool openQuote = false; ///< a line end stands between quotation marks

    bool isHashComment() const { return text.trimmed().startsWith('#') && !text.contains('\n'); }
};

qsizetype skipEscape(const QByteArray& content, qsizetype backslash) {
    const bool windowsEnd = content.mid(backslash + 1, 2) == "\r\n";
    return backslash + (windowsEnd ? 2 : 1);
}

qsizetype findLineEnd(const QByteArray& content, qsizetype start, bool& openQuote) {
    bool quoted = false;
    openQuote = false;
    for (qsizetype i = start; i < content.size(); ++i) {
        const char c = content.at(i);
        if (c == '\\') {
            i = skipEscape(content, i);
        } else if (c == '"') {
            quoted = !quoted;
        } else if (c == '\n' && !quoted) {
            return i;
        } else if (c == '\n') {
            openQuote = true;
        } else if (c == ';' && !quoted) {
            const qsizetype end = content.indexOf('\n', i);
            return end < 0 ? content.size() : end;
        }
    }
    return content.size();
}

QList<Line> splitLines(const QByteArray& content) {
    QList<Line> lines;
    int number = 1;
    qsizetype start = content.startsWith(BYTE_ORDER_MARK) ? qsizetype(qstrlen(BYTE_ORDER_MARK)) : 0;
    while (start < content.size()) {
        bool openQuote = false;
        const qsizetype end = findLineEnd(content, start, openQuote);
        const QByteArray text = content.mid(start, end - start);
        lines.append({number, text, openQuote});
        number += int(text.count('\n')) + 1;
        start = end + 1;
    }
    return lines;
}

bool isGood(const Line& line) {
    const QByteArray text = line.text.trimmed();
    const qsizetype end = text.indexOf('\n');
    if (line.openQuote || (end >= 0 && text.indexOf('=', end) >= 0)) {
        return false; // holds the next line, most likely against the writer's will
    }
    if (text.startsWith('[')) {
        return text.contains(']');
    }
    return text.isEmpty() || text.startsWith(';') || line.isHashComment() ||
           (!text.startsWith('#') && text.contains('='));
}

int openToRead(const QString& fileName) {
    return ::open(QFile::encodeName(fileName).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
}

QString findRefusal(int fd) {
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        return QStringLiteral("it is not a regular file");
    }
    return info.st_size > MAXIMUM_SIZE ? QStringLiteral("it is too large") : QString();
}

int findOverlongValue(const QByteArray& content) {
    if (content.size() <= MAXIMUM_SERIALISED) {
        return 0;
    }
    const QList<Line> lines = splitLines(content);
    const auto found = std::ranges::find_if(lines, [](const Line& line) {
        return line.text.size() > MAXIMUM_SERIALISED && (line.text.contains('@') || line.text.contains('\\'));
    });
    return found == lines.cend() ? 0 : found->number;
}

bool isInSave(const QFileInfo& file) {
    const qint64 age = file.lastModified().msecsTo(QDateTime::currentDateTime());
    return file.exists() && age >= 0 && age <= SAVE_PAUSE_MS &&
           (file.size() == 0 || QUORSettingsFile::isBeingWritten(file.filePath()));
}

/// Since when the saves of a file that have not ended are waited for: all who wait share the patience.
class Patience {
public:
    bool isLeft(const QString& fileName) {
        const QMutexLocker lock(&_mutex);
        QElapsedTimer& since = _since[fileName];
        if (!since.isValid()) {
            since.start();
        }
        return since.elapsed() < SAVE_TIMEOUT_MS;
    }
    void renew(const QString& fileName) {
        const QMutexLocker lock(&_mutex);
        _since.remove(fileName);
    }

private:
    QMutex _mutex;
    QHash<QString, QElapsedTimer> _since;
};

} // namespace

std::optional<QByteArray> QUORSettingsFile::read(const QString& fileName, QString& error) {
    error.clear();
    const int fd = openToRead(fileName);
    if (fd < 0) {
        error = errno == ENOENT ? QString() : QUORSystem::errorText();
        return error.isEmpty() ? std::optional(QByteArray()) : std::nullopt;
    }
    error = findRefusal(fd);
    QFile file;
    if (!error.isEmpty() || !file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        error = error.isEmpty() ? file.errorString() : error;
        ::close(fd);
        return std::nullopt;
    }
    const QByteArray content = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        error = file.errorString();
    } else if (content.size() != file.size()) {
        error = QStringLiteral("it could not be read as a whole");
    } else if (const int line = findOverlongValue(content); line > 0) {
        error =
            QStringLiteral("the value in line ") + QString::number(line) + QStringLiteral(" is too large");
    }
    return error.isEmpty() ? std::optional(content) : std::nullopt;
}

bool QUORSettingsFile::isBeingWritten(const QString& fileName) {
    const int fd = openToRead(fileName);
    if (fd < 0) {
        return false;
    }
    // The system gives no lease on what is open for writing. Who opens it now is told by a signal, which
    // must not be the usual one, because that one ends the process.
    const bool refused =
        ::fcntl(fd, F_SETSIG, SIGURG) == 0 && ::fcntl(fd, F_SETLEASE, F_RDLCK) != 0 && errno == EAGAIN;
    ::close(fd);
    return refused;
}

void QUORSettingsFile::awaitSave(const QString& fileName) {
    static Patience patience;
    while (isInSave(QFileInfo(fileName))) {
        if (!patience.isLeft(fileName)) {
            return;
        }
        QThread::msleep(SAVE_STEP_MS);
    }
    patience.renew(fileName);
}

int QUORSettingsFile::findBadLine(const QByteArray& content) {
    for (const Line& line : splitLines(content)) {
        if (!isGood(line)) {
            return line.number;
        }
    }
    return 0;
}

QByteArray QUORSettingsFile::withoutOddities(const QByteArray& content) {
    QByteArray result;
    for (const Line& line : splitLines(content)) {
        if (!line.isHashComment()) {
            result += line.text + '\n';
        }
    }
    return result;
}
