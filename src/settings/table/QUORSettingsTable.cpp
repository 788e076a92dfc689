// SPDX-License-Identifier: MIT
#include "QUORSettingsTable.h"

#include "QUORSettingsReader.h"

namespace {

double readIn(const QUORSettingsReader& reader, const QString& name, const QUORSettingsKey& key,
              double fallback) {
    switch (key.beyond) {
    case QUORSettingsKey::Beyond::Limited:
        return reader.readDoubleClamped(name, fallback, key.minimum, key.maximum);
    case QUORSettingsKey::Beyond::Kept:
        return reader.readDouble(name, fallback);
    case QUORSettingsKey::Beyond::Refused:
        break;
    }
    return reader.readDouble(name, fallback, key.minimum, key.maximum);
}

} // namespace

namespace QUORSettingsTable {

bool readFlag(const QUORSettingsReader& reader, const QUORSettingsKey& key) {
    return reader.readBool(key.nameText(), key.flag());
}

int readWhole(const QUORSettingsReader& reader, const QUORSettingsKey& key) {
    const int minimum = int(key.minimum);
    const int maximum = int(key.maximum);
    return key.beyond == QUORSettingsKey::Beyond::Limited
               ? reader.readIntClamped(key.nameText(), key.whole(), minimum, maximum)
               : reader.readInt(key.nameText(), key.whole(), minimum, maximum);
}

double readNumber(const QUORSettingsReader& reader, const QUORSettingsKey& key) {
    return readIn(reader, key.nameText(), key, key.number[0]);
}

double readNumber(const QUORSettingsReader& reader, const QUORSettingsKey& key, double fallback) {
    return readIn(reader, key.nameText(), key, fallback);
}

QString readText(const QUORSettingsReader& reader, const QUORSettingsKey& key) {
    return reader.readText(key.nameText(), key.defaultText());
}

std::array<double, 3> readColor(const QUORSettingsReader& reader, const QUORSettingsKey& key) {
    static constexpr std::array<const char*, 3> COMPONENTS{"/r", "/g", "/b"};
    std::array<double, 3> color{};
    for (std::size_t i = 0; i < color.size(); ++i) {
        color[i] = readIn(reader, key.nameText() + QLatin1String(COMPONENTS[i]), key, key.number[i]);
    }
    return color;
}

} // namespace QUORSettingsTable
