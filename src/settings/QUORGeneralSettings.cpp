// SPDX-License-Identifier: MIT
#include "QUORGeneralSettings.h"

#include "QUORConfig.h"
#include "QUORLog.h"
#include "QUORPresetStore.h"
#include "QUORSettingsReader.h"
#include "QUORSettingsTable.h"
#include "QUORSettingsWriter.h"
#include "QUORUnits.h"

#include <QCoreApplication>

const QString QUORGeneralSettings::LIVE_MODE = QStringLiteral("livemode");
const QString QUORGeneralSettings::LIVE_MODE_SITE = QStringLiteral("livemode_site");
const QString QUORGeneralSettings::LIVE_MODE_PRODUCT_3D = QStringLiteral("livemode_product3d");
const QString QUORGeneralSettings::LIVE_MODE_PRODUCT_2D = QStringLiteral("livemode_product2d");
const QString QUORGeneralSettings::VERTICAL_SCALE = QStringLiteral("verticalscale");
const QString QUORGeneralSettings::DATA_SHRINK_H = QStringLiteral("datashrink_h");
const QString QUORGeneralSettings::DATA_SHRINK_V = QStringLiteral("datashrink_v");
const QString QUORGeneralSettings::DATA_SMOOTH = QStringLiteral("datasmooth");
const QString QUORGeneralSettings::TIME_WINDOW = QStringLiteral("timewindow");
const QString QUORGeneralSettings::ANIMATION_TIME_SPAN = QStringLiteral("animtimespan");
const QString QUORGeneralSettings::ANIMATION_FRAME_INTERVAL = QStringLiteral("animframeinterval");
const QString QUORGeneralSettings::ANIMATION_LOOP_MODE = QStringLiteral("animloopmode");
const QString QUORGeneralSettings::ANIMATION_SPEED = QStringLiteral("animspeed");

namespace {

constexpr double METRIC_TICKS = 2500.0;
constexpr double TEN_THOUSAND_FEET = 3048.0;
constexpr const char* LAT_LON_TEXTS[] = {"d", "Dm", "DMs"};

QString translated(const char* text) {
    return QCoreApplication::translate("App", text);
}

} // namespace

QUORGeneralSettings::QUORGeneralSettings() {
    load();
}

QUORGeneralSettings::LatLonFormat QUORGeneralSettings::getLatLonFormatFromString(const QString& text) {
    for (const LatLonFormat format : {DegreesMinutes, DegreesMinutesSeconds}) {
        if (text == QLatin1String(LAT_LON_TEXTS[format])) {
            return format;
        }
    }
    return Decimal;
}

void QUORGeneralSettings::load() {
    using namespace QUORSettingsTable;
    const QUORConfig::Access settings;
    QUORSettingsReader reader(*settings);
    reader.beginGroup(QUORConfig::GENERAL_GROUP);
    Values& v = _values;
    v.liveMode = readFlag(reader, row("GENERAL", "livemode"));
    v.liveModeSite = readText(reader, row("GENERAL", "livemode_site"));
    v.liveModeProduct3d = readText(reader, row("GENERAL", "livemode_product3d"));
    v.liveModeProduct2d = readText(reader, row("GENERAL", "livemode_product2d"));
    v.clock24h = readFlag(reader, row("GENERAL", "clock24hours"));
    v.metricUnits = readFlag(reader, row("GENERAL", "metricunits"));
    v.latLonFormat = getLatLonFormatFromString(readText(reader, row("GENERAL", "latlonunits")));
    _geoDir = readText(reader, row("GENERAL", "geolayer"));
    _dir3d = readText(reader, row("GENERAL", "data3d"));
    _dir2d = readText(reader, row("GENERAL", "data2d"));
    v.verticalScale = readNumber(reader, row("GENERAL", "verticalscale"));
    v.dataShrinkH = readWhole(reader, row("GENERAL", "datashrink_h"));
    v.dataShrinkV = readWhole(reader, row("GENERAL", "datashrink_v"));
    v.dataSmooth = readNumber(reader, row("GENERAL", "datasmooth"));
    v.timeWindow = readWhole(reader, row("GENERAL", "timewindow"));
    v.animationTimeSpan = readWhole(reader, row("GENERAL", "animtimespan"));
    v.animationFrameInterval = readWhole(reader, row("GENERAL", "animframeinterval"));
    v.animationLoopMode = readWhole(reader, row("GENERAL", "animloopmode"));
    v.animationSpeed = readWhole(reader, row("GENERAL", "animspeed"));
}

