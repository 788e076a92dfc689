// SPDX-License-Identifier: MIT
#include "QUORSettingsSearch.h"

#include "QUORSettingsTable.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

using Key = QUORSettingsKey;
using File = QUORSettingsKey::File;

const QString GENERAL = QStringLiteral("GENERAL");
const QString SIZE = QStringLiteral("size");

struct FileRow {
    File file;
    const char* name;
    const char* part; ///< what a "*" in a group stands for
};

constexpr FileRow FILES[] = {
    {File::Main, "QUOR3D.conf", "\\S+"},
    {File::Background, "quor3dd.conf", "\\S+"},
    {File::Colors, "QUOR3DColors.conf", "\\d{1,3}"},
    {File::Styles, "QUOR3DVisStyles.conf", "(?:DAY|NIGHT)"},
    {File::Landmarks, "QUOR3DLandmarks.conf", "\\S+"},
};

/// What other programs and older habits call a key.
struct AliasRow {
    const char* alias;
    const char* key;
};

constexpr AliasRow ALIASES[] = {
    {"outdir", "directory"},
    {"outputdir", "directory"},
    {"outputdirectory", "directory"},
    {"output", "directory"},
    {"format", "outputformat"},
    {"imageformat", "outputformat"},
    {"dir3d", "data3d"},
    {"3d", "data3d"},
    {"dir2d", "data2d"},
    {"2d", "data2d"},
    {"terrain", "geolayer"},
    {"dem", "geolayer"},
    {"verticalscaling", "verticalscale"},
    {"view", "viewangle"},
    {"state", "displaystate"},
    {"colorscale", "colormap"},
    {"colourscale", "colormap"},
    {"units", "metricunits"},
    {"color", "colormap"},
    {"iso", "surface/N/isovalue"},
};

QString toText(std::string_view text) {
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

const FileRow& rowOf(File file) {
    return *std::ranges::find(FILES, file, &FileRow::file);
}

/// Each row's pattern is compiled once: a check of all files asks for each of them thousands of times.
bool matches(const QString& pattern, const QString& text) {
    thread_local QHash<QString, QRegularExpression> compiled;
    auto expression = compiled.find(pattern);
    if (expression == compiled.end()) {
        expression =
            compiled.insert(pattern, QRegularExpression(QRegularExpression::anchoredPattern(pattern)));
    }
    return expression->match(text).hasMatch();
}

bool isGroupOf(const Key& row, const QString& group) {
    return matches(QRegularExpression::escape(toText(row.group))
                       .replace(QStringLiteral("\\*"), QLatin1String(rowOf(row.file).part)),
                   group);
}

/// The key with its array, "N" and "*" standing for the numbers.
QString shapeOf(const Key& row) {
    return (row.array.empty() ? QString() : toText(row.array) + QStringLiteral("/N/")) + row.nameText();
}

bool isKeyOf(const Key& row, const QString& key) {
    const QString array = toText(row.array);
    QString pattern =
        array.isEmpty() ? QString() : QRegularExpression::escape(array) + QStringLiteral("/\\d+/");
    pattern +=
        QRegularExpression::escape(row.nameText())
            .replace(QStringLiteral("\\*"), QStringLiteral("(?:") + toText(row.choices) + QLatin1Char(')'));
    if (row.type == Key::Type::Color) {
        pattern += QStringLiteral("/[rgb]");
    }
    return matches(pattern, key);
}

/// Edits that turn one text into the other, in any case.
int distance(const QString& a, const QString& b) {
    std::vector<int> row(std::size_t(b.size()) + 1);
    std::iota(row.begin(), row.end(), 0);
    for (qsizetype i = 0; i < a.size(); ++i) {
        int diagonal = row[0]++;
        for (qsizetype j = 0; j < b.size(); ++j) {
            const std::size_t k = std::size_t(j) + 1;
            const int changed = diagonal + (a.at(i).toLower() == b.at(j).toLower() ? 0 : 1);
            diagonal = row[k];
            row[k] = std::min({changed, row[k] + 1, row[k - 1] + 1});
        }
    }
    return row.back();
}

/// A key with its numbers replaced, to be compared with shapes.
QString withoutNumbers(QString key) {
    return key.replace(QRegularExpression(QStringLiteral("/\\d+/")), QStringLiteral("/N/"));
}

} // namespace

