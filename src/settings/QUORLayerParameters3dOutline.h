// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLayerParameters.h"

/// The outline of the data volume.
class QUORLayerParameters3dOutline : public QUORLayerParameters {
public:
    using Ptr = std::shared_ptr<QUORLayerParameters3dOutline>;
    using CPtr = std::shared_ptr<const QUORLayerParameters3dOutline>;

    bool hasChanged(const QUORLayerParameters& other) const override;
    void printDebug() const override;

    /// Metres above sea level.
    double getSiteAltitude() const { return _siteAltitude; }
    void setSiteAltitude(double value) { _siteAltitude = value; }
    /// Metres.
    double getDataHeight() const { return _dataHeight; }
    void setDataHeight(double value) { _dataHeight = value; }
    /// Metres between two ticks; none when 0 or less.
    double getTickInterval() const { return _tickInterval; }
    void setTickInterval(double value) { _tickInterval = value; }

private:
    double _siteAltitude = 0.0;
    double _dataHeight = 0.0;
    double _tickInterval = 1000.0;
};
