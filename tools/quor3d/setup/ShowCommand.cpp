// SPDX-License-Identifier: MIT
#include "ShowCommand.h"

#include "QUORSettingsInForce.h"
#include "QUORSettingsValue.h"
#include "SettingNames.h"
#include "TextTable.h"
#include "ToolApplication.h"

#include <CLI/CLI.hpp>

#include <QRegularExpression>

#include <algorithm>
#include <iostream>

namespace {

using Source = QUORSettingsInForce::Source;
using Value = QUORSettingsInForce::Value;

QString toText(Source source) {
    switch (source) {
    case Source::User:
        return QStringLiteral("user");
    case Source::Packaged:
        return QStringLiteral("packaged");
    case Source::BuiltIn:
        break;
    }
    return QStringLiteral("built in");
}

QString describeSource(const Value& value) {
    QString text = toText(value.source);
    if (!value.file.isEmpty()) {
        text += QLatin1Char(' ') + value.file + QLatin1Char(':') + QString::number(value.line);
    }
    if (!value.problem.isEmpty()) {
        text += QStringLiteral(", where \"") + value.rejected + QStringLiteral("\" ") + value.problem;
    }
    return text;
}

QString meaningOf(const Value& value) {
    if (value.target.row == nullptr) {
        return QStringLiteral("number of elements");
    }
    static const QRegularExpression link(QStringLiteral("\\[([^\\]]*)\\]\\([^)]*\\)|`"));
    const std::string_view text = value.target.row->meaning;
    const QString range = QUORSettingsValue::describeRange(*value.target.row);
    QString meaning = QString::fromUtf8(text.data(), qsizetype(text.size()));
    return meaning.replace(link, QStringLiteral("\\1")) +
           (range.isEmpty() ? QString() : QStringLiteral("; ") + range);
}

QJsonObject toJson(const Value& value) {
    return {{"group", value.target.group},
            {"key", value.target.key},
            {"value", value.text},
            {"source", value.source == Source::BuiltIn ? QStringLiteral("built_in") : toText(value.source)},
            {"file", value.file},
            {"line", value.line},
            {"rejected", value.rejected},
            {"problem", value.problem},
            {"type", value.target.row != nullptr ? QUORSettingsValue::describeType(*value.target.row)
                                                 : QStringLiteral("int")},
            {"default",
             value.target.row != nullptr ? QUORSettingsValue::describeDefault(*value.target.row) : QString()},
            {"meaning", meaningOf(value)}};
}

/// A group by the name that was typed, in any case.
QList<Value> findGroup(const QString& name) {
    QList<Value> all = QUORSettingsInForce::findAll({});
    all.removeIf(
        [&](const Value& value) { return value.target.group.compare(name, Qt::CaseInsensitive) != 0; });
    return all.isEmpty() ? QUORSettingsInForce::findAll(name) : all;
}

} // namespace

std::string ShowCommand::examples() const {
    return "  quor3d show                        every setting of the service\n"
           "  quor3d show BACKGROUND             one group\n"
           "  quor3d show 'PRODUCT CAPPI Z'      how reflectivity is drawn\n"
           "  quor3d show timewindow --explain   one key, with its meaning and range\n";
}

void ShowCommand::addOptions(CLI::App& app) {
    app.add_option("NAME", _name, "A group, a key, or GROUP/KEY")->type_name("");
    app.add_flag("--explain", _explains, "Say what each key means");
    _user.addOption(app);
    _json.addOption(app);
}

ExitStatus ShowCommand::run() {
    const ToolApplication application;
    _user.become();
    const QString name = QString::fromStdString(_name);
    QList<Value> values = name.isEmpty() ? QUORSettingsInForce::findAll({}) : findGroup(name);
    if (values.isEmpty()) {
        const auto target = SettingNames::find(_name);
        if (!target) {
            return ExitStatus::WrongUse;
        }
        values = {QUORSettingsInForce::find(*target)};
    }
    if (_json.isWanted()) {
        QJsonArray array;
        for (const Value& value : values) {
            array.append(toJson(value));
        }
        JsonOutput::print(array);
        return ExitStatus::Success;
    }
    TextTable table;
    for (const Value& value : values) {
        table.add({value.target.path(), value.text, describeSource(value)});
        if (_explains) {
            table.add({QStringLiteral("    ") + meaningOf(value)});
        }
    }
    table.print();
    return ExitStatus::Success;
}
