// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

#include <memory>

class QUORDataType;

/// The stored rendering choice for one product in one configuration: surfaces or volume, the colour map,
/// the isosurfaces and the two ends of the volume's opacity ramp. Values are display values of the
/// product's data type. The store fills itself with the defaults of each product that is seen; what an
/// operator wrote into a product's group stays.
///
/// No lock: a record belongs to one thread; loads and saves hold the main settings file.
class QUORProductSettings {
public:
    using Ptr = std::shared_ptr<QUORProductSettings>;
    using CPtr = std::shared_ptr<const QUORProductSettings>;

    enum RenderingType { Unknown = -1, Volume = 0, Surface = 1 };
    /// Isovalue to opacity in percent.
    using SurfaceParContainer = QMap<double, int>;

    /// What becomes of generated defaults. Those of a product that nobody can draw are of no use later.
    enum Generated { Saved, NotSaved };

    static const QString COLOR_MAP;
    /// More than these are not read.
    static constexpr int MAXIMUM_SURFACES = 4;

    /// Holds nothing of use until `reset` or `load`.
    QUORProductSettings() = default;
    QUORProductSettings(const QString& product, const QString& configuration, const QUORDataType& dataType,
                        Generated generated = Saved);
    virtual ~QUORProductSettings() = default;

    /// False when the store held no rendering for the product: defaults were generated for the keys that
    /// are missing, and saved unless the data type has no range of values.
    bool load(const QString& product, const QString& configuration, const QUORDataType& dataType,
              Generated generated = Saved);
    void save() const;
    /// Defaults from the data type, or fixed ones for none; product and configuration stay.
    void reset(const QUORDataType* dataType);
    /// What the step from this record to `other` changes, as one line each.
    bool hasChanged(const QUORProductSettings::CPtr& other, QStringList* changes) const;

    QString getProduct() const { return _product; }
    QString getConfiguration() const { return _configuration; }
    QString getColorMapName() const { return _colorMapName; }
    RenderingType getRenderingType() const { return _renderingType; }
    QString renderingTypeToString() const;
    const SurfaceParContainer& getSurfaces() const { return _surfaces; }
    double getVolumeValueLow() const { return _volumeValueLow; }
    /// Percent, here and below.
    double getVolumeOpacityLow() const { return _volumeOpacityLow; }
    double getVolumeValueHigh() const { return _volumeValueHigh; }
    double getVolumeOpacityHigh() const { return _volumeOpacityHigh; }

    void setColorMapName(const QString& name) { _colorMapName = name; }
    void setRenderingType(RenderingType type) { _renderingType = type; }
    void setSurfaces(const SurfaceParContainer& surfaces) { _surfaces = surfaces; }
    void setVolumeLow(double value, double opacity) {
        _volumeValueLow = value;
        _volumeOpacityLow = opacity;
    }
    void setVolumeHigh(double value, double opacity) {
        _volumeValueHigh = value;
        _volumeOpacityHigh = opacity;
    }

private:
    QString groupName() const;
    void readValues(class QUORSettingsReader& reader);
    void readSurfaces(class QUORSettingsReader& reader);
    void writeValues(class QUORSettingsWriter& writer) const;

    QString _product;
    QString _configuration;
    QString _colorMapName;
    RenderingType _renderingType = Surface;
    SurfaceParContainer _surfaces;
    double _volumeValueLow = 0.0;
    double _volumeOpacityLow = 0.0;
    double _volumeValueHigh = 0.0;
    double _volumeOpacityHigh = 0.0;
};
