// SPDX-License-Identifier: MIT
#pragma once

#include "QUORCoordinate.h"
#include "QUORLayerParameters.h"

/// The range rings around the site.
class QUORLayerParametersRadarRings : public QUORLayerParameters {
public:
    using Ptr = std::shared_ptr<QUORLayerParametersRadarRings>;
    using CPtr = std::shared_ptr<const QUORLayerParametersRadarRings>;

    bool hasChanged(const QUORLayerParameters& other) const override;
    void printDebug() const override;

    QUORCoordinate getSiteLocation() const { return _siteLocation; }
    void setSiteLocation(const QUORCoordinate& value) { _siteLocation = value; }
    /// Radius of the outer ring: metres, or thousandths of a nautical mile without metric units.
    double getRange() const { return _range; }
    void setRange(double value) { _range = value; }
    bool isMetricUnits() const { return _metricUnits; }
    void setMetricUnits(bool value) { _metricUnits = value; }

private:
    QUORCoordinate _siteLocation;
    double _range = 0.0;
    bool _metricUnits = true;
};
