// SPDX-License-Identifier: MIT
#include "QUORSettingsReader.h"

#include "QUORFileStamp.h"
#include "QUORLogOnce.h"
#include "QUORSettingsFile.h"
#include "QUORSystem.h"

#include <QFileInfo>
#include <QHash>
#include <QMutex>
#include <QMutexLocker>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr auto SIZE_KEY = "size";
constexpr int MAXIMUM_ELEMENTS = 1000;
const QString NO_APPLICATION = QStringLiteral("none");

/// Switches the fallbacks to packaged defaults for one look-up.
class FallbackSwitch {
public:
    FallbackSwitch(QSettings& settings, bool enabled)
        : _settings(settings), _previous(settings.fallbacksEnabled()) {
        _settings.setFallbacksEnabled(enabled && _previous);
    }
    ~FallbackSwitch() { _settings.setFallbacksEnabled(_previous); }
    FallbackSwitch(const FallbackSwitch&) = delete;
    FallbackSwitch& operator=(const FallbackSwitch&) = delete;

private:
    QSettings& _settings;
    bool _previous;
};

template <class T>
struct Number;

template <>
struct Number<int> {
    static constexpr auto KIND = "a whole number";
    static std::optional<int> parse(const QString& text) { return QUORSettingsReader::toInt(text); }
};

template <>
struct Number<double> {
    static constexpr auto KIND = "a number";
    static std::optional<double> parse(const QString& text) { return QUORSettingsReader::toDouble(text); }
};

void reportFormat(const QString& fileName, const QByteArray& content) {
    const QString subject = QStringLiteral("format ") + fileName;
    const int line = QUORSettingsFile::findBadLine(content);
    if (line == 0) {
        QUORLogOnce::forget(subject);
        return;
    }
    QUORLogOnce::logWarning(subject,
                            QStringLiteral("Settings file ") + fileName + QStringLiteral(": line ") +
                                QString::number(line) +
                                QStringLiteral(" is no comment, [section] or key=value of one line"));
}

/// The settings layer compares size and time only.
void noticeReplacements(const QString& applicationName) {
    static QMutex mutex;
    static QHash<QString, QString> stamps;
    const QMutexLocker lock(&mutex);
    const QString stamp = QUORSettingsReader::makeStamp(applicationName);
    if (std::exchange(stamps[applicationName], stamp) != stamp) {
        QUORSettingsFile::forgetParsed();
    }
}

} // namespace

// The settings layer parses a section when it is asked for a key of it, and then misses keys such as
// `list\1\x` that stand before the first section: both constructors have all sections parsed at once.
QUORSettingsReader::QUORSettingsReader(QSettings& settings)
    : _settings(&settings), _levels{Level{{QString()}, {}}} {
    _settings->allKeys();
}

QUORSettingsReader::QUORSettingsReader(const QString& applicationName)
    : _owned(open(applicationName)), _settings(_owned.get()), _levels{Level{{QString()}, {}}} {
    _settings->allKeys();
}

QString QUORSettingsReader::findUserFile(const QString& applicationName) {
    // An object for the file itself would read it at once.
    const QSettings neighbour(QSettings::NativeFormat, QSettings::UserScope, QUORSystem::ORGANIZATION_NAME,
                              NO_APPLICATION);
    return QFileInfo(neighbour.fileName()).absolutePath() + QLatin1Char('/') + applicationName +
           QStringLiteral(".conf");
}

QStringList QUORSettingsReader::findFiles(const QString& applicationName) {
    const QString userFile = findUserFile(applicationName);
    QStringList folders{QFileInfo(userFile).absolutePath()};
    const QStringList systemFolders = QUORSystem::getSystemSettingsFolders();
    for (const QString& folder : systemFolders) {
        folders.append(folder + QLatin1Char('/') + QUORSystem::ORGANIZATION_NAME);
    }
    QStringList files;
    for (const QString& folder : std::as_const(folders)) {
        files.append(folder + QLatin1Char('/') + applicationName + QStringLiteral(".conf"));
        files.append(folder + QStringLiteral(".conf"));
    }
    return files;
}

