// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLayerParameters.h"

class QUORGeoProjection;

/// The grid of latitudes and longitudes.
class QUORLayerParametersLatLonGrid : public QUORLayerParameters {
public:
    using Ptr = std::shared_ptr<QUORLayerParametersLatLonGrid>;
    using CPtr = std::shared_ptr<const QUORLayerParametersLatLonGrid>;

    bool hasChanged(const QUORLayerParameters& other) const override;
    void printDebug() const override;

    std::shared_ptr<const QUORGeoProjection> getGeoProjection() const { return _geoProjection; }
    void setGeoProjection(std::shared_ptr<const QUORGeoProjection> value) {
        _geoProjection = std::move(value);
    }
    /// Metres from the site to each side.
    double getRange() const { return _range; }
    void setRange(double value) { _range = value; }

private:
    std::shared_ptr<const QUORGeoProjection> _geoProjection;
    double _range = 0.0;
};
