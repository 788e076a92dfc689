// SPDX-License-Identifier: MIT
#include "SettingNames.h"

#include "QUORSettingsTable.h"

#include <algorithm>
#include <iostream>

namespace {

using File = QUORSettingsKey::File;

QString toText(std::string_view text) {
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

/// Every key that could have been meant, in the form in which it is typed.
QStringList suggest(const QString& text) {
    const QString group = text.section(QLatin1Char('/'), 0, 0);
    const QString last = text.section(QLatin1Char('/'), -1);
    QStringList known;
    QStringList names;
    for (const QUORSettingsKey& row : QUORSettingsTable::getRows()) {
        if (row.use == QUORSettingsKey::Use::Client || row.file == File::Styles) {
            continue;
        }
        const QString element = row.array.empty() ? QString() : toText(row.array) + QStringLiteral("/N/");
        const QString name = toText(row.group) + QLatin1Char('/') + element + row.nameText();
        const QString near = QUORSettingsSearch::nearestKey(row.file, toText(row.group), last);
        if (near == element + row.nameText() ||
            QUORSettingsSearch::nearest(last, {row.nameText()}) == row.nameText()) {
            known.append(name);
        }
        if (toText(row.group) == group) {
            names.append(name);
        }
    }
    known.removeDuplicates();
    return known.isEmpty() ? names : known;
}

} // namespace

std::optional<QUORSettingsSearch::Target> SettingNames::find(const std::string& text) {
    const QString name = QString::fromStdString(text);
    const QList<QUORSettingsSearch::Target> targets = QUORSettingsSearch::findNamed(name);
    if (targets.size() == 1) {
        return targets.constFirst();
    }
    if (targets.isEmpty()) {
        std::cerr << "quor3d: there is no setting " << text << '\n';
        const QStringList near = suggest(name).mid(0, 5);
        if (!near.isEmpty()) {
            std::cerr << "Did you mean " << near.join(QStringLiteral(", ")).toStdString() << "?\n";
        }
        return std::nullopt;
    }
    std::cerr << "quor3d: " << text << " stands in several groups:";
    for (const auto& target : targets) {
        std::cerr << ' ' << target.path().toStdString();
    }
    std::cerr << '\n';
    return std::nullopt;
}