QString QUORSettingsReader::makeStamp(const QString& applicationName) {
    QString text;
    const QStringList files = findFiles(applicationName);
    for (const QString& file : files) {
        text += QUORFileStamp::of(file).toText() + file + QLatin1Char('\n');
    }
    return text;
}

std::unique_ptr<QSettings> QUORSettingsReader::open(const QString& applicationName) {
    noticeReplacements(applicationName);
    const bool readable = isReadable(findUserFile(applicationName));
    return std::make_unique<QSettings>(QSettings::NativeFormat,
                                       readable ? QSettings::UserScope : QSettings::SystemScope,
                                       QUORSystem::ORGANIZATION_NAME, applicationName);
}

bool QUORSettingsReader::isReadable(const QString& fileName) {
    const QString subject = QStringLiteral("read ") + fileName;
    QUORSettingsFile::awaitSave(fileName);
    QString error;
    const std::optional<QByteArray> content = QUORSettingsFile::read(fileName, error);
    if (content) {
        QUORLogOnce::forget(subject);
        reportFormat(fileName, *content);
        return true;
    }
    QUORLogOnce::logError(subject, QStringLiteral("Settings file ") + fileName +
                                       QStringLiteral(" cannot be read: ") + error);
    return false;
}

QStringList QUORSettingsReader::getGroupPrefixes(const QString& group) {
    const QString prefix = group + QLatin1Char('/');
    if (group.compare(QLatin1String("general"), Qt::CaseInsensitive) != 0) {
        return {prefix};
    }
    return {prefix, QStringLiteral("General/"), QString()};
}

void QUORSettingsReader::beginGroup(const QString& name) {
    Level level = _levels.constLast();
    level.arrayPrefix.clear();
    if (_levels.size() == 1 && _settings->group().isEmpty()) {
        level.prefixes = getGroupPrefixes(name);
    } else {
        for (QString& prefix : level.prefixes) {
            prefix += name + QLatin1Char('/');
        }
    }
    _levels.append(level);
}

void QUORSettingsReader::endGroup() {
    _levels.removeLast();
}

int QUORSettingsReader::openArray(const QString& name) {
    beginGroup(name);
    const std::optional<Found> size = find(QLatin1String(SIZE_KEY));
    Level& level = _levels.last();
    level.arrayPrefix = level.prefixes.constFirst();
    if (size) {
        level.arrayPrefix = size->key.chopped(int(qstrlen(SIZE_KEY)));
        level.user = size->inUserFile;
        level.packaged = !size->inUserFile;
    }
    if (!level.user && !_packaged) {
        _packaged = makePackaged();
        _packaged->beginGroup(_settings->group());
        _packaged->allKeys();
    }
    level.prefixes = {level.arrayPrefix};
    level.arraySize = readInt(QLatin1String(SIZE_KEY), 0);
    return level.arraySize;
}

int QUORSettingsReader::beginReadArray(const QString& name, int maximum) {
    return std::clamp(openArray(name), 0, std::max(maximum, 0));
}

int QUORSettingsReader::beginReadArray(const QString& name) {
    openArray(name);
    const Level& level = _levels.constLast();
    const QList<int> elements = getArrayIndexes();
    const int held = elements.isEmpty() ? 0 : elements.constLast() + 1;
    const QString array = level.arrayPrefix.chopped(1);
    const QString subject = QStringLiteral("elements ") + _settings->fileName() + array;
    if (held > MAXIMUM_ELEMENTS) {
        QUORLogOnce::logWarning(
            subject, QStringLiteral("Settings file ") + nameFile(level.user) +
                         QStringLiteral(": elements of ") + array + QStringLiteral(" beyond number ") +
                         QString::number(MAXIMUM_ELEMENTS) + QStringLiteral(" do not count"));
    } else {
        QUORLogOnce::forget(subject);
    }
    return std::min(held, MAXIMUM_ELEMENTS);
}

