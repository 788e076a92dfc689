// SPDX-License-Identifier: MIT
#include "QUORSettingsWriter.h"

#include "QUORFilePublisher.h"
#include "QUORLogOnce.h"
#include "QUORSettingsReader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

// A lock that somebody keeps must not keep the reader of the settings waiting.
constexpr int LOCK_TIMEOUT_MS = 2000;
constexpr auto OWNER_ONLY = QFile::ReadOwner | QFile::WriteOwner;

QVariant toVariant(const QUORSettingsWriter::Value& value) {
    return std::visit([](const auto& v) { return QVariant(v); }, value);
}

bool isSame(const QUORSettingsWriter::Value& value, const QString& stored) {
    if (const auto* flag = std::get_if<bool>(&value)) {
        return QUORSettingsReader::toBool(stored) == *flag;
    }
    if (const auto* whole = std::get_if<int>(&value)) {
        return QUORSettingsReader::toInt(stored) == *whole;
    }
    if (const auto* real = std::get_if<double>(&value)) {
        return QUORSettingsReader::toDouble(stored) == *real;
    }
    return std::get<QString>(value) == stored;
}

bool makePrivateFolder(const QString& path) {
    if (QFileInfo(path).isDir()) {
        return true;
    }
    const QString parent = QFileInfo(path).path();
    return parent != path && makePrivateFolder(parent) &&
           (::mkdir(QFile::encodeName(path).constData(), 0700) == 0 || errno == EEXIST);
}

// A reader takes a file of the same size and time for the one that it knows.
void makeNewerThan(const QString& file, const QFileInfo& previous) {
    const QDateTime before = previous.lastModified();
    if (previous.exists() && QFileInfo(file).lastModified() <= before) {
        const qint64 after = before.toMSecsSinceEpoch() + 1;
        const timespec stamp{time_t(after / 1000), long(after % 1000) * 1000000};
        const timespec both[] = {stamp, stamp};
        ::utimensat(AT_FDCWD, QFile::encodeName(file).constData(), both, 0);
    }
}

// Comments are lost in a save in any case, and these would make a format error of the whole file.
QByteArray withoutHashComments(const QByteArray& content) {
    QList<QByteArray> lines = content.split('\n');
    lines.removeIf([](const QByteArray& line) { return line.trimmed().startsWith('#'); });
    return lines.join('\n');
}

QString copyInto(const QString& temporary, const QString& fileName) {
    QFile source(fileName);
    QFile target(temporary);
    const bool exists = source.exists();
    if (exists && !source.open(QIODevice::ReadOnly)) {
        return source.errorString();
    }
    const QByteArray content = exists ? source.readAll() : QByteArray();
    if (const int line = QUORSettingsReader::findBadLine(content); line > 0) {
        return QStringLiteral("it is left as it is, because its line ") + QString::number(line) +
               QStringLiteral(" cannot be understood");
    }
    const QByteArray copy = withoutHashComments(content);
    const bool whole =
        target.open(QIODevice::WriteOnly) &&
        target.setPermissions(exists ? source.permissions() : QFile::Permissions(OWNER_ONLY)) &&
        target.write(copy) == copy.size() && target.flush();
    return whole ? QString() : target.errorString();
}

} // namespace

QUORSettingsWriter::QUORSettingsWriter(QSettings& settings, const QString& group)
    : _settings(settings), _group(group) {}

void QUORSettingsWriter::write(const QString& key, const Value& value) {
    _values.append({_elementPrefix + key, value});
}

void QUORSettingsWriter::beginWriteArray(const QString& name, int size) {
    _array = name;
    _arrays.append(name);
    write(name + QStringLiteral("/size"), size);
}

void QUORSettingsWriter::setArrayIndex(int index) {
    _elementPrefix = _array + QLatin1Char('/') + QString::number(index + 1) + QLatin1Char('/');
}

void QUORSettingsWriter::endArray() {
    _elementPrefix.clear();
}

bool QUORSettingsWriter::isStored() const {
    QUORSettingsReader reader(_settings);
    reader.beginGroup(_group);
    return std::ranges::all_of(_values, [&](const auto& entry) {
        const std::optional<QString> stored = reader.findText(entry.first);
        return stored && isSame(entry.second, *stored);
    });
}

bool QUORSettingsWriter::commit() {
    if (isStored()) {
        return true;
    }
    const QFileInfo file(_settings.fileName());
    const QString fileName = file.exists() ? file.canonicalFilePath() : file.absoluteFilePath();
    const QString subject = QStringLiteral("save ") + fileName;
    const QString error = store(fileName);
    if (!error.isEmpty()) {
        QUORLogOnce::logError(subject, QStringLiteral("Settings could not be saved to ") + fileName +
                                           QStringLiteral(": ") + error);
        return false;
    }
    QUORLogOnce::forget(subject);
    _settings.sync();
    return true;
}

QString QUORSettingsWriter::store(const QString& fileName) const {
    if (!makePrivateFolder(QFileInfo(fileName).path())) {
        return QString::fromLocal8Bit(std::strerror(errno));
    }
    QLockFile lock(fileName + QStringLiteral(".lock"));
    if (!lock.tryLock(LOCK_TIMEOUT_MS)) {
        return lock.error() == QLockFile::LockFailedError
                   ? QStringLiteral("another program keeps its lock file")
                   : QStringLiteral("its lock file cannot be made");
    }
    return stage(fileName);
}

QString QUORSettingsWriter::stage(const QString& fileName) const {
    QUORFilePublisher publisher(fileName);
    if (!publisher.isReady()) {
        return publisher.getError();
    }
    const QString temporary = publisher.getTemporaryPath();
    if (const QString error = copyInto(temporary, fileName); !error.isEmpty()) {
        return error;
    }
    {
        QSettings staged(temporary, QSettings::NativeFormat);
        staged.allKeys(); // has every section parsed, or the status would know of no format error yet
        if (staged.status() == QSettings::FormatError) {
            return QStringLiteral("it is left as it is, because it cannot be understood");
        }
        apply(staged);
        staged.sync();
        if (staged.status() != QSettings::NoError) {
            return QStringLiteral("it cannot be written");
        }
    }
    makeNewerThan(temporary, QFileInfo(fileName));
    return publisher.publish() ? QString() : publisher.getError();
}

void QUORSettingsWriter::apply(QSettings& staged) const {
    const QStringList prefixes = QUORSettingsReader::getGroupPrefixes(_group);
    const QString target = prefixes.size() > 1 ? prefixes.at(1) : prefixes.constFirst();
    for (const QString& prefix : prefixes) {
        for (const QString& array : _arrays) {
            staged.remove(prefix + array);
        }
        for (const auto& entry : _values) {
            staged.remove(prefix + entry.first);
        }
    }
    for (const auto& [key, value] : _values) {
        staged.setValue(target + key, toVariant(value));
    }
}
