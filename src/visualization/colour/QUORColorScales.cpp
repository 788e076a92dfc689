// SPDX-License-Identifier: MIT
#include "QUORColorScales.h"

#include "QUORDataType.h"
#include "QUORSettingsReader.h"
#include "QUORSettingsTable.h"
#include "QUORSettingsWriter.h"

#include <QSettings>

#include <algorithm>

namespace {

const QString COLORS_FILE = QStringLiteral("QUOR3DColors");
const QString SCALE_GROUP = QStringLiteral("COLORSCALE ");
const QString SET_GROUP = QStringLiteral("COLORSET ");
const QString POINTS = QStringLiteral("points");
constexpr int LARGEST_ID = 999;

QString numbered(const QString& group, int number) {
    return group + QString::number(number);
}

QUORColorScales::Scale read(QUORSettingsReader& reader, int id) {
    using namespace QUORSettingsTable;
    QUORColorScales::Scale scale;
    scale.id = id;
    reader.beginGroup(numbered(SCALE_GROUP, id));
    scale.name = readText(reader, row("COLORSCALE *", "name"));
    scale.dataIndex = readWhole(reader, row("COLORSCALE *", "data_index"));
    scale.setId = readWhole(reader, row("COLORSCALE *", "colorset_index"));
    scale.units = readText(reader, row("COLORSCALE *", "data_units"));
    const int size = reader.beginReadArray(POINTS);
    for (int i = 0; i < size; ++i) {
        reader.setArrayIndex(i);
        scale.seams.append(readNumber(reader, row("COLORSCALE *", "seam", "points")));
    }
    reader.endArray();
    reader.endGroup();
    return scale;
}

/// The numbers of the groups with that name, ascending.
QList<int> numbersOf(const QStringList& groups, const QString& name) {
    QList<int> numbers;
    for (const QString& group : groups) {
        bool good = false;
        const int number = group.mid(name.size()).toInt(&good);
        if (group.startsWith(name) && good && number >= 0 && number <= LARGEST_ID) {
            numbers.append(number);
        }
    }
    std::ranges::sort(numbers);
    return numbers;
}

int firstFree(const QList<int>& numbers) {
    int number = 1;
    while (numbers.contains(number)) {
        ++number;
    }
    return number;
}

/// The seams and their colours. The map draws what a seam begins with, so where an interval ends in another
/// colour than the next one begins with, a seam more stands close before the next.
QList<QUORPaletteFile::Interval> toSeams(const QUORPaletteFile& palette) {
    constexpr double CLOSE = 0.999;
    QList<QUORPaletteFile::Interval> seams;
    const auto& intervals = palette.getIntervals();
    for (qsizetype i = 0; i < intervals.size(); ++i) {
        const QUORPaletteFile::Interval& interval = intervals.at(i);
        const bool last = i + 1 == intervals.size();
        const double next = last ? palette.getEnd() : intervals.at(i + 1).value;
        seams.append(interval);
        const bool jumps =
            !last && interval.lower != interval.upper && interval.upper != intervals.at(i + 1).lower;
        if (jumps) {
            seams.append({interval.value + CLOSE * (next - interval.value), interval.upper,
                          intervals.at(i + 1).lower});
        } else if (last && next > interval.value) {
            seams.append({next, interval.upper, interval.upper});
        }
    }
    return seams;
}

bool writeSet(QSettings& settings, int id, const QString& name,
              const QList<QUORPaletteFile::Interval>& seams) {
    QUORSettingsWriter writer(settings, numbered(SET_GROUP, id));
    writer.write(QStringLiteral("name"), name);
    writer.beginWriteArray(POINTS, int(seams.size()));
    for (int i = 0; i < int(seams.size()); ++i) {
        static constexpr std::array<const char*, 3> NAMES{"r", "g", "b"};
        writer.setArrayIndex(i);
        for (std::size_t k = 0; k < NAMES.size(); ++k) {
            writer.write(QStringLiteral("lower/") + QLatin1String(NAMES[k]), seams.at(i).lower[k]);
            writer.write(QStringLiteral("upper/") + QLatin1String(NAMES[k]), seams.at(i).upper[k]);
        }
    }
    writer.endArray();
    return writer.commit();
}

bool removeGroup(QSettings& settings, const QString& group) {
    QUORSettingsWriter writer(settings, group);
    settings.beginGroup(group);
    const QStringList keys = settings.allKeys();
    settings.endGroup();
    for (const QString& key : keys) {
        writer.remove(key);
    }
    return writer.commit();
}

} // namespace