QList<int> QUORSettingsReader::getArrayIndexes() const {
    const Level& level = _levels.constLast();
    QSettings& settings = level.user ? *_settings : *_packaged;
    const FallbackSwitch fallbacks(settings, level.packaged);
    settings.beginGroup(level.arrayPrefix.chopped(1));
    QList<int> indexes;
    const QStringList elements = settings.childGroups();
    for (const QString& element : elements) {
        const int number = element.toInt();
        if (number >= 1 && number <= level.arraySize && element == QString::number(number)) {
            indexes.append(number - 1);
        }
    }
    settings.endGroup();
    std::ranges::sort(indexes);
    return indexes;
}

void QUORSettingsReader::setArrayIndex(int index) {
    Level& level = _levels.last();
    level.prefixes = {level.arrayPrefix + QString::number(qint64(index) + 1) + QLatin1Char('/')};
}

void QUORSettingsReader::endArray() {
    endGroup();
}

std::optional<QUORSettingsReader::Found> QUORSettingsReader::find(const QString& key) const {
    const Level& level = _levels.constLast();
    QSettings& settings = level.user ? *_settings : *_packaged;
    for (const bool packaged : {false, true}) {
        if (!(packaged ? level.packaged && _settings->fallbacksEnabled() : level.user)) {
            continue;
        }
        const FallbackSwitch fallbacks(settings, packaged);
        for (const QString& prefix : level.prefixes) {
            if (settings.contains(prefix + key)) {
                const Found found{prefix + key, settings.value(prefix + key), !packaged};
                reportRivals(found, key);
                return found;
            }
        }
    }
    QUORLogOnce::forget(subjectOf(key));
    QUORLogOnce::forget(rivalSubjectOf(key));
    return std::nullopt;
}

QString QUORSettingsReader::subjectOf(const QString& key) const {
    return _settings->fileName() + QLatin1Char('\n') + _levels.constLast().prefixes.constFirst() + key;
}

QString QUORSettingsReader::rivalSubjectOf(const QString& key) const {
    return QStringLiteral("rival ") + subjectOf(key);
}

// Who adds a section by hand beside a saved one must learn that it does not count.
void QUORSettingsReader::reportRivals(const Found& found, const QString& key) const {
    const QStringList& prefixes = _levels.constLast().prefixes;
    if (prefixes.size() == 1) {
        return;
    }
    const bool rivals = std::ranges::any_of(prefixes, [&](const QString& prefix) {
        const QString other = prefix + key;
        return other != found.key && _settings->contains(other) && _settings->value(other) != found.value;
    });
    if (!rivals) {
        QUORLogOnce::forget(rivalSubjectOf(key));
        return;
    }
    QUORLogOnce::logWarning(rivalSubjectOf(key),
                            QStringLiteral("Settings file ") + _settings->fileName() +
                                QStringLiteral(" sets ") + key +
                                QStringLiteral(" twice; what stands in the section [%General] counts"));
}

bool QUORSettingsReader::contains(const QString& key) const {
    return find(key).has_value();
}

std::unique_ptr<QSettings> QUORSettingsReader::makePackaged() const {
    return std::make_unique<QSettings>(_settings->format(), QSettings::SystemScope,
                                       _settings->organizationName(), _settings->applicationName());
}

QString QUORSettingsReader::nameFile(bool user) const {
    return user ? _settings->fileName() : makePackaged()->fileName();
}

void QUORSettingsReader::report(const Found& found, const QString& key, const QString& problem) const {
    if (problem.isEmpty()) {
        QUORLogOnce::forget(subjectOf(key));
        return;
    }
    QUORLogOnce::logWarning(subjectOf(key), QStringLiteral("Settings file ") + nameFile(found.inUserFile) +
                                                QStringLiteral(": ") + found.key + QStringLiteral("=") +
                                                toText(found.value).value_or(QString()) + problem);
}

