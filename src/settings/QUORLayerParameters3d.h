// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLayerParameters.h"
#include "QUORProductSettings.h"

class QUORDataType;
class QUORFile;

/// The 3D product. Values of surfaces and volume limits are display values of the product's data type.
class QUORLayerParameters3d : public QUORLayerParameters {
public:
    using Ptr = std::shared_ptr<QUORLayerParameters3d>;
    using CPtr = std::shared_ptr<const QUORLayerParameters3d>;

    bool hasChanged(const QUORLayerParameters& other) const override;
    void printDebug() const override;

    /// Defaults from the data type, or fixed ones for none; the data file and the way of drawing stay.
    void resetPars(const QUORDataType* dataType);

    std::shared_ptr<const QUORFile> getDataFile() const { return _dataFile; }
    void setDataFile(std::shared_ptr<const QUORFile> value) { _dataFile = std::move(value); }
    QUORProductSettings::RenderingType getRenderingType() const { return _renderingType; }
    void setRenderingType(QUORProductSettings::RenderingType value) { _renderingType = value; }
    QString getColorScaleName() const { return _colorScaleName; }
    void setColorScaleName(const QString& value) { _colorScaleName = value; }
    /// Reduction factors, at least 1.
    int getDataShrinkH() const { return _dataShrinkH; }
    void setDataShrinkH(int value) { _dataShrinkH = value; }
    int getDataShrinkV() const { return _dataShrinkV; }
    void setDataShrinkV(int value) { _dataShrinkV = value; }
    double getDataSmooth() const { return _dataSmooth; }
    void setDataSmooth(double value) { _dataSmooth = value; }
    /// Isovalue to opacity in percent.
    const QMap<double, int>& getSurfacePars() const { return _surfacePars; }
    void setSurfacePars(const QMap<double, int>& value) { _surfacePars = value; }
    double getVolumeValueLow() const { return _volumeValueLow; }
    void setVolumeValueLow(double value) { _volumeValueLow = value; }
    /// Percent, here and below.
    double getVolumeOpacityLow() const { return _volumeOpacityLow; }
    void setVolumeOpacityLow(double value) { _volumeOpacityLow = value; }
    double getVolumeValueHigh() const { return _volumeValueHigh; }
    void setVolumeValueHigh(double value) { _volumeValueHigh = value; }
    double getVolumeOpacityHigh() const { return _volumeOpacityHigh; }
    void setVolumeOpacityHigh(double value) { _volumeOpacityHigh = value; }
    /// Whether a graphics card draws: its own way of drawing a volume is the faster one only there.
    bool isHardware() const { return _hardware; }
    void setHardware(bool value) { _hardware = value; }

private:
    std::shared_ptr<const QUORFile> _dataFile;
    QUORProductSettings::RenderingType _renderingType = QUORProductSettings::Surface;
    QString _colorScaleName = QStringLiteral("Default");
    int _dataShrinkH = 4;
    int _dataShrinkV = 1;
    double _dataSmooth = 1.0;
    QMap<double, int> _surfacePars;
    double _volumeValueLow = -9999.0;
    double _volumeOpacityLow = 1.0;
    double _volumeValueHigh = 9999.0;
    double _volumeOpacityHigh = 100.0;
    bool _hardware = false;
};
