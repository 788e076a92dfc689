// SPDX-License-Identifier: MIT
#include "QUORSettingsFile.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr auto BYTE_ORDER_MARK = "\xEF\xBB\xBF";
constexpr qint64 MAXIMUM_SIZE = 64 << 20; // holds some 300,000 landmarks
// A value of this form is read recursively, list in list.
constexpr auto SERIALISED = "@Variant(";
constexpr qsizetype MAXIMUM_SERIALISED = 4096;
constexpr qint64 SAVE_TIMEOUT_MS = 1000;
constexpr unsigned long SAVE_STEP_MS = 20;

struct Line {
    int number;
    QByteArray text; ///< with the line ends inside it

    bool isHashComment() const { return text.trimmed().startsWith('#') && !text.contains('\n'); }
};

qsizetype skipEscape(const QByteArray& content, qsizetype backslash) {
    const bool windowsEnd = content.mid(backslash + 1, 2) == "\r\n";
    return backslash + (windowsEnd ? 2 : 1);
}

qsizetype findLineEnd(const QByteArray& content, qsizetype start) {
    bool quoted = false;
    for (qsizetype i = start; i < content.size(); ++i) {
        const char c = content.at(i);
        if (c == '\\') {
            i = skipEscape(content, i);
        } else if (c == '"') {
            quoted = !quoted;
        } else if (c == '\n' && !quoted) {
            return i;
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
        const qsizetype end = findLineEnd(content, start);
        const QByteArray text = content.mid(start, end - start);
        lines.append({number, text});
        number += int(text.count('\n')) + 1;
        start = end + 1;
    }
    return lines;
}

bool isGood(const Line& line) {
    const QByteArray text = line.text.trimmed();
    if (const qsizetype end = text.indexOf('\n');
        end >= 0 && (text.contains('"') || text.indexOf('=', end) >= 0)) {
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
    if (!content.contains(SERIALISED)) {
        return 0;
    }
    const QList<Line> lines = splitLines(content);
    const auto found = std::ranges::find_if(lines, [](const Line& line) {
        return line.text.size() > MAXIMUM_SERIALISED && line.text.contains(SERIALISED);
    });
    return found == lines.cend() ? 0 : found->number;
}

} // namespace

std::optional<QByteArray> QUORSettingsFile::read(const QString& fileName, QString& error) {
    error.clear();
    const int fd = openToRead(fileName);
    if (fd < 0) {
        error = errno == ENOENT ? QString() : QString::fromLocal8Bit(std::strerror(errno));
        return error.isEmpty() ? std::optional(QByteArray()) : std::nullopt;
    }
    QFile file;
    file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    error = findRefusal(fd);
    if (!error.isEmpty()) {
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
    QFileInfo file(fileName);
    const auto isSaved = [&] {
        file.refresh();
        const qint64 age = file.lastModified().msecsTo(QDateTime::currentDateTime());
        return !file.exists() || age < 0 || age > SAVE_TIMEOUT_MS ||
               (file.size() > 0 && !isBeingWritten(fileName));
    };
    while (!isSaved()) {
        QThread::msleep(SAVE_STEP_MS);
    }
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
