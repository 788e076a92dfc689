// SPDX-License-Identifier: MIT
#include "QUORProductSettings.h"

#include "QUORConfig.h"
#include "QUORDataType.h"
#include "QUORLog.h"
#include "QUORLogOnce.h"
#include "QUORSettingsReader.h"
#include "QUORSettingsTable.h"
#include "QUORSettingsWriter.h"

const QString QUORProductSettings::COLOR_MAP = QStringLiteral("colormap");

namespace {

consteval const QUORSettingsKey& row(std::string_view name) {
    return QUORSettingsTable::row("PRODUCT * *", name);
}
constexpr QUORSettingsKey ISOVALUE = QUORSettingsTable::row("PRODUCT * *", "isovalue", "surface");
constexpr QUORSettingsKey OPACITY = QUORSettingsTable::row("PRODUCT * *", "opacity", "surface");

struct TypeRow {
    QUORProductSettings::RenderingType type;
    const char* text;
};

constexpr TypeRow TYPES[] = {
    {QUORProductSettings::Surface, "surface"},
    {QUORProductSettings::Volume, "volume"},
};

QUORProductSettings::RenderingType toType(const QString& text) {
    for (const TypeRow& row : TYPES) {
        if (text == QLatin1String(row.text)) {
            return row.type;
        }
    }
    return QUORProductSettings::Unknown;
}

} // namespace

QUORProductSettings::QUORProductSettings(const QString& product, const QString& configuration,
                                         const QUORDataType& dataType, Generated generated) {
    load(product, configuration, dataType, generated);
}

QString QUORProductSettings::groupName() const {
    return QUORConfig::PRODUCT_GROUP + QLatin1Char(' ') + _product + QLatin1Char(' ') + _configuration;
}

QString QUORProductSettings::renderingTypeToString() const {
    for (const TypeRow& row : TYPES) {
        if (row.type == _renderingType) {
            return QString::fromLatin1(row.text);
        }
    }
    return QStringLiteral("unknown");
}

void QUORProductSettings::reset(const QUORDataType* dataType) {
    _volumeValueLow = dataType != nullptr ? dataType->getMinDisplayValue() : -9999.0;
    _volumeValueHigh = dataType != nullptr ? 0.7 * dataType->getMaxDisplayValue() : 9999.0;
    _volumeOpacityLow = row("volumeopacitylow").number[0];
    _volumeOpacityHigh = row("volumeopacityhigh").number[0];
    _renderingType = toType(row("rendering").defaultText());
    _colorMapName = row("colormap").defaultText();
    _surfaces = {{_volumeValueLow, OPACITY.whole()}};
}

bool QUORProductSettings::load(const QString& product, const QString& configuration,
                               const QUORDataType& dataType, Generated generated) {
    _product = product;
    _configuration = configuration;
    reset(&dataType);
    {
        const QUORConfig::Access settings;
        QUORSettingsReader reader(*settings);
        reader.beginGroup(groupName());
        readValues(reader);
        if (reader.contains(QUORConfig::PRODUCT_RENDERING_TYPE)) {
            return true;
        }
    }
    QUORLog::Instance().logDebug(QStringLiteral("QUORProductSettings::load(): Group not found: ") +
                                 groupName());
    QUORLog::Instance().logDebug(QStringLiteral("-> Generating new default rendering settings."));
    if (generated == Saved && dataType.getMinDisplayValue() < dataType.getMaxDisplayValue()) {
        const QUORConfig::Access settings;
        QUORSettingsWriter writer(*settings, groupName());
        writeValues(writer);
        writer.commitMissing();
    }
    return false;
}

