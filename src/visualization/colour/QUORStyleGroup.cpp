// SPDX-License-Identifier: MIT
#include "QUORStyleGroup.h"

#include "QUORAssert.h"
#include "QUORSettingsReader.h"

#include <algorithm>

const QString QUORStyleGroup::FILE_NAME = QStringLiteral("QUOR3DVisStyles");

namespace {

struct Range {
    double minimum;
    double maximum;
    bool clamps;
};

Range rangeOf(QUORStyleGroup::Kind kind) {
    switch (kind) {
    case QUORStyleGroup::Kind::LineWidth:
        return {0.01, 64.0, false};
    case QUORStyleGroup::Kind::HaloWidth:
        return {0.0, 16.0, false};
    case QUORStyleGroup::Kind::Length:
        return {0.01, 1.0e6, false};
    case QUORStyleGroup::Kind::FontSize:
        return {1.0, 200.0, false};
    case QUORStyleGroup::Kind::Color:
    case QUORStyleGroup::Kind::Opacity:
        break;
    }
    return {0.0, 1.0, true};
}

double readNumber(const QUORSettingsReader& reader, const QString& key, QUORStyleGroup::Kind kind,
                  double fallback) {
    const Range range = rangeOf(kind);
    return range.clamps ? reader.readDoubleClamped(key, fallback, range.minimum, range.maximum)
                        : reader.readDouble(key, fallback, range.minimum, range.maximum);
}

QUORStyleGroup::Color readRow(const QUORSettingsReader& reader, const QUORStyleGroup::Row& row) {
    const QString key = QString::fromLatin1(row.key.data(), static_cast<qsizetype>(row.key.size()));
    QUORStyleGroup::Color value = row.fallback;
    if (row.kind != QUORStyleGroup::Kind::Color) {
        value[0] = readNumber(reader, key, row.kind, row.fallback[0]);
        return value;
    }
    static constexpr std::array<const char*, 3> COMPONENTS{"/r", "/g", "/b"};
    for (std::size_t i = 0; i < COMPONENTS.size(); ++i) {
        value[i] = readNumber(reader, key + COMPONENTS[i], row.kind, row.fallback[i]);
    }
    return value;
}

} // namespace

QUORStyleGroup::QUORStyleGroup(const char* component, std::span<const Row> rows)
    : _component(component), _rows(rows), _values(rows.size()) {
    std::ranges::transform(rows, _values.begin(), &Row::fallback);
}

void QUORStyleGroup::load(bool night) {
    const QString group = QLatin1String(_component) + QLatin1String(night ? "_NIGHT" : "_DAY");
    QUORSettingsReader reader(FILE_NAME);
    reader.beginGroup(group);
    std::ranges::transform(_rows, _values.begin(), [&](const Row& row) { return readRow(reader, row); });
    reader.endGroup();
}

const QUORStyleGroup::Color& QUORStyleGroup::color(std::string_view key) const {
    const std::size_t index = indexOf(key);
    QUOR_ASSERT(_rows[index].kind == Kind::Color);
    return _values[index];
}

double QUORStyleGroup::number(std::string_view key) const {
    const std::size_t index = indexOf(key);
    QUOR_ASSERT(_rows[index].kind != Kind::Color);
    return _values[index][0];
}

std::size_t QUORStyleGroup::indexOf(std::string_view key) const {
    const auto row = std::ranges::find(_rows, key, &Row::key);
    QUOR_ASSERT(row != _rows.end());
    return static_cast<std::size_t>(row - _rows.begin());
}
