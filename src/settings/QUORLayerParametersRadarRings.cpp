// SPDX-License-Identifier: MIT
#include "QUORLayerParametersRadarRings.h"

bool QUORLayerParametersRadarRings::hasChanged(const QUORLayerParameters& other) const {
    const auto* o = dynamic_cast<const QUORLayerParametersRadarRings*>(&other);
    return o != nullptr &&
           (_siteLocation != o->_siteLocation || _range != o->_range || _metricUnits != o->_metricUnits);
}

void QUORLayerParametersRadarRings::printDebug() const {
    printClass("QUORLayerParametersRadarRings");
    printField("siteLocation.lat", _siteLocation.getLat());
    printField("siteLocation.lon", _siteLocation.getLon());
    printField("range", _range);
    printField("metricUnits", double(_metricUnits));
}
