// SPDX-License-Identifier: MIT
#include "QUORSettingsFile.h"

#include <QFile>
#include <QList>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr auto BYTE_ORDER_MARK = "\xEF\xBB\xBF";

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
    if (text.startsWith('[')) {
        return text.contains(']');
    }
    return text.isEmpty() || text.startsWith(';') || line.isHashComment() ||
           (!text.startsWith('#') && text.contains('='));
}

} // namespace

QString QUORSettingsFile::findAccessError(const QString& fileName) {
    const int fd = ::open(QFile::encodeName(fileName).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) {
        return errno == ENOENT ? QString() : QString::fromLocal8Bit(std::strerror(errno));
    }
    struct stat info {};
    const bool regular = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
    ::close(fd);
    return regular ? QString() : QStringLiteral("it is not a regular file");
}

std::optional<QByteArray> QUORSettingsFile::read(const QString& fileName, QString& error) {
    error = findAccessError(fileName);
    if (!error.isEmpty()) {
        return std::nullopt;
    }
    QFile file(fileName);
    if (!file.exists()) {
        return QByteArray();
    }
    const bool open = file.open(QIODevice::ReadOnly);
    const QByteArray content = open ? file.readAll() : QByteArray();
    if (!open || file.error() != QFileDevice::NoError) {
        error = file.errorString();
        return std::nullopt;
    }
    if (content.size() != file.size()) {
        error = QStringLiteral("it could not be read as a whole");
        return std::nullopt;
    }
    return content;
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