void QUORGeneralSettings::save() const {
    const QUORLogScope scope("QUORGeneralSettings::save");
    const QUORConfig::Access settings;
    QUORSettingsWriter writer(*settings, QUORConfig::GENERAL_GROUP);
    writer.write(LIVE_MODE, _values.liveMode);
    writer.write(LIVE_MODE_SITE, _values.liveModeSite);
    writer.write(LIVE_MODE_PRODUCT_3D, _values.liveModeProduct3d);
    writer.write(LIVE_MODE_PRODUCT_2D, _values.liveModeProduct2d);
    writer.write(QUORConfig::GENERAL_CLOCK, _values.clock24h);
    writer.write(QUORConfig::GENERAL_UNITS, _values.metricUnits);
    writer.write(QUORConfig::GENERAL_LATLON_UNITS, QString::fromLatin1(LAT_LON_TEXTS[_values.latLonFormat]));
    writer.write(QUORConfig::GENERAL_GEOLAYER_URL, _geoDir);
    writer.write(QUORConfig::GENERAL_DATA3D_URL, _dir3d);
    writer.write(QUORConfig::GENERAL_DATA2D_URL, _dir2d);
    writer.write(VERTICAL_SCALE, _values.verticalScale);
    writer.write(DATA_SHRINK_H, _values.dataShrinkH);
    writer.write(DATA_SHRINK_V, _values.dataShrinkV);
    writer.write(DATA_SMOOTH, _values.dataSmooth);
    writer.write(TIME_WINDOW, _values.timeWindow);
    writer.write(ANIMATION_TIME_SPAN, _values.animationTimeSpan);
    writer.write(ANIMATION_FRAME_INTERVAL, _values.animationFrameInterval);
    writer.write(ANIMATION_LOOP_MODE, _values.animationLoopMode);
    writer.write(ANIMATION_SPEED, _values.animationSpeed);
    writer.commit();
}

void QUORGeneralSettings::reset(bool displayOnly) {
    using QUORSettingsTable::row;
    Values fresh;
    fresh.clock24h = row("GENERAL", "clock24hours").flag();
    fresh.metricUnits = row("GENERAL", "metricunits").flag();
    fresh.verticalScale = row("GENERAL", "verticalscale").number[0];
    fresh.dataShrinkH = row("GENERAL", "datashrink_h").whole();
    fresh.dataShrinkV = row("GENERAL", "datashrink_v").whole();
    fresh.dataSmooth = row("GENERAL", "datasmooth").number[0];
    fresh.timeWindow = row("GENERAL", "timewindow").whole();
    if (displayOnly) {
        const Values& kept = _values;
        fresh.liveMode = kept.liveMode;
        fresh.liveModeSite = kept.liveModeSite;
        fresh.liveModeProduct3d = kept.liveModeProduct3d;
        fresh.liveModeProduct2d = kept.liveModeProduct2d;
        fresh.timeWindow = kept.timeWindow;
        fresh.animationTimeSpan = kept.animationTimeSpan;
        fresh.animationFrameInterval = kept.animationFrameInterval;
        fresh.animationLoopMode = kept.animationLoopMode;
        fresh.animationSpeed = kept.animationSpeed;
    }
    _values = fresh;
}

bool QUORGeneralSettings::hasChanged(const QUORGeneralSettings& other, QStringList* changes) const {
    const Values& a = _values;
    const Values& b = other._values;
    const struct {
        bool differs;
        const char* message;
    } rows[] = {
        {a.clock24h != b.clock24h || a.metricUnits != b.metricUnits || a.latLonFormat != b.latLonFormat,
         "- Unit settings changed"},
        {a.dataShrinkH != b.dataShrinkH || a.dataShrinkV != b.dataShrinkV, "- Data resolution changed"},
        {a.dataSmooth != b.dataSmooth, "- Data smoothing changed"},
        {a.verticalScale != b.verticalScale, "- Vertical scaling changed"},
        {a.timeWindow != b.timeWindow || a.animationTimeSpan != b.animationTimeSpan ||
             a.animationFrameInterval != b.animationFrameInterval ||
             a.animationLoopMode != b.animationLoopMode || a.animationSpeed != b.animationSpeed,
         nullptr},
        {_geoDir != other._geoDir, "- Geo data path changed"},
        {_dir3d != other._dir3d, "- 3d data path changed"},
        {_dir2d != other._dir2d, "- 2d data path changed"},
    };
    bool changed = false;
    for (const auto& row : rows) {
        changed = changed || row.differs;
        if (row.differs && row.message != nullptr && changes != nullptr) {
            changes->append(translated(row.message));
        }
    }
    return changed;
}

