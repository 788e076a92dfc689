// SPDX-License-Identifier: MIT
#include "QUORLayerParameters3d.h"

#include "QUORFile.h"

namespace {

bool isOther(const QUORFile& a, const QUORFile& b) {
    return a.getSite() != b.getSite() || a.getTime() != b.getTime() || a.getProduct() != b.getProduct() ||
           a.getConfiguration() != b.getConfiguration();
}

} // namespace

bool QUORLayerParameters3d::hasChanged(const QUORLayerParameters& other) const {
    const auto* o = dynamic_cast<const QUORLayerParameters3d*>(&other);
    if (o == nullptr) {
        return false;
    }
    const bool both = _dataFile && o->_dataFile;
    if (both ? isOther(*_dataFile, *o->_dataFile) : bool(_dataFile) != bool(o->_dataFile)) {
        return true;
    }
    return _renderingType != o->_renderingType || _colorScaleName != o->_colorScaleName ||
           _dataShrinkH != o->_dataShrinkH || _dataShrinkV != o->_dataShrinkV ||
           _dataSmooth != o->_dataSmooth || _volumeValueLow != o->_volumeValueLow ||
           _volumeOpacityLow != o->_volumeOpacityLow || _volumeValueHigh != o->_volumeValueHigh ||
           _volumeOpacityHigh != o->_volumeOpacityHigh || _surfacePars != o->_surfacePars ||
           _hardware != o->_hardware;
}

void QUORLayerParameters3d::printDebug() const {
    printClass("QUORLayerParameters3d");
    printField("dataFile", _dataFile.get());
    printField("renderingType", int(_renderingType));
    printField("colorScaleName", _colorScaleName);
    printField("dataShrinkH", _dataShrinkH);
    printField("dataShrinkV", _dataShrinkV);
    printField("dataSmooth", _dataSmooth);
    for (auto surface = _surfacePars.cbegin(); surface != _surfacePars.cend(); ++surface) {
        printField("surface", QString::number(surface.key(), 'g', 6) + QStringLiteral(": ") +
                                  QString::number(surface.value()));
    }
    printField("volumeValueLow", _volumeValueLow);
    printField("volumeOpacityLow", _volumeOpacityLow);
    printField("volumeValueHigh", _volumeValueHigh);
    printField("volumeOpacityHigh", _volumeOpacityHigh);
    printField("hardware", int(_hardware));
}

void QUORLayerParameters3d::resetPars(const QUORDataType* dataType) {
    QUORProductSettings defaults;
    defaults.reset(dataType);
    _renderingType = defaults.getRenderingType();
    _colorScaleName = defaults.getColorMapName();
    _dataShrinkH = 4;
    _dataShrinkV = 1;
    _dataSmooth = 1.0;
    _surfacePars = defaults.getSurfaces();
    _volumeValueLow = defaults.getVolumeValueLow();
    _volumeOpacityLow = defaults.getVolumeOpacityLow();
    _volumeValueHigh = defaults.getVolumeValueHigh();
    _volumeOpacityHigh = defaults.getVolumeOpacityHigh();
}