namespace QUORColorScales {

QString getUserFile() {
    return QUORSettingsReader::findUserFile(COLORS_FILE);
}

QList<Scale> list() {
    QUORSettingsReader reader(COLORS_FILE);
    QSettings user(getUserFile(), QSettings::NativeFormat);
    const QStringList ofUser = user.childGroups();
    QList<Scale> scales;
    for (const int id : numbersOf(reader.settings().childGroups(), SCALE_GROUP)) {
        scales.append(read(reader, id));
        scales.last().isUser = ofUser.contains(numbered(SCALE_GROUP, id));
    }
    return scales;
}

int findDataIndex(const QString& configuration) {
    QUORSettingsReader reader(COLORS_FILE);
    reader.beginGroup(QStringLiteral("DATAMAPPING"));
    const int count = reader.beginReadArray(QStringLiteral("data"));
    for (const QUORDataType::Row& row : QUORDataType::getRows()) {
        if (row.configuration != nullptr && configuration == QLatin1String(row.configuration) &&
            row.code >= 0 && row.code < count) {
            reader.setArrayIndex(row.code);
            return QUORSettingsTable::readWhole(reader,
                                                QUORSettingsTable::row("DATAMAPPING", "data_index", "data"));
        }
    }
    return 0;
}

int findDataType(int dataIndex) {
    for (const QUORDataType::Row& row : QUORDataType::getRows()) {
        if (row.configuration != nullptr && row.code >= 0 &&
            findDataIndex(QString::fromLatin1(row.configuration)) == dataIndex) {
            return row.code;
        }
    }
    return -1;
}

bool add(const QString& name, int dataIndex, const QString& units, const QUORPaletteFile& palette) {
    QUORSettingsReader reader(COLORS_FILE);
    const QStringList groups = reader.settings().childGroups();
    const int setId = firstFree(numbersOf(groups, SET_GROUP));
    QSettings settings(getUserFile(), QSettings::NativeFormat);
    const QList<QUORPaletteFile::Interval> seams = toSeams(palette);
    if (!writeSet(settings, setId, name, seams)) {
        return false;
    }
    QUORSettingsWriter writer(settings, numbered(SCALE_GROUP, firstFree(numbersOf(groups, SCALE_GROUP))));
    writer.write(QStringLiteral("name"), name);
    writer.write(QStringLiteral("data_index"), dataIndex);
    writer.write(QStringLiteral("colorset_index"), setId);
    writer.write(QStringLiteral("data_units"), units);
    writer.beginWriteArray(POINTS, int(seams.size()));
    for (int i = 0; i < int(seams.size()); ++i) {
        writer.setArrayIndex(i);
        writer.write(QStringLiteral("seam"), seams.at(i).value);
    }
    writer.endArray();
    return writer.commit();
}

bool rename(int id, const QString& name) {
    QSettings settings(getUserFile(), QSettings::NativeFormat);
    QUORSettingsWriter writer(settings, numbered(SCALE_GROUP, id));
    writer.write(QStringLiteral("name"), name);
    return writer.commit();
}

bool remove(int id) {
    const QList<Scale> scales = list();
    const auto scale = std::ranges::find(scales, id, &Scale::id);
    QSettings settings(getUserFile(), QSettings::NativeFormat);
    const auto others = std::ranges::count(scales, scale != scales.cend() ? scale->setId : 0, &Scale::setId);
    return removeGroup(settings, numbered(SCALE_GROUP, id)) &&
           (scale == scales.cend() || others > 1 || removeGroup(settings, numbered(SET_GROUP, scale->setId)));
}

} // namespace QUORColorScales
