// SPDX-License-Identifier: MIT
#pragma once

#include "QUORSettingsRows.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <span>

class QUORSettingsReader;

/// The one table of what the settings files may hold. Whoever reads a key takes its default and its range
/// from here; the tools that look at settings files, and the settings guide, say what stands here.
namespace QUORSettingsTable {

inline std::span<const QUORSettingsKey> getRows() {
    return QUORSettingsRows::ROWS;
}

/// The row of a key, by its group as the table writes it. One that the table does not hold does not compile.
consteval const QUORSettingsKey& row(std::string_view group, std::string_view name,
                                     std::string_view array = {}) {
    for (const QUORSettingsKey& key : QUORSettingsRows::ROWS) {
        if (key.group == group && key.array == array && key.name == name) {
            return key;
        }
    }
    throw "no such key";
}

/// What the open group, or the open element of an array, of a reader holds under a row's name. A value that
/// cannot be read, or is out of range, is a warning and what the row says becomes of it.
bool readFlag(const QUORSettingsReader& reader, const QUORSettingsKey& key);
int readWhole(const QUORSettingsReader& reader, const QUORSettingsKey& key);
double readNumber(const QUORSettingsReader& reader, const QUORSettingsKey& key);
/// Of a key whose default is computed.
double readNumber(const QUORSettingsReader& reader, const QUORSettingsKey& key, double fallback);
QString readText(const QUORSettingsReader& reader, const QUORSettingsKey& key);
std::array<double, 3> readColor(const QUORSettingsReader& reader, const QUORSettingsKey& key);

} // namespace QUORSettingsTable
