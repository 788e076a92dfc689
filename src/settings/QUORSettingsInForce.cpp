// SPDX-License-Identifier: MIT
#include "QUORSettingsInForce.h"

#include "QUORBackgroundSettings.h"
#include "QUORSettingsFile.h"
#include "QUORSettingsReader.h"
#include "QUORSettingsTable.h"
#include "QUORSettingsText.h"
#include "QUORSettingsValue.h"
#include "QUORSystem.h"

#include <QFileInfo>
#include <QMap>
#include <QSettings>

#include <algorithm>

namespace {

using File = QUORSettingsKey::File;
using Source = QUORSettingsInForce::Source;
using Target = QUORSettingsSearch::Target;
using Value = QUORSettingsInForce::Value;

struct Stored {
    QString text;
    int line = 0;
};

/// The keys of one file by group and key, as they count.
using Content = QMap<QString, Stored>;

Content readContent(const QString& path) {
    Content content;
    QString error;
    const QUORSettingsText text(QUORSettingsFile::read(path, error).value_or(QByteArray()));
    const QSettings settings(path, QSettings::NativeFormat);
    settings.allKeys();
    QMap<QString, QString> sections;
    for (const QUORSettingsText::Entry& entry : text.getKeys()) {
        const QString place = QUORSettingsSearch::toGroup(entry.section) + QLatin1Char('/') + entry.key;
        // What a program saved counts before what stands without a group.
        if (entry.section.isEmpty() && !sections.value(place).isEmpty()) {
            continue;
        }
        sections.insert(place, entry.section);
        content.insert(place, {QUORSettingsReader::toText(settings.value(entry.path())).value_or(QString()),
                               entry.line});
    }
    return content;
}

QString fallbackOf(const QUORSettingsKey& row, const QString& key) {
    if (row.type != QUORSettingsKey::Type::Color) {
        return QUORSettingsValue::describeDefault(row);
    }
    const qsizetype component = QStringLiteral("rgb").indexOf(key.back());
    return QString::number(row.number[std::size_t(std::max<qsizetype>(component, 0))]);
}

/// The text that counts in place of one that cannot be read, or is out of range.
QString accepted(const QUORSettingsKey& row, const QString& key, const QString& text) {
    const std::optional<double> number = QUORSettingsReader::toDouble(text);
    const bool whole = row.type != QUORSettingsKey::Type::Whole || QUORSettingsReader::toInt(text);
    if (number && whole && row.beyond == QUORSettingsKey::Beyond::Limited) {
        return QString::number(std::clamp(*number, row.minimum, row.maximum));
    }
    const bool kept =
        row.type == QUORSettingsKey::Type::Choice || (number && row.beyond == QUORSettingsKey::Beyond::Kept);
    return kept ? text : fallbackOf(row, key);
}

/// The array that a key is an element or the size of, with its group.
QString arrayPath(const Target& target) {
    const bool inArray = target.row == nullptr || !target.row->array.empty();
    return inArray ? target.group + QLatin1Char('/') + target.key.section(QLatin1Char('/'), 0, 0) : QString();
}

Value findIn(const Target& target, const QStringList& files, const QList<Content>& contents) {
    Value value;
    value.target = target;
    value.text = target.row != nullptr ? fallbackOf(*target.row, target.key) : QStringLiteral("0");
    const QString array = arrayPath(target);
    for (qsizetype i = 0; i < files.size(); ++i) {
        const Content& content = contents.at(i);
        const auto stored = content.constFind(target.path());
        if (stored != content.cend()) {
            value.source = i == 0 ? Source::User : Source::Packaged;
            value.file = files.at(i);
            value.line = stored->line;
            value.text = stored->text;
            break;
        }
        if (!array.isEmpty() && content.contains(array + QStringLiteral("/size"))) {
            break; // an array comes from one file
        }
    }
    if (target.row != nullptr && value.source != Source::BuiltIn) {
        value.problem = QUORSettingsValue::findProblem(*target.row, value.text);
        if (!value.problem.isEmpty()) {
            value.rejected = value.text;
            value.text = accepted(*target.row, target.key, value.text);
        }
    }
    return value;
}

/// The keys of a group that have one place each, whether they are stored or not.
QList<Target> plainTargets(File file, const QString& group) {
    QList<Target> targets;
    for (const QString& key : QUORSettingsSearch::keysOf(file, group)) {
        const auto target = QUORSettingsSearch::find(file, group, key);
        if (target && target->row != nullptr && target->row->array.empty()) {
            targets.append(*target);
        }
    }
    return targets;
}

} // namespace

namespace QUORSettingsInForce {

QStringList getFiles(File file) {
    if (file == File::Background) {
        return {QUORBackgroundSettings::getBgSettingsFileName(),
                QUORBackgroundSettings::getPackagedFileName()};
    }
    const QString name = QFileInfo(QUORSettingsSearch::fileName(file)).baseName();
    const QSettings packaged(QSettings::NativeFormat, QSettings::SystemScope, QUORSystem::ORGANIZATION_NAME,
                             name);
    return {QUORSettingsReader::findUserFile(name), packaged.fileName()};
}

Value find(const Target& target) {
    const QStringList files = getFiles(target.file);
    QList<Content> contents;
    for (const QString& file : files) {
        contents.append(readContent(file));
    }
    return findIn(target, files, contents);
}

QList<Value> findAll(const QString& group) {
    QList<Value> values;
    for (const File file : {File::Main, File::Background, File::Colors, File::Styles, File::Landmarks}) {
        const QStringList files = getFiles(file);
        QList<Content> contents;
        QStringList groups;
        for (const QUORSettingsKey& row : QUORSettingsTable::getRows()) {
            const QString name = QString::fromUtf8(row.group.data(), qsizetype(row.group.size()));
            if (row.file == file && row.use == QUORSettingsKey::Use::Service &&
                !name.contains(QLatin1Char('*'))) {
                groups.append(name);
            }
        }
        QMap<QString, QStringList> stored;
        for (const QString& path : files) {
            contents.append(readContent(path));
            for (const QString& place : contents.constLast().keys()) {
                const QString section = place.section(QLatin1Char('/'), 0, 0);
                groups.append(section);
                stored[section].append(place.section(QLatin1Char('/'), 1));
            }
        }
        groups.removeDuplicates();
        for (const QString& name : groups) {
            if ((!group.isEmpty() && group != name) || !QUORSettingsSearch::isGroup(file, name)) {
                continue;
            }
            QList<Target> targets = plainTargets(file, name);
            QStringList keys = stored.value(name);
            keys.removeDuplicates();
            for (const QString& key : keys) {
                const auto target = QUORSettingsSearch::find(file, name, key);
                if (target && !arrayPath(*target).isEmpty()) {
                    targets.append(*target);
                }
            }
            for (const Target& target : targets) {
                const bool client = target.row != nullptr && target.row->use == QUORSettingsKey::Use::Client;
                Value value = findIn(target, files, contents);
                const bool idle = value.source == Source::BuiltIn && !arrayPath(target).isEmpty();
                if (!idle && (!client || !group.isEmpty())) {
                    values.append(value);
                }
            }
        }
    }
    return values;
}

} // namespace QUORSettingsInForce
