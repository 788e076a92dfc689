// SPDX-License-Identifier: MIT
#include "QUORSettingsAudit.h"

#include "QUORSettingsFile.h"
#include "QUORSettingsReader.h"
#include "QUORSettingsSearch.h"
#include "QUORSettingsValue.h"

#include <QRegularExpression>
#include <QSet>
#include <QSettings>

#include <algorithm>
#include <cmath>

namespace {

using Cost = QUORFinding::Cost;
using File = QUORSettingsKey::File;
using Type = QUORSettingsKey::Type;

QString quoted(const QString& text) {
    return QLatin1Char('"') + text.simplified() + QLatin1Char('"');
}

QString describePlace(const QUORSettingsText::Entry& entry) {
    const QString group = QUORSettingsSearch::toGroup(entry.section);
    return entry.key.isEmpty() ? group : group + QLatin1Char('/') + entry.key;
}

/// What becomes of a value that does not count as it stands.
QString describeOutcome(const QUORSettingsKey& row, const QString& text) {
    if (row.name == "rendering") {
        return QStringLiteral("the product is not drawn");
    }
    if (row.name == "product") {
        return QStringLiteral("no product has this name, and images wait for one in vain");
    }
    if (row.name == "outputformat") {
        return QStringLiteral("images are PNG under a name that ends in \".\"");
    }
    const std::optional<double> number = QUORSettingsReader::toDouble(text);
    if (number && row.beyond == QUORSettingsKey::Beyond::Limited &&
        (row.type != Type::Whole || QUORSettingsReader::toInt(text))) {
        return QString::number(std::clamp(*number, row.minimum, row.maximum)) + QStringLiteral(" counts");
    }
    if (number && row.beyond == QUORSettingsKey::Beyond::Kept) {
        return QStringLiteral("it makes no sense");
    }
    const QString fallback = QUORSettingsValue::describeDefault(row);
    if (fallback.isEmpty()) {
        return QStringLiteral("it does not count");
    }
    return (row.computed.empty() ? QStringLiteral("the default ") : QString()) + fallback +
           QStringLiteral(" counts");
}

bool isFraction(const QUORSettingsKey& row) {
    return row.minimum == 0.0 && row.maximum == 1.0;
}

/// What the writer may have meant.
QString suggestValue(const QUORSettingsKey& row, const QString& text) {
    static const QRegularExpression withUnit(
        QStringLiteral("^\\s*([-+]?[0-9]+(?:[.,][0-9]+)?)\\s*([^0-9.,\\s].*)$"));
    static const QRegularExpression withComma(QStringLiteral("^\\s*([-+]?[0-9]+),\\s*([0-9]+)\\s*$"));
    const std::optional<double> number = QUORSettingsReader::toDouble(text);
    if (row.type == Type::Choice) {
        const QString choices = QString::fromUtf8(row.choices.data(), qsizetype(row.choices.size()));
        const QString near = QUORSettingsSearch::nearest(text, choices.split(QLatin1Char('|')));
        return near.isEmpty() ? QStringLiteral("write ") + QUORSettingsValue::describeRange(row)
                              : QStringLiteral("write ") + near;
    }
    if (row.type == Type::Flag) {
        return QStringLiteral("write true or false");
    }
    if (isFraction(row) && number && *number > 1.0 && *number <= 255.0 &&
        (row.type == Type::Color || row.name.starts_with("color/"))) {
        return QStringLiteral("colours are 0 to 1 here: write ") + QString::number(*number / 255.0, 'g', 3);
    }
    if (isFraction(row) && number && *number > 1.0 && *number <= 100.0) {
        return QStringLiteral("opacities are 0 to 1 here: write ") + QString::number(*number / 100.0, 'g', 3);
    }
    if (row.maximum == 255.0 && number && *number > 0.0 && *number < 1.0) {
        return QStringLiteral("colours are 0 to 255 here: write ") +
               QString::number(std::lround(*number * 255.0));
    }
    if (const auto match = withComma.match(text); match.hasMatch()) {
        return QStringLiteral("write a decimal point: ") + match.captured(1) + QLatin1Char('.') +
               match.captured(2);
    }
    if (const auto match = withUnit.match(text); match.hasMatch()) {
        return QStringLiteral("write the number without its unit: ") + match.captured(1).replace(u',', u'.');
    }
    if (row.type == Type::Whole && number) {
        return QStringLiteral("write a whole number, such as ") + QString::number(std::lround(*number));
    }
    const QString range = QUORSettingsValue::describeRange(row);
    return QStringLiteral("write a number") + (range.isEmpty() ? QString() : QStringLiteral(", ") + range);
}

Cost costOf(const QUORSettingsKey& row) {
    if (row.use == QUORSettingsKey::Use::Client) {
        return Cost::Remark;
    }
    return row.name == "rendering" || row.name == "product" ? Cost::Missing : Cost::Wrong;
}

/// The key of an element, with its array: "surface" and 2 of "surface/2/isovalue".
struct Element {
    QString array;
    int number = 0;
    QString key;
};

std::optional<Element> toElement(const QString& key) {
    static const QRegularExpression element(QStringLiteral("^([^/]+)/(\\d{1,9})/(.+)$"));
    const QRegularExpressionMatch match = element.match(key);
    return match.hasMatch()
               ? std::optional(Element{match.captured(1), match.captured(2).toInt(), match.captured(3)})
               : std::nullopt;
}

} // namespace