QString QUORGeneralSettings::formattedTime(const QDateTime& time) const {
    return time.toString(QStringLiteral("ddd ")) + formattedTimeShort(time);
}

QString QUORGeneralSettings::formattedTimeShort(const QDateTime& time) const {
    return time.toString(_values.clock24h ? QStringLiteral("yyyy-MM-dd hh:mm")
                                          : QStringLiteral("yyyy-MM-dd hh:mm AP"));
}

double QUORGeneralSettings::getCorrectLengthBig(double km) const {
    return _values.metricUnits ? km : km / QUORUnits::KILOMETRES_PER_NAUTICAL_MILE;
}

double QUORGeneralSettings::getCorrectLengthSmall(double m) const {
    return _values.metricUnits ? m : m * QUORUnits::FEET_PER_METRE;
}

QString QUORGeneralSettings::getLengthUnitBig() const {
    return _values.metricUnits ? translated("km") : translated("NM");
}

QString QUORGeneralSettings::getLengthUnitSmall() const {
    return _values.metricUnits ? translated("m") : translated("ft");
}

QString QUORGeneralSettings::formattedBigLength(double km, int decimals) const {
    return QString::number(getCorrectLengthBig(km), 'f', decimals) + QLatin1Char(' ') + getLengthUnitBig();
}

QString QUORGeneralSettings::formattedSmallLength(double m, int decimals) const {
    return QString::number(getCorrectLengthSmall(m), 'f', decimals) + QLatin1Char(' ') + getLengthUnitSmall();
}

double QUORGeneralSettings::getHeightTicks() const {
    return _values.metricUnits ? METRIC_TICKS : TEN_THOUSAND_FEET;
}

QString QUORGeneralSettings::formatCoordinates(const QUORCoordinate& coordinate,
                                               QUORCoordinate::Modifier modifier) const {
    switch (_values.latLonFormat) {
    case DegreesMinutes:
        return coordinate.toDMsString(modifier);
    case DegreesMinutesSeconds:
        return coordinate.toDmString(modifier);
    case Decimal:
        break;
    }
    return coordinate.toDecimalString(modifier);
}

QString QUORGeneralSettings::formatLatitude(const QUORCoordinate& coordinate) const {
    return formatCoordinates(coordinate, QUORCoordinate::Latitude);
}

QString QUORGeneralSettings::formatLongitude(const QUORCoordinate& coordinate) const {
    return formatCoordinates(coordinate, QUORCoordinate::Longitude);
}

void QUORGeneralSettings::loadDisplayStates(const QUORDisplayState::Ptr& current) {
    const QUORLogScope scope("QUORGeneralSettings::loadDisplayStates");
    QUORPresetStore::load(*current, _displayStates);
}

void QUORGeneralSettings::saveDisplayStates(const QUORDisplayState::Ptr& current) {
    const QUORLogScope scope("QUORGeneralSettings::saveDisplayStates");
    QUORPresetStore::save(*current, _displayStates);
}

QStringList QUORGeneralSettings::getDisplayStateNames() const {
    return QUORPresetStore::getNames(_displayStates);
}

void QUORGeneralSettings::loadViewAngles(const QUORViewAngle::Ptr& current) {
    const QUORLogScope scope("QUORGeneralSettings::loadViewAngles");
    QUORPresetStore::load(*current, _viewAngles);
}

void QUORGeneralSettings::saveViewAngles(const QUORViewAngle::Ptr& current) {
    const QUORLogScope scope("QUORGeneralSettings::saveViewAngles");
    QUORPresetStore::save(*current, _viewAngles);
}

QStringList QUORGeneralSettings::getViewAngleNames() const {
    return QUORPresetStore::getNames(_viewAngles);
}
