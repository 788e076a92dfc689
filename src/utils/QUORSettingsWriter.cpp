// SPDX-License-Identifier: MIT
#include "QUORSettingsWriter.h"

#include "QUORFilePublisher.h"
#include "QUORGuardedSettings.h"
#include "QUORLogOnce.h"
#include "QUORSettingsFile.h"
#include "QUORSettingsReader.h"
#include "QUORSettingsText.h"
#include "QUORSystem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QMap>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

// A lock that somebody keeps must not keep the reader of the settings waiting.
constexpr int LOCK_TIMEOUT_MS = 2000;
constexpr QFile::Permissions OWNER_ONLY = QFile::ReadOwner | QFile::WriteOwner;

QString toStored(const QUORSettingsWriter::Value& value) {
    return std::visit([](const auto& v) { return QVariant(v).toString(); }, value);
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

/// With the access rights of the file that it is to replace.
QString writeInto(const QString& temporary, const QByteArray& content, const QString& fileName) {
    const QFile source(fileName);
    const QFile::Permissions permissions = source.exists() ? source.permissions() : OWNER_ONLY;
    QFile target(temporary);
    const bool whole = target.open(QIODevice::WriteOnly) && target.setPermissions(permissions) &&
                       target.write(content) == content.size() && target.flush();
    return whole ? QString() : target.errorString();
}

/// Where new keys of a group go: to the section that stands already, or to the one that programs write.
QString findSection(const QUORSettingsText& text, const QStringList& prefixes, const QString& fallback) {
    for (const QString& prefix : prefixes) {
        const bool stands =
            std::ranges::any_of(text.getSections(), [&](const QUORSettingsText::Entry& entry) {
                return entry.section == prefix.chopped(prefix.isEmpty() ? 0 : 1);
            });
        if (stands) {
            return prefix;
        }
    }
    return fallback;
}

} // namespace

QUORSettingsWriter::QUORSettingsWriter(QSettings& settings, const QString& group)
    : _settings(settings), _group(group) {}

void QUORSettingsWriter::write(const QString& key, const Value& value) {
    _values.append({_elementPrefix + key, value});
}

void QUORSettingsWriter::remove(const QString& key) {
    _removed.append(key);
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

bool QUORSettingsWriter::holds(QUORSettingsReader& reader, const Entry& entry) const {
    const QString array = findArray(entry.first);
    if (array.isEmpty()) {
        return isSame(entry.second, reader.findText(entry.first));
    }
    reader.beginReadArray(array, 0);
    const bool same = isSame(entry.second, reader.findText(entry.first.mid(array.size() + 1)));
    reader.endArray();
    return same;
}

bool QUORSettingsWriter::isStored() const {
    QUORSettingsReader reader(_settings);
    reader.beginGroup(_group);
    return std::ranges::none_of(_removed, [&](const QString& key) { return reader.contains(key); }) &&
           std::ranges::all_of(_values, [&](const Entry& entry) { return holds(reader, entry); });
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
    QString error;
    const std::optional<QByteArray> content = QUORSettingsFile::read(fileName, error);
    if (!content) {
        return error;
    }
    if (const int line = QUORSettingsFile::findBadLine(*content); line > 0) {
        return QStringLiteral("it is left as it is, because its line ") + QString::number(line) +
               QStringLiteral(" cannot be understood");
    }
    // Asked once more, of what nobody else can change now.
    QList<Entry> values = _values;
    if (_onlyMissing) {
        QSettings present(fileName, QSettings::NativeFormat);
        values = findMissing(present);
    }
    QUORSettingsText text(*content);
    apply(text, values);
    const QString temporary = publisher.getTemporaryPath();
    error = writeInto(temporary, text.toBytes(), fileName);
    if (!error.isEmpty()) {
        return error;
    }
    if (!isReadBack(temporary, values)) {
        return QStringLiteral("it is left as it is, because it would not be read back as it was meant");
    }
    makeNewerThan(temporary, QFileInfo(fileName));
    if (QUORSettingsFile::isBeingWritten(fileName)) {
        return QStringLiteral("another program is writing it");
    }
    return publisher.publish() ? QString() : publisher.getError();
}

bool QUORSettingsWriter::isReadBack(const QString& fileName, const QList<Entry>& values) const {
    QSettings staged(fileName, QSettings::NativeFormat);
    QUORSettingsReader reader(staged);
    reader.beginGroup(_group);
    return std::ranges::all_of(values, [&](const Entry& entry) { return holds(reader, entry); }) &&
           std::ranges::none_of(_removed, [&](const QString& key) { return reader.contains(key); });
}

void QUORSettingsWriter::apply(QUORSettingsText& text, const QList<Entry>& values) const {
    const QStringList prefixes = QUORSettingsReader::getGroupPrefixes(_group);
    const QString target = prefixes.size() > 1 ? prefixes.at(1) : prefixes.constFirst();
    const auto isWritten = [&](const QString& key) {
        return std::ranges::find(values, key, &Entry::first) != values.cend();
    };
    // One copy of each key stays, where it stands now.
    QMap<QString, QString> sections;
    for (const QUORSettingsText::Entry& entry : text.getKeys()) {
        const QString section = entry.section.isEmpty() ? QString() : entry.section + QLatin1Char('/');
        if (!prefixes.contains(section)) {
            continue;
        }
        const bool inArray = !_onlyMissing && !findArray(entry.key).isEmpty();
        if (_removed.contains(entry.key) || (inArray && !isWritten(entry.key))) {
            text.remove(entry.path());
        } else if (isWritten(entry.key) && sections.contains(entry.key) &&
                   sections.value(entry.key) != section) {
            const bool better = prefixes.indexOf(section) < prefixes.indexOf(sections.value(entry.key));
            text.remove(better ? sections.value(entry.key) + entry.key : entry.path());
            sections[entry.key] = better ? section : sections.value(entry.key);
        } else {
            sections.insert(entry.key, section);
        }
    }
    for (const auto& [key, value] : values) {
        const QString section = sections.value(key, findSection(text, prefixes, target));
        text.set(section.chopped(section.isEmpty() ? 0 : 1), key, toStored(value));
    }
}