QUORSettingsAudit::QUORSettingsAudit(File file, const QString& path) : _file(file), _path(path) {}

QUORSettingsAudit::~QUORSettingsAudit() = default;

int QUORSettingsAudit::findLine(const QString& path, const QString& group, const QString& key) {
    QString error;
    const QUORSettingsText text(QUORSettingsFile::read(path, error).value_or(QByteArray()));
    int line = 0;
    for (const Entry& entry : text.getKeys()) {
        if (QUORSettingsSearch::toGroup(entry.section) == group && entry.key == key) {
            line = entry.line;
        }
    }
    return line;
}

QUORFindings QUORSettingsAudit::run() {
    QString error;
    const std::optional<QByteArray> content = QUORSettingsFile::read(_path, error);
    if (!content) {
        const bool needed = _file == File::Main || _file == File::Background;
        add(needed ? Cost::NoImages : Cost::Wrong, "unreadable-file", {},
            QStringLiteral("cannot be read: ") + error,
            QStringLiteral("let the user of the service read it, and enter its folders"));
        return _findings;
    }
    const QUORSettingsText text(*content);
    _settings = std::make_unique<QSettings>(_path, QSettings::NativeFormat);
    _settings->allKeys();
    checkLines(text);
    checkSections(text);
    for (const Entry& entry : text.getKeys()) {
        checkKey(entry);
    }
    checkDuplicates(text);
    checkArrays(text);
    if (_file == File::Landmarks) {
        checkLandmarks(text);
    }
    return _findings;
}

void QUORSettingsAudit::add(Cost cost, const char* code, const Entry& entry, const QString& problem,
                            const QString& advice) {
    const bool named = !entry.section.isEmpty() || !entry.key.isEmpty();
    _findings.append({cost, QString::fromLatin1(code), _path, entry.line,
                      named ? describePlace(entry) : QString(), problem, advice});
}

QString QUORSettingsAudit::valueOf(const Entry& entry) const {
    return QUORSettingsReader::toText(_settings->value(entry.path())).value_or(QString());
}

void QUORSettingsAudit::checkLines(const QUORSettingsText& text) {
    for (const QUORSettingsText::Line& line : text.getLines()) {
        if (line.isBad()) {
            add(Cost::Wrong, "bad-line", {line.number, {}, {}},
                QStringLiteral("is no comment, [section] or key=value of one line"),
                QStringLiteral(
                    "begin a comment with \";\", close quotation marks, write \\\\ for a backslash"));
        }
    }
}

void QUORSettingsAudit::checkSections(const QUORSettingsText& text) {
    for (const Entry& entry : text.getSections()) {
        const QString group = QUORSettingsSearch::toGroup(entry.section);
        const bool general = group == QLatin1String("GENERAL");
        if (QUORSettingsSearch::isGroup(_file, group)) {
            continue;
        }
        QString advice;
        for (const File other : {File::Main, File::Background, File::Colors, File::Styles, File::Landmarks}) {
            if (QUORSettingsSearch::isGroup(other, group)) {
                advice = QStringLiteral("it belongs into ") + QUORSettingsSearch::fileName(other);
            }
        }
        if (const QString near = QUORSettingsSearch::nearestGroup(_file, group);
            advice.isEmpty() && !near.isEmpty()) {
            advice = QStringLiteral("write [") + near + QLatin1Char(']');
        }
        add(Cost::Wrong, "unknown-group", {entry.line, general ? group : entry.section, {}},
            QStringLiteral("is no group of this file, nothing in it counts"), advice);
    }
}

void QUORSettingsAudit::checkKey(const Entry& entry) {
    const QString group = QUORSettingsSearch::toGroup(entry.section);
    if (!QUORSettingsSearch::isGroup(_file, group)) {
        const bool reported = !entry.section.isEmpty();
        if (!reported) {
            reportUnknown(entry, group);
        }
        return;
    }
    const auto target = QUORSettingsSearch::find(_file, group, entry.key);
    if (!target) {
        reportUnknown(entry, group);
    } else if (target->row != nullptr) {
        checkValue(entry, *target->row);
    } else if (!QUORSettingsReader::toInt(valueOf(entry))) {
        add(Cost::Wrong, "bad-value", entry,
            quoted(valueOf(entry)) + QStringLiteral(" is not a whole number, nothing of the array counts"),
            QStringLiteral("write the number of elements"));
    }
}