// The record holds the defaults.
void QUORProductSettings::readValues(QUORSettingsReader& reader) {
    const QString rendering = QUORSettingsTable::readText(reader, row("rendering"));
    _renderingType = toType(rendering);
    const QString file = reader.settings().fileName();
    const QString subject = QStringLiteral("rendering ") + file + groupName();
    if (_renderingType == Unknown) {
        QUORLogOnce::logWarning(subject, QStringLiteral("Settings file ") + file + QStringLiteral(": ") +
                                             groupName() + QStringLiteral("/rendering=") + rendering +
                                             QStringLiteral(" is not surface or volume, nothing is drawn"));
    } else {
        QUORLogOnce::forget(subject);
    }
    using namespace QUORSettingsTable;
    _colorMapName = readText(reader, row("colormap"));
    readSurfaces(reader);
    _volumeValueLow = readNumber(reader, row("volumevaluelow"), _volumeValueLow);
    _volumeValueHigh = readNumber(reader, row("volumevaluehigh"), _volumeValueHigh);
    _volumeOpacityLow = readNumber(reader, row("volumeopacitylow"));
    _volumeOpacityHigh = readNumber(reader, row("volumeopacityhigh"));
}

// In a group without a rendering the one default surface takes what is written of it.
void QUORProductSettings::readSurfaces(QUORSettingsReader& reader) {
    const bool stored = reader.contains(QUORConfig::PRODUCT_RENDERING_TYPE) ||
                        reader.contains(QUORConfig::PRODUCT_SURFACE_ARRAY + QStringLiteral("/size"));
    const int size = reader.beginReadArray(QUORConfig::PRODUCT_SURFACE_ARRAY, MAXIMUM_SURFACES);
    const int count = stored ? size : 1;
    _surfaces.clear();
    for (int i = 0; i < count; ++i) {
        reader.setArrayIndex(i);
        const double value = QUORSettingsTable::readNumber(reader, ISOVALUE, _volumeValueLow);
        _surfaces[value] = QUORSettingsTable::readWhole(reader, OPACITY);
    }
    reader.endArray();
}

void QUORProductSettings::save() const {
    const QUORConfig::Access settings;
    QUORSettingsWriter writer(*settings, groupName());
    writeValues(writer);
    writer.commit();
}

void QUORProductSettings::writeValues(QUORSettingsWriter& writer) const {
    writer.write(QUORConfig::PRODUCT_RENDERING_TYPE, renderingTypeToString());
    writer.write(COLOR_MAP, _colorMapName);
    writer.beginWriteArray(QUORConfig::PRODUCT_SURFACE_ARRAY, int(_surfaces.size()));
    int index = 0;
    for (auto surface = _surfaces.cbegin(); surface != _surfaces.cend(); ++surface) {
        writer.setArrayIndex(index++);
        writer.write(QUORConfig::PRODUCT_SURFACE_VALUE, surface.key());
        writer.write(QUORConfig::PRODUCT_SURFACE_OPACITY, surface.value());
    }
    writer.endArray();
    writer.write(QUORConfig::PRODUCT_VOLUME_VALUE_LOW, _volumeValueLow);
    writer.write(QUORConfig::PRODUCT_VOLUME_VALUE_HIGH, _volumeValueHigh);
    writer.write(QUORConfig::PRODUCT_VOLUME_OPACITY_LOW, _volumeOpacityLow);
    writer.write(QUORConfig::PRODUCT_VOLUME_OPACITY_HIGH, _volumeOpacityHigh);
}

bool QUORProductSettings::hasChanged(const QUORProductSettings::CPtr& other, QStringList* changes) const {
    QStringList messages;
    if (_renderingType != other->_renderingType) {
        messages.append(other->_renderingType == Surface ? QStringLiteral("- Changed to surface rendering")
                                                         : QStringLiteral("- Changed to volume rendering"));
    }
    if (other->_renderingType == Surface && _surfaces != other->_surfaces) {
        messages.append(QStringLiteral("- Isosurface parameters changed"));
    }
    if (other->_renderingType == Volume &&
        (_volumeValueLow != other->_volumeValueLow || _volumeOpacityLow != other->_volumeOpacityLow ||
         _volumeValueHigh != other->_volumeValueHigh || _volumeOpacityHigh != other->_volumeOpacityHigh)) {
        messages.append(QStringLiteral("- Volume parameters changed"));
    }
    if (_colorMapName != other->_colorMapName) {
        messages.append(QStringLiteral("- Color map: ") + _colorMapName + QStringLiteral(" -> ") +
                        other->_colorMapName);
    }
    if (changes != nullptr) {
        changes->append(messages);
    }
    return !messages.isEmpty();
}