template <class T>
T QUORSettingsReader::read(const QString& key, T fallback, T minimum, T maximum, bool clamp) const {
    const std::optional<Found> found = find(key);
    if (!found) {
        return fallback;
    }
    const std::optional<T> value = Number<T>::parse(toText(found->value).value_or(QString()));
    const bool inRange = value && *value >= minimum && *value <= maximum;
    if (inRange) {
        report(*found, key, {});
        return *value;
    }
    const T result = value && clamp ? std::clamp(*value, minimum, maximum) : fallback;
    report(*found, key,
           (value ? QStringLiteral(" is out of range, using ")
                  : QStringLiteral(" is not ") + QLatin1String(Number<T>::KIND) +
                        QStringLiteral(", using the default ")) +
               QString::number(result));
    return result;
}

bool QUORSettingsReader::readBool(const QString& key, bool fallback) const {
    const std::optional<Found> found = find(key);
    if (!found) {
        return fallback;
    }
    const std::optional<bool> value = toBool(toText(found->value).value_or(QString()));
    report(*found, key,
           value ? QString()
                 : QStringLiteral(" is neither true nor false, using the default ") +
                       (fallback ? QStringLiteral("true") : QStringLiteral("false")));
    return value.value_or(fallback);
}

int QUORSettingsReader::readInt(const QString& key, int fallback) const {
    return readInt(key, fallback, std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
}

int QUORSettingsReader::readInt(const QString& key, int fallback, int minimum, int maximum) const {
    return read(key, fallback, minimum, maximum, false);
}

int QUORSettingsReader::readIntClamped(const QString& key, int fallback, int minimum, int maximum) const {
    return read(key, fallback, minimum, maximum, true);
}

double QUORSettingsReader::readDouble(const QString& key, double fallback) const {
    constexpr double limit = std::numeric_limits<double>::max();
    return readDouble(key, fallback, -limit, limit);
}

double QUORSettingsReader::readDouble(const QString& key, double fallback, double minimum,
                                      double maximum) const {
    return read(key, fallback, minimum, maximum, false);
}

double QUORSettingsReader::readDoubleClamped(const QString& key, double fallback, double minimum,
                                             double maximum) const {
    return read(key, fallback, minimum, maximum, true);
}

QString QUORSettingsReader::readText(const QString& key, const QString& fallback) const {
    const std::optional<Found> found = find(key);
    if (!found) {
        return fallback;
    }
    const std::optional<QString> value = toText(found->value);
    report(*found, key, value ? QString() : QStringLiteral(" is not a text, using the default ") + fallback);
    return value.value_or(fallback);
}

std::optional<QString> QUORSettingsReader::findText(const QString& key) const {
    const std::optional<Found> found = find(key);
    return found ? toText(found->value) : std::nullopt;
}

std::optional<QString> QUORSettingsReader::toText(const QVariant& value) {
    if (value.typeId() == QMetaType::QStringList) {
        return value.toStringList().join(QLatin1Char(','));
    }
    if (!value.canConvert<QString>()) {
        return std::nullopt;
    }
    return value.toString();
}

std::optional<bool> QUORSettingsReader::toBool(const QString& text) {
    const QString word = text.trimmed().toLower();
    if (QStringList{QStringLiteral("true"), QStringLiteral("1"), QStringLiteral("yes"), QStringLiteral("on")}
            .contains(word)) {
        return true;
    }
    if (QStringList{QStringLiteral("false"), QStringLiteral("0"), QStringLiteral("no"), QStringLiteral("off")}
            .contains(word)) {
        return false;
    }
    return std::nullopt;
}

std::optional<int> QUORSettingsReader::toInt(const QString& text) {
    bool good = false;
    const int value = text.trimmed().toInt(&good);
    return good ? std::optional(value) : std::nullopt;
}

std::optional<double> QUORSettingsReader::toDouble(const QString& text) {
    bool good = false;
    const double value = text.trimmed().toDouble(&good);
    return good && std::isfinite(value) ? std::optional(value) : std::nullopt;
}
