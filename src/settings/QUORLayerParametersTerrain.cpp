// SPDX-License-Identifier: MIT
#include "QUORLayerParametersTerrain.h"

bool QUORLayerParametersTerrain::hasChanged(const QUORLayerParameters& other) const {
    const auto* o = dynamic_cast<const QUORLayerParametersTerrain*>(&other);
    return o != nullptr && (_terrainSet != o->_terrainSet);
}

void QUORLayerParametersTerrain::printDebug() const {
    printClass("QUORLayerParametersTerrain");
    printField("terrainSet", _terrainSet.get());
}
