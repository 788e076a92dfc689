// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLayerParameters.h"

class QUORTerrainSet;

/// The terrain of the area.
class QUORLayerParametersTerrain : public QUORLayerParameters {
public:
    using Ptr = std::shared_ptr<QUORLayerParametersTerrain>;
    using CPtr = std::shared_ptr<const QUORLayerParametersTerrain>;

    bool hasChanged(const QUORLayerParameters& other) const override;
    void printDebug() const override;

    std::shared_ptr<const QUORTerrainSet> getTerrainSet() const { return _terrainSet; }
    void setTerrainSet(std::shared_ptr<const QUORTerrainSet> value) { _terrainSet = std::move(value); }

private:
    std::shared_ptr<const QUORTerrainSet> _terrainSet;
};
