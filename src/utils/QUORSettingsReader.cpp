// SPDX-License-Identifier: MIT
#include "QUORSettingsReader.h"

#include "QUORLog.h"
#include "QUORLogOnce.h"
#include "QUORSystem.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <unistd.h>

namespace {

constexpr auto SIZE_KEY = "size";

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

} // namespace

// The settings layer parses a section when it is asked for a key of it, and then misses keys such as
// `list\1\x` that stand before the first section: both constructors have all sections parsed at once.
QUORSettingsReader::QUORSettingsReader(QSettings& settings)
    : _settings(&settings), _levels{Level{{QString()}, {}, true}} {
    reportAccess();
    _settings->allKeys();
}

QUORSettingsReader::QUORSettingsReader(const QString& applicationName)
    : _owned(std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                         QUORSystem::ORGANIZATION_NAME, applicationName)),
      _settings(_owned.get()),
      _levels{Level{{QString()}, {}, true}} {
    reportAccess();
    _settings->allKeys();
}

QUORSettingsReader::~QUORSettingsReader() {
    if (_settings->status() == QSettings::FormatError) {
        reportFormat();
    }
}

// Asked of the system, because a folder that may not be searched makes a file look as if it were missing.
void QUORSettingsReader::reportAccess() const {
    const QString fileName = _settings->fileName();
    const QString subject = QStringLiteral("read ") + fileName;
    const int fd = ::open(QFile::encodeName(fileName).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd >= 0) {
        ::close(fd);
    }
    if (fd >= 0 || errno == ENOENT) {
        QUORLogOnce::forget(subject);
        return;
    }
    QUORLogOnce::logError(subject, QStringLiteral("Settings file ") + fileName +
                                       QStringLiteral(" cannot be read: ") +
                                       QString::fromLocal8Bit(std::strerror(errno)));
}

// The status shows only while a changed file is parsed, so this is said once for each change.
void QUORSettingsReader::reportFormat() const {
    QFile file(_settings->fileName());
    const int line = file.open(QIODevice::ReadOnly) ? findBadLine(file.readAll()) : 0;
    if (line > 0) {
        QUORLog::Instance().logWarning(QStringLiteral("Settings file ") + file.fileName() +
                                       QStringLiteral(": line ") + QString::number(line) +
                                       QStringLiteral(" is no comment, [section] or key=value"));
    }
}

int QUORSettingsReader::findBadLine(const QByteArray& content) {
    int number = 0;
    for (const QByteArray& raw : content.split('\n')) {
        ++number;
        const QByteArray line = raw.trimmed();
        const bool section = line.startsWith('[') && line.contains(']');
        const bool comment = line.startsWith(';') || line.startsWith('#');
        if (!line.isEmpty() && !section && !comment && (line.startsWith('[') || !line.contains('='))) {
            return number;
        }
    }
    return 0;
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
        level.fallbacks = !size->inUserFile;
    }
    level.prefixes = {level.arrayPrefix};
    return readInt(QLatin1String(SIZE_KEY), 0);
}

int QUORSettingsReader::beginReadArray(const QString& name, int maximum) {
    return std::clamp(openArray(name), 0, std::max(maximum, 0));
}

int QUORSettingsReader::beginReadArray(const QString& name) {
    const int size = openArray(name);
    const FallbackSwitch fallbacks(*_settings, _levels.constLast().fallbacks);
    _settings->beginGroup(_levels.constLast().arrayPrefix.chopped(1));
    int last = 0;
    const QStringList elements = _settings->childGroups();
    for (const QString& element : elements) {
        last = std::max(last, element.toInt());
    }
    _settings->endGroup();
    return std::clamp(size, 0, last);
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
    for (const bool packaged : {false, true}) {
        if (packaged && !(level.fallbacks && _settings->fallbacksEnabled())) {
            break;
        }
        const FallbackSwitch fallbacks(*_settings, packaged);
        for (const QString& prefix : level.prefixes) {
            if (_settings->contains(prefix + key)) {
                const Found found{prefix + key, _settings->value(prefix + key), !packaged};
                reportRivals(found, key);
                return found;
            }
        }
    }
    return std::nullopt;
}

// Who adds a section by hand beside a saved one must learn that it does not count.
void QUORSettingsReader::reportRivals(const Found& found, const QString& key) const {
    for (const QString& prefix : _levels.constLast().prefixes) {
        const QString other = prefix + key;
        if (other != found.key && _settings->contains(other) && _settings->value(other) != found.value) {
            QUORLogOnce::logWarning(
                QStringLiteral("rival ") + _settings->fileName() + other,
                QStringLiteral("Settings file ") + _settings->fileName() + QStringLiteral(" sets ") + key +
                    QStringLiteral(" twice; what stands in the section [%General] counts"));
        }
    }
}

bool QUORSettingsReader::contains(const QString& key) const {
    return find(key).has_value();
}

QString QUORSettingsReader::nameFile(const Found& found) const {
    if (found.inUserFile) {
        return _settings->fileName();
    }
    return QSettings(_settings->format(), QSettings::SystemScope, _settings->organizationName(),
                     _settings->applicationName())
        .fileName();
}

void QUORSettingsReader::report(const Found& found, const QString& problem) const {
    const QString subject = _settings->fileName() + QLatin1Char('\n') + found.key;
    if (problem.isEmpty()) {
        QUORLogOnce::forget(subject);
        return;
    }
    QUORLogOnce::logWarning(subject, QStringLiteral("Settings file ") + nameFile(found) +
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
        report(*found, {});
        return *value;
    }
    const T result = value && clamp ? std::clamp(*value, minimum, maximum) : fallback;
    report(*found, (value ? QStringLiteral(" is out of range, using ")
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
    report(*found, value ? QString()
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
    report(*found, value ? QString() : QStringLiteral(" is not a text, using the default ") + fallback);
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
