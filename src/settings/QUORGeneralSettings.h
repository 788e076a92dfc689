// SPDX-License-Identifier: MIT
#pragma once

#include "QUORCoordinate.h"
#include "QUORDisplayState.h"
#include "QUORSystem.h"
#include "QUORViewAngle.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

/// The user's general preferences: data directories, units and formats, reduction and smoothing of the
/// data, the height of the scene and the time window; and the lists of presets. A new object reflects the
/// stored settings. No lock: an object belongs to one thread; loads and saves hold the main settings file.
class QUORGeneralSettings {
public:
    using Ptr = std::shared_ptr<QUORGeneralSettings>;
    using CPtr = std::shared_ptr<const QUORGeneralSettings>;

    enum LatLonFormat { Decimal = 0, DegreesMinutes = 1, DegreesMinutesSeconds = 2 };

    static const QString LIVE_MODE;
    static const QString LIVE_MODE_SITE;
    static const QString LIVE_MODE_PRODUCT_3D;
    static const QString LIVE_MODE_PRODUCT_2D;
    static const QString VERTICAL_SCALE;
    static const QString DATA_SHRINK_H;
    static const QString DATA_SHRINK_V;
    static const QString DATA_SMOOTH;
    static const QString TIME_WINDOW;
    static const QString ANIMATION_TIME_SPAN;
    static const QString ANIMATION_FRAME_INTERVAL;
    static const QString ANIMATION_LOOP_MODE;
    static const QString ANIMATION_SPEED;

    QUORGeneralSettings();
    virtual ~QUORGeneralSettings() = default;
    QUORGeneralSettings(const QUORGeneralSettings&) = default;
    QUORGeneralSettings& operator=(const QUORGeneralSettings&) = default;

    /// Reads every value but the presets.
    void load();
    /// Writes every value but the presets.
    void save() const;
    /// Back to the defaults, except the data directories; `displayOnly` also keeps live mode, time window
    /// and animation.
    void reset(bool displayOnly);
    /// What differs, as one line for each kind of value that has one.
    bool hasChanged(const QUORGeneralSettings& other, QStringList* changes) const;

    bool isLiveMode() const { return _values.liveMode; }
    QString getLiveModeSite() const { return _values.liveModeSite; }
    QString getLiveMode3DProduct() const { return _values.liveModeProduct3d; }
    QString getLiveMode2DProduct() const { return _values.liveModeProduct2d; }
    bool is24hClock() const { return _values.clock24h; }
    void set24hClock(bool on) { _values.clock24h = on; }
    bool isMetricUnits() const { return _values.metricUnits; }
    void setMetricUnits(bool on) { _values.metricUnits = on; }
    LatLonFormat getLatLonFormat() const { return _values.latLonFormat; }
    void setLatLonFormat(LatLonFormat format) { _values.latLonFormat = format; }
    /// Of a stored text; any text but the three known ones means decimal degrees.
    static LatLonFormat getLatLonFormatFromString(const QString& text);
    /// Directories are kept as they were written; "~" in what is returned is expanded.
    QString getGeoDir() const { return QUORSystem::toPath(_geoDir); }
    void setGeoDir(const QString& path) { _geoDir = path; }
    QString get3DDir() const { return QUORSystem::toPath(_dir3d); }
    void set3DDir(const QString& path) { _dir3d = path; }
    QString get2DDir() const { return QUORSystem::toPath(_dir2d); }
    void set2DDir(const QString& path) { _dir2d = path; }
    /// Factor by which heights are stretched; positive.
    double getVerticalScale() const { return _values.verticalScale; }
    void setVerticalScale(double scale) { _values.verticalScale = scale; }
    /// Reduction factors of the 3D data, at least 1.
    int getHorizontalDataShrink() const { return _values.dataShrinkH; }
    int getVerticalDataShrink() const { return _values.dataShrinkV; }
    /// Standard deviation of the smoothing, in grid points; 0 for none.
    double getDataSmoothing() const { return _values.dataSmooth; }
    /// Seconds: 2D and 3D products within half of it count as taken at the same time.
    int getTimeWindow() const { return _values.timeWindow; }
    int getAnimationTimeSpan() const { return _values.animationTimeSpan; }
    int getAnimationFrameInterval() const { return _values.animationFrameInterval; }
    int getAnimationLoopMode() const { return _values.animationLoopMode; }
    int getAnimationSpeed() const { return _values.animationSpeed; }

    QString formattedTime(const QDateTime& time) const;
    QString formattedTimeShort(const QDateTime& time) const;
    /// Kilometres to kilometres or nautical miles.
    double getCorrectLengthBig(double km) const;
    /// Metres to metres or feet.
    double getCorrectLengthSmall(double m) const;
    QString getLengthUnitBig() const;
    QString getLengthUnitSmall() const;
    QString formattedBigLength(double km, int decimals) const;
    QString formattedSmallLength(double m, int decimals) const;
    /// Metres of height between the ticks of the outline: a round number in the units in use.
    double getHeightTicks() const;
    QString formatCoordinates(const QUORCoordinate& coordinate, QUORCoordinate::Modifier modifier) const;
    QString formatLatitude(const QUORCoordinate& coordinate) const;
    QString formatLongitude(const QUORCoordinate& coordinate) const;

    /// The stored current selection goes into `current`, which keeps its name; the stored presets are
    /// appended to the list. Without a stored array nothing changes.
    void loadDisplayStates(const QUORDisplayState::Ptr& current);
    void saveDisplayStates(const QUORDisplayState::Ptr& current);
    /// The translated "Default", then the names of the presets.
    QStringList getDisplayStateNames() const;
    const QList<QUORDisplayState::Ptr>& getDisplayStatePresets() const { return _displayStates; }
    void addDisplayStatePreset(QUORDisplayState::Ptr preset) { _displayStates.append(std::move(preset)); }

    /// The same for view angles.
    void loadViewAngles(const QUORViewAngle::Ptr& current);
    void saveViewAngles(const QUORViewAngle::Ptr& current);
    QStringList getViewAngleNames() const;
    const QList<QUORViewAngle::Ptr>& getViewAnglePresets() const { return _viewAngles; }
    void addViewAnglePreset(QUORViewAngle::Ptr preset) { _viewAngles.append(std::move(preset)); }

private:
    /// Filled by the constructor and by `reset`.
    struct Values {
        bool liveMode = false;
        QString liveModeSite;
        QString liveModeProduct3d;
        QString liveModeProduct2d;
        bool clock24h = false;
        bool metricUnits = false;
        LatLonFormat latLonFormat = Decimal;
        double verticalScale = 0.0;
        int dataShrinkH = 0;
        int dataShrinkV = 0;
        double dataSmooth = 0.0;
        int timeWindow = 0;
        int animationTimeSpan = 0;
        int animationFrameInterval = 0;
        int animationLoopMode = 0;
        int animationSpeed = 0;
    };

    Values _values;
    QString _geoDir;
    QString _dir3d;
    QString _dir2d;
    QList<QUORDisplayState::Ptr> _displayStates;
    QList<QUORViewAngle::Ptr> _viewAngles;
};
