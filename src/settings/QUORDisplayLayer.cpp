// SPDX-License-Identifier: MIT
#include "QUORDisplayLayer.h"

#include "QUORAssert.h"
#include "QUORLayerParameters.h"
#include "QUORLayerParameters2d.h"
#include "QUORLayerParameters3d.h"
#include "QUORLayerParameters3dOutline.h"
#include "QUORLayerParametersGeoLabels.h"
#include "QUORLayerParametersLatLonGrid.h"
#include "QUORLayerParametersRadarRings.h"
#include "QUORLayerParametersTerrain.h"

#include <typeinfo>

namespace {

template <class Record>
bool copyExactly(const QUORLayerParameters& parameters, QUORLayerParameters::Ptr& copy) {
    if (typeid(parameters) != typeid(Record)) {
        return false;
    }
    copy = std::make_shared<Record>(static_cast<const Record&>(parameters));
    return true;
}

template <class... Records>
QUORLayerParameters::Ptr copyAny(const QUORLayerParameters& parameters) {
    QUORLayerParameters::Ptr copy;
    const bool known = (copyExactly<Records>(parameters, copy) || ...);
    if (!known) {
        quorAssertionFailed("known class of layer parameters", __FILE__, "QUORDisplayLayer::setParameters",
                            true);
    }
    return copy;
}

} // namespace

QUORDisplayLayer::QUORDisplayLayer(int key, const QString& name, int order)
    : _key(key), _name(name), _order(order), _visible(true), _opacity(100) {}

void QUORDisplayLayer::copyState(const QUORDisplayLayer& other) {
    _key = other._key;
    _name = other._name;
    _secondText = other._secondText;
    _visible = other._visible;
    _opacity = other._opacity;
}

void QUORDisplayLayer::setParameters(const QUORLayerParameters::Ptr& parameters) {
    if (!parameters) {
        _parameters.reset();
        return;
    }
    _parameters =
        copyAny<QUORLayerParameters, QUORLayerParameters3d, QUORLayerParameters2d,
                QUORLayerParameters3dOutline, QUORLayerParametersRadarRings, QUORLayerParametersLatLonGrid,
                QUORLayerParametersGeoLabels, QUORLayerParametersTerrain>(*parameters);
}

void QUORDisplayLayer::resetParameters() {
    setParameters(nullptr);
    if (_element) {
        _element->invalidate();
    }
}

bool QUORDisplayLayer::isEmpty() const {
    QUOR_ASSERT(_element);
    return _element->isEmpty();
}
