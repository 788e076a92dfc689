// SPDX-License-Identifier: MIT
#include "QUORStyleGroup.h"

#include "QUORAssert.h"
#include "QUORSettingsReader.h"
#include "QUORSettingsTable.h"

#include <algorithm>

const QString QUORStyleGroup::FILE_NAME = QStringLiteral("QUOR3DVisStyles");

namespace {

/// Of a group as the table writes it, "COMPASS_*".
std::string_view componentOf(const QUORSettingsKey& row) {
    return row.file == QUORSettingsKey::File::Styles ? row.group.substr(0, row.group.find("_*"))
                                                     : std::string_view();
}

std::span<const QUORSettingsKey> findRows(std::string_view component) {
    const std::span<const QUORSettingsKey> rows = QUORSettingsTable::getRows();
    const auto belongs = [&](const QUORSettingsKey& row) { return componentOf(row) == component; };
    const auto first = std::ranges::find_if(rows, belongs);
    QUOR_ASSERT(first != rows.end());
    return {first, std::find_if_not(first, rows.end(), belongs)};
}

} // namespace

QUORStyleGroup::QUORStyleGroup(std::string_view component)
    : _rows(findRows(component)), _values(_rows.size()) {
    std::ranges::transform(_rows, _values.begin(), &QUORSettingsKey::number);
}

void QUORStyleGroup::load(bool night) {
    const std::string_view component = componentOf(_rows.front());
    QUORSettingsReader reader(FILE_NAME);
    reader.beginGroup(QString::fromLatin1(component.data(), qsizetype(component.size())) +
                      QLatin1String(night ? "_NIGHT" : "_DAY"));
    std::ranges::transform(_rows, _values.begin(), [&](const QUORSettingsKey& row) {
        return row.type == QUORSettingsKey::Type::Color ? QUORSettingsTable::readColor(reader, row)
                                                        : Color{QUORSettingsTable::readNumber(reader, row)};
    });
    reader.endGroup();
}

const QUORStyleGroup::Color& QUORStyleGroup::color(std::string_view key) const {
    const std::size_t index = indexOf(key);
    QUOR_ASSERT(_rows[index].type == QUORSettingsKey::Type::Color);
    return _values[index];
}

double QUORStyleGroup::number(std::string_view key) const {
    const std::size_t index = indexOf(key);
    QUOR_ASSERT(_rows[index].type != QUORSettingsKey::Type::Color);
    return _values[index][0];
}

std::size_t QUORStyleGroup::indexOf(std::string_view key) const {
    const auto row = std::ranges::find(_rows, key, &QUORSettingsKey::name);
    QUOR_ASSERT(row != _rows.end());
    return static_cast<std::size_t>(row - _rows.begin());
}