namespace QUORSettingsSearch {

QString fileName(File file) {
    return QString::fromLatin1(rowOf(file).name);
}

QString toGroup(const QString& section) {
    return section.isEmpty() || section.compare(GENERAL, Qt::CaseInsensitive) == 0 ? GENERAL : section;
}

bool isGroup(File file, const QString& group) {
    return std::ranges::any_of(QUORSettingsTable::getRows(),
                               [&](const Key& row) { return row.file == file && isGroupOf(row, group); });
}

std::optional<Target> find(File file, const QString& group, const QString& key) {
    const QString array = key.section(QLatin1Char('/'), 0, 0);
    const bool isSize = key == array + QLatin1Char('/') + SIZE;
    for (const Key& row : QUORSettingsTable::getRows()) {
        if (row.file != file || !isGroupOf(row, group)) {
            continue;
        }
        if (isSize && toText(row.array) == array) {
            return Target{nullptr, file, group, key};
        }
        if (isKeyOf(row, key)) {
            return Target{&row, file, group, key};
        }
    }
    return std::nullopt;
}

QList<Target> findNamed(const QString& text) {
    QList<Target> found;
    QString path = text;
    path.replace(QLatin1Char('\\'), QLatin1Char('/'));
    for (const FileRow& file : FILES) {
        const QString group = path.section(QLatin1Char('/'), 0, 0);
        const QString section = group.compare(GENERAL, Qt::CaseInsensitive) == 0 ? GENERAL : group;
        if (const auto target = find(file.file, section, path.section(QLatin1Char('/'), 1))) {
            return {*target};
        }
        QStringList groups;
        for (const Key& row : QUORSettingsTable::getRows()) {
            const QString name = toText(row.group);
            if (row.file == file.file && !name.contains(QLatin1Char('*')) && !groups.contains(name)) {
                groups.append(name);
            }
        }
        for (const QString& name : groups) {
            if (const auto target = find(file.file, name, path)) {
                found.append(*target);
            }
        }
    }
    const auto isOfService = [](const Target& target) {
        return target.row == nullptr || target.row->use == Key::Use::Service;
    };
    if (std::ranges::any_of(found, isOfService)) {
        found.removeIf([&](const Target& target) { return !isOfService(target); });
    }
    return found;
}

QString nearest(const QString& text, const QStringList& known) {
    QString best;
    int least = std::max(2, int(text.size()) / 3) + 1;
    for (const QString& candidate : known) {
        if (const int edits = distance(text, candidate); edits < least) {
            least = edits;
            best = candidate;
        }
    }
    return best;
}

QString nearestGroup(File file, const QString& group) {
    QStringList known;
    for (const Key& row : QUORSettingsTable::getRows()) {
        if (row.file != file) {
            continue;
        }
        QString name = toText(row.group);
        // What stands for a "*" is taken over, as the product and the configuration.
        const QStringList parts = group.split(QRegularExpression(QStringLiteral("[ _]")));
        for (qsizetype i = 1; name.contains(QLatin1Char('*')) && file != File::Styles; ++i) {
            name.replace(name.indexOf(QLatin1Char('*')), 1,
                         parts.value(i).isEmpty() ? QStringLiteral("1") : parts.value(i));
        }
        known.append(name.replace(QLatin1Char('*'), QStringLiteral("DAY")));
        if (file == File::Styles) {
            known.append(known.constLast().chopped(3) + QStringLiteral("NIGHT"));
        }
    }
    return nearest(group, known);
}

QStringList keysOf(File file, const QString& group) {
    QStringList keys;
    for (const Key& row : QUORSettingsTable::getRows()) {
        if (row.file != file || !isGroupOf(row, group)) {
            continue;
        }
        const QString shape = shapeOf(row);
        const QStringList ends =
            row.type == Key::Type::Color
                ? QStringList{QStringLiteral("/r"), QStringLiteral("/g"), QStringLiteral("/b")}
                : QStringList{QString()};
        for (const QString& end : ends) {
            keys.append(shape + end);
        }
    }
    return keys;
}

QString nearestKey(File file, const QString& group, const QString& key) {
    const QStringList known = keysOf(file, group);
    const QString last = key.section(QLatin1Char('/'), -1).toLower();
    for (const AliasRow& row : ALIASES) {
        if (last == QLatin1String(row.alias) && known.contains(QLatin1String(row.key))) {
            return QString::fromLatin1(row.key);
        }
    }
    const QString near = nearest(withoutNumbers(key), known);
    if (!near.isEmpty()) {
        return near;
    }
    // A key of an array's element that was written without the array.
    const auto element = std::ranges::find_if(known, [&](const QString& name) {
        return name.section(QLatin1Char('/'), -1).compare(last, Qt::CaseInsensitive) == 0;
    });
    return element == known.cend() ? QString() : *element;
}

QStringList otherPlaces(File file, const QString& group, const QString& key) {
    QStringList places;
    for (const Key& row : QUORSettingsTable::getRows()) {
        const bool here = row.file == file && isGroupOf(row, group);
        if (here || !isKeyOf(row, key) || row.use == Key::Use::Client) {
            continue;
        }
        const QString place =
            QLatin1Char('[') + toText(row.group) + QStringLiteral("] of ") + fileName(row.file);
        if (!places.contains(place)) {
            places.append(place);
        }
    }
    return places;
}

} // namespace QUORSettingsSearch
