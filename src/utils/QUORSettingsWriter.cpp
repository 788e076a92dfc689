// SPDX-License-Identifier: MIT
#include "QUORSettingsWriter.h"

#include "QUORFilePublisher.h"
#include "QUORGuardedSettings.h"
#include "QUORLogOnce.h"
#include "QUORSettingsFile.h"
#include "QUORSettingsReader.h"
#include "QUORSystem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

// A lock that somebody keeps must not keep the reader of the settings waiting.
constexpr int LOCK_TIMEOUT_MS = 2000;
constexpr QFile::Permissions OWNER_ONLY = QFile::ReadOwner | QFile::WriteOwner;

QVariant toVariant(const QUORSettingsWriter::Value& value) {
    return std::visit([](const auto& v) { return QVariant(v); }, value);
}

bool isSame(const QUORSettingsWriter::Value& value, const std::optional<QString>& text) {
    if (!text) {
        return false;
    }
    const QString& stored = *text;
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

QString copyInto(const QString& temporary, const QString& fileName) {
    QString error;
    const std::optional<QByteArray> content = QUORSettingsFile::read(fileName, error);
    if (!content) {
        return error;
    }
    if (const int line = QUORSettingsFile::findBadLine(*content); line > 0) {
        return QStringLiteral("it is left as it is, because its line ") + QString::number(line) +
               QStringLiteral(" cannot be understood");
    }
    const QFile source(fileName);
    const QFile::Permissions permissions = source.exists() ? source.permissions() : OWNER_ONLY;
    const QByteArray copy = QUORSettingsFile::withoutOddities(*content);
    QFile target(temporary);
    const bool whole = target.open(QIODevice::WriteOnly) && target.setPermissions(permissions) &&
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

QString QUORSettingsWriter::findArray(const QString& key) const {
    const auto array = std::ranges::find_if(
        _arrays, [&](const QString& name) { return key.startsWith(name + QLatin1Char('/')); });
    return array == _arrays.cend() ? QString() : *array;
}

bool QUORSettingsWriter::isStored() const {
    QUORSettingsReader reader(_settings);
    reader.beginGroup(_group);
    return std::ranges::all_of(_values, [&](const Entry& entry) {
        const QString array = findArray(entry.first);
        if (array.isEmpty()) {
            return isSame(entry.second, reader.findText(entry.first));
        }
        reader.beginReadArray(array, 0);
        const bool same = isSame(entry.second, reader.findText(entry.first.mid(array.size() + 1)));
        reader.endArray();
        return same;
    });
}

QList<QUORSettingsWriter::Entry> QUORSettingsWriter::findMissing(QSettings& settings) const {
    QUORSettingsReader reader(settings);
    reader.beginGroup(_group);
    QList<Entry> missing = _values;
    missing.removeIf([&](const Entry& entry) {
        const QString array = findArray(entry.first);
        return reader.contains(entry.first) ||
               (!array.isEmpty() && reader.contains(array + QStringLiteral("/size")));
    });
    return missing;
}

bool QUORSettingsWriter::commitMissing() {
    _values = findMissing(_settings);
    _onlyMissing = true;
    return commit();
}

bool QUORSettingsWriter::commit() {
    if (_settings.scope() == QSettings::SystemScope) {
        return false; // stands in for a user's file that cannot be read, which was reported
    }
    if (QUORGuardedSettings::isStandIn(_settings)) {
        return false; // of a damaged file, which is its owner's to mend
    }
    const QFileInfo file(_settings.fileName());
    const QString fileName = file.exists() ? file.canonicalFilePath() : file.absoluteFilePath();
    const QString subject = QStringLiteral("save ") + fileName;
    QString error;
    // What could not be read is not known to be missing.
    if (QUORSettingsFile::read(fileName, error)) {
        if (isStored()) {
            return true;
        }
        error = store(fileName);
    }
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
        return QUORSystem::errorText();
    }
    QLockFile lock(_settings.fileName() + QStringLiteral(".lock"));
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
    if (QString error = copyInto(temporary, fileName); !error.isEmpty()) {
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
    if (QUORSettingsFile::isBeingWritten(fileName)) {
        return QStringLiteral("another program is writing it");
    }
    return publisher.publish() ? QString() : publisher.getError();
}

void QUORSettingsWriter::apply(QSettings& staged) const {
    const QStringList prefixes = QUORSettingsReader::getGroupPrefixes(_group);
    const QString target = prefixes.size() > 1 ? prefixes.at(1) : prefixes.constFirst();
    // Asked once more, of what nobody else can change now.
    const QList<Entry> values = _onlyMissing ? findMissing(staged) : _values;
    for (const QString& prefix : _onlyMissing ? QStringList() : prefixes) {
        for (const QString& array : _arrays) {
            staged.remove(prefix + array);
        }
        for (const Entry& entry : values) {
            staged.remove(prefix + entry.first);
        }
    }
    for (const auto& [key, value] : values) {
        staged.setValue(target + key, toVariant(value));
    }
}
