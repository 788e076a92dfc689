// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLayerParameters.h"

class QUORGeoProjection;
class QUORLandmarkSet;

/// The labels of landmarks.
class QUORLayerParametersGeoLabels : public QUORLayerParameters {
public:
    using Ptr = std::shared_ptr<QUORLayerParametersGeoLabels>;
    using CPtr = std::shared_ptr<const QUORLayerParametersGeoLabels>;

    bool hasChanged(const QUORLayerParameters& other) const override;
    void printDebug() const override;

    std::shared_ptr<const QUORGeoProjection> getGeoProjection() const { return _geoProjection; }
    void setGeoProjection(std::shared_ptr<const QUORGeoProjection> value) {
        _geoProjection = std::move(value);
    }
    std::shared_ptr<const QUORLandmarkSet> getLandmarks() const { return _landmarks; }
    void setLandmarks(std::shared_ptr<const QUORLandmarkSet> value) { _landmarks = std::move(value); }
    /// Factor by which heights are stretched.
    double getVerticalScale() const { return _verticalScale; }
    void setVerticalScale(double value) { _verticalScale = value; }

private:
    std::shared_ptr<const QUORGeoProjection> _geoProjection;
    std::shared_ptr<const QUORLandmarkSet> _landmarks;
    double _verticalScale = 1.0;
};
