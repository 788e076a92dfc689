// SPDX-License-Identifier: MIT
#include "QUORLayerParameters3dOutline.h"

bool QUORLayerParameters3dOutline::hasChanged(const QUORLayerParameters& other) const {
    const auto* o = dynamic_cast<const QUORLayerParameters3dOutline*>(&other);
    return o != nullptr && (_siteAltitude != o->_siteAltitude || _dataHeight != o->_dataHeight ||
                            _tickInterval != o->_tickInterval);
}

void QUORLayerParameters3dOutline::printDebug() const {
    printClass("QUORLayerParameters3dOutline");
    printField("siteAltitude", _siteAltitude);
    printField("dataHeight", _dataHeight);
    printField("tickInterval", _tickInterval);
}
