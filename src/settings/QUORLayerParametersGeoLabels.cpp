// SPDX-License-Identifier: MIT
#include "QUORLayerParametersGeoLabels.h"

bool QUORLayerParametersGeoLabels::hasChanged(const QUORLayerParameters& other) const {
    const auto* o = dynamic_cast<const QUORLayerParametersGeoLabels*>(&other);
    return o != nullptr && (_geoProjection != o->_geoProjection || _landmarks != o->_landmarks ||
                            _verticalScale != o->_verticalScale);
}

void QUORLayerParametersGeoLabels::printDebug() const {
    printClass("QUORLayerParametersGeoLabels");
    printField("geoProjection", _geoProjection.get());
    printField("landmarks", _landmarks.get());
    printField("verticalScale", _verticalScale);
}