void QUORSettingsAudit::reportUnknown(const Entry& entry, const QString& group) {
    const QStringList places = QUORSettingsSearch::otherPlaces(_file, group, entry.key);
    const QString near = QUORSettingsSearch::nearestKey(_file, group, entry.key);
    if (!places.isEmpty() && near.compare(entry.key, Qt::CaseInsensitive) != 0) {
        add(Cost::Wrong, "wrong-group", entry, QStringLiteral("does not belong here and does not count"),
            QStringLiteral("move it to ") + places.join(QStringLiteral(" or ")));
        return;
    }
    add(Cost::Wrong, "unknown-key", entry, QStringLiteral("is not known and does not count"),
        near.isEmpty() ? QStringLiteral("known here: ") +
                             QUORSettingsSearch::keysOf(_file, group).join(QStringLiteral(", "))
                       : QStringLiteral("write ") + near);
}

void QUORSettingsAudit::checkValue(const Entry& entry, const QUORSettingsKey& row) {
    const QString value = valueOf(entry);
    const QString problem = QUORSettingsValue::findProblem(row, value);
    if (problem.isEmpty()) {
        return;
    }
    add(costOf(row), "bad-value", entry,
        quoted(value) + QLatin1Char(' ') + problem + QStringLiteral(", ") + describeOutcome(row, value),
        suggestValue(row, value));
}

void QUORSettingsAudit::checkDuplicates(const QUORSettingsText& text) {
    QMap<QString, Entry> last;
    for (const Entry& entry : text.getKeys()) {
        const QString place = describePlace(entry);
        if (const auto previous = last.constFind(place); previous != last.cend()) {
            const bool layers = previous->section != entry.section; // [%General] counts before [GENERAL]
            const Entry& idle = layers && !previous->section.isEmpty() ? entry : *previous;
            const Entry& counts = layers && !previous->section.isEmpty() ? *previous : entry;
            add(Cost::Wrong, "duplicate-key", idle,
                QStringLiteral("stands twice, only line ") + QString::number(counts.line) +
                    QStringLiteral(" counts"),
                QStringLiteral("remove one of the two"));
        }
        last.insert(place, entry);
    }
}

void QUORSettingsAudit::checkArrays(const QUORSettingsText& text) {
    struct Array {
        Entry first;
        int elements = 0;
    };
    QMap<QString, Array> arrays;
    QSet<QString> paths;
    for (const Entry& entry : text.getKeys()) {
        paths.insert(entry.path());
        if (const auto element = toElement(entry.key)) {
            const QString path = Entry{0, entry.section, element->array}.path();
            if (!arrays.contains(path)) {
                arrays.insert(path, {{entry.line, entry.section, element->array}, 0});
            }
            arrays[path].elements = std::max(arrays[path].elements, element->number);
        }
    }
    for (const Array& array : std::as_const(arrays)) {
        const QString size = array.first.path() + QStringLiteral("/size");
        const bool known = QUORSettingsSearch::find(_file, QUORSettingsSearch::toGroup(array.first.section),
                                                    array.first.key + QStringLiteral("/size"))
                               .has_value();
        // The 2D products are looked for whatever the size says.
        if (!known || array.first.key == QLatin1String("products")) {
            continue;
        }
        const std::optional<int> stored =
            QUORSettingsReader::toInt(QUORSettingsReader::toText(_settings->value(size)).value_or(QString()));
        const QString advice = QStringLiteral("write ") + array.first.key + QStringLiteral("\\size=") +
                               QString::number(array.elements);
        if (!paths.contains(size)) {
            add(Cost::Wrong, "array-without-size", array.first,
                QStringLiteral("has elements and no size, none of them counts"), advice);
        } else if (stored && *stored < array.elements) {
            add(Cost::Wrong, "array-too-short", array.first,
                QStringLiteral("has ") + QString::number(array.elements) +
                    QStringLiteral(" elements, its size says ") + QString::number(*stored),
                advice);
        }
    }
}

void QUORSettingsAudit::checkLandmarks(const QUORSettingsText& text) {
    struct Landmark {
        Entry first;
        QSet<QString> keys;
    };
    QMap<int, Landmark> landmarks;
    for (const Entry& entry : text.getKeys()) {
        const auto element = toElement(entry.key);
        if (element && element->array == QLatin1String("landmarks")) {
            Landmark& landmark = landmarks[element->number];
            landmark.first = landmark.keys.isEmpty() ? entry : landmark.first;
            landmark.keys.insert(element->key);
        }
    }
    for (const Landmark& landmark : std::as_const(landmarks)) {
        const bool placed = landmark.keys.contains(QStringLiteral("location/lat")) &&
                            landmark.keys.contains(QStringLiteral("location/lon"));
        if (!placed || !landmark.keys.contains(QStringLiteral("label"))) {
            add(Cost::Wrong, "landmark-without-place", landmark.first,
                placed ? QStringLiteral("is a landmark without a label, it is left out")
                       : QStringLiteral("is a landmark without a place, it is left out"),
                placed ? QStringLiteral("add its label")
                       : QStringLiteral("add location/lat and location/lon, in degrees"));
        }
    }
}
