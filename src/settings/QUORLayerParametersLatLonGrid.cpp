// SPDX-License-Identifier: MIT
#include "QUORLayerParametersLatLonGrid.h"

bool QUORLayerParametersLatLonGrid::hasChanged(const QUORLayerParameters& other) const {
    const auto* o = dynamic_cast<const QUORLayerParametersLatLonGrid*>(&other);
    return o != nullptr && (_geoProjection != o->_geoProjection || _range != o->_range);
}

void QUORLayerParametersLatLonGrid::printDebug() const {
    printClass("QUORLayerParametersLatLonGrid");
    printField("geoProjection", _geoProjection.get());
    printField("range", _range);
}
