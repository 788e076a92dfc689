// SPDX-License-Identifier: MIT
#include "QUOR3DVisualElement.h"

#include "QUOR3DDataChain.h"
#include "QUOR3DSurfaces.h"
#include "QUOR3DVolume.h"
#include "QUORAbortFlag.h"
#include "QUORAssert.h"
#include "QUORColormap.h"
#include "QUORDataType.h"
#include "QUORFile.h"
#include "QUORLog.h"

#include <vtkAlgorithm.h>
#include <vtkProp.h>

namespace {

constexpr QUORElementTexts TEXTS{"QUOR3DVisualElement", "Creating new  visualization.", false, false};

} // namespace

QUOR3DVisualElement::QUOR3DVisualElement(QUORVisualGroup* group, int key)
    : QUORTypedVisualElement(group, key, TEXTS) {}

QUOR3DVisualElement::~QUOR3DVisualElement() = default;

vtkSmartPointer<vtkAlgorithm> QUOR3DVisualElement::getData() const {
    return _data;
}

void QUOR3DVisualElement::invalidate() {
    const QUORLogScope scope("void QUOR3DVisualElement::invalidate");
    logDebug(QStringLiteral("Removing old 3D visualization.."));
    _params.reset();
    _data = nullptr;
    dropDisplay();
    _rebuilt = false;
}

void QUOR3DVisualElement::dropDisplay() {
    _prop = nullptr;
    _surfaces.reset();
    _volume.reset();
}

void QUOR3DVisualElement::rebuild(const QUORAbortFlag& abort) {
    _watch.restart();
    createVTKData();
    if (abort) {
        invalidate();
        return;
    }
    _rebuilt = _data != nullptr;
}

void QUOR3DVisualElement::show(bool visible) {
    const bool display = visible && !_prop && _data;
    if (display) {
        if (!_rebuilt) {
            _watch.restart();
        }
        createVTK();
        if (updateVTK()) {
            runAlgorithm();
        }
    }
    if (display || _rebuilt) {
        logDebug(QStringLiteral("..updated in ") + _watch.seconds() + QStringLiteral(" seconds."));
    }
    _rebuilt = false;
}

void QUOR3DVisualElement::createVTKData() {
    dropDisplay();
    _data = nullptr;
    if (QUOR_VERIFY(_params->getDataFile() != nullptr)) {
        const QUORDataType dataType = _params->getDataFile()->getDataType();
        const bool surfaces = _params->getRenderingType() == QUORProductSettings::Surface;
        _data = vtk_3D_data_create(_params->getDataFile(), _params->getDataShrinkH(),
                                   _params->getDataShrinkV(), _params->getDataSmooth(),
                                   surfaces ? dataType.getSurfaceNoDataValue() : dataType.getNoDataValue());
    }
}

void QUOR3DVisualElement::createVTK() {
    const QUORLogScope scope("QUOR3DVisualElement::createVTK");
    switch (_params->getRenderingType()) {
    case QUORProductSettings::Surface:
        logDebug(QStringLiteral("Creating surfaces.."));
        _surfaces = std::make_unique<QUOR3DSurfaces>(_data);
        _prop = _surfaces->getProp();
        break;
    case QUORProductSettings::Volume:
        logDebug(QStringLiteral("Creating volumes.."));
        _volume = std::make_unique<QUOR3DVolume>(_data, _params->isHardware());
        _prop = _volume->getProp();
        break;
    default:
        logDebug(QStringLiteral("QUOR3DVisualElement::createVTK(): unknown rendering type."));
    }
}

bool QUOR3DVisualElement::updateVTK() {
    const QUORLogScope scope("QUOR3DVisualElement::updateVTK");
    const QUORDataType dataType = _params->getDataFile()->getDataType();
    const QUORColormap colormap(_params->getColorScaleName(), dataType, QUORColormap::Absolute);
    if (_surfaces) {
        logDebug(QStringLiteral("Updating surfaces.."));
        _surfaces->update(_params->getSurfacePars(), dataType, colormap);
    } else if (_volume) {
        logDebug(QStringLiteral("Updating volumes.."));
        _volume->update(*_params, dataType, colormap);
    } else {
        logDebug(QStringLiteral("QUOR3DVisualElement::updateVTK(): unknown rendering type."));
        return false;
    }
    return true;
}

void QUOR3DVisualElement::runAlgorithm() {
    logDebug(QStringLiteral("Running algorithm.."));
    if (_surfaces) {
        _surfaces->run();
    } else {
        _volume->run();
    }
}
