// SPDX-License-Identifier: MIT
#include "QUORImportRecord.h"

#include "QUORFilePublisher.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

namespace {

/// More than any folder keeps; of a longer record the newer half is loaded.
constexpr qsizetype MOST_LINES = 100000;

} // namespace

QUORImportRecord::Stamp QUORImportRecord::stampOf(const QString& path) {
    struct stat info {};
    if (::lstat(QFile::encodeName(path).constData(), &info) != 0 || !S_ISREG(info.st_mode)) {
        return {};
    }
    return {info.st_size, qint64(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec, info.st_ino};
}

QByteArray QUORImportRecord::digestOf(const QString& path) {
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    return file.open(QIODevice::ReadOnly) && hash.addData(&file) ? hash.result().toHex() : QByteArray();
}

QUORImportRecord::QUORImportRecord(const QString& path) : _path(path), _isNew(!QFileInfo::exists(path)) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return;
    }
    QList<QByteArray> lines = file.readAll().split('\n');
    _isCutOff = !lines.last().isEmpty();
    if (lines.size() > MOST_LINES) {
        lines = lines.mid(lines.size() - MOST_LINES / 2);
        QUORFilePublisher publisher(path);
        QFile shorter(publisher.getTemporaryPath());
        if (publisher.isReady() && shorter.open(QIODevice::WriteOnly) &&
            shorter.write(lines.join('\n')) > 0) {
            shorter.close();
            publisher.publish();
        }
    }
    for (const QByteArray& line : std::as_const(lines)) {
        take(line);
    }
}

/// Digest or "-", size, time of change and name. A line that was cut off is none.
void QUORImportRecord::take(const QByteArray& line) {
    const QList<QByteArray> parts = line.split('\t');
    if (parts.size() != 4 || parts[3].isEmpty()) {
        return;
    }
    _files[QString::fromUtf8(QByteArray::fromPercentEncoding(parts[3]))] = {parts[1].toLongLong(),
                                                                            parts[2].toLongLong(), 0};
    if (parts[0] != "-") {
        _digests.insert(parts[0]);
    }
}

bool QUORImportRecord::hasFile(const QString& name, const Stamp& stamp) const {
    const auto found = _files.find(name);
    return found != _files.end() && found->size == stamp.size && found->changed == stamp.changed;
}

QString QUORImportRecord::add(const QString& name, const Stamp& stamp, const QByteArray& digest) {
    const QByteArray line = (digest.isEmpty() ? QByteArray("-") : digest) + '\t' +
                            QByteArray::number(stamp.size) + '\t' + QByteArray::number(stamp.changed) + '\t' +
                            name.toUtf8().toPercentEncoding(" ") + '\n';
    take(line.chopped(1));
    return append(line);
}

QString QUORImportRecord::append(const QByteArray& lines) {
    QDir().mkpath(QFileInfo(_path).path());
    QFile file(_path);
    const QByteArray bytes = (_isCutOff ? QByteArray("\n") : QByteArray()) + lines;
    const bool isOpen = file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered);
    const qint64 written = isOpen ? file.write(bytes) : -1;
    _isCutOff = written == bytes.size() ? false : (_isCutOff || written > 0);
    if (written != bytes.size()) {
        return QStringLiteral("cannot keep a record in ") + _path + QStringLiteral(": ") + file.errorString();
    }
    return {};
}
