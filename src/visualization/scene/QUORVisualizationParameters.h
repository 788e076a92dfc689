// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDataFrame.h"
#include "QUORLayerParameters2d.h"
#include "QUORLayerParameters3d.h"
#include "QUORLayerParameters3dOutline.h"
#include "QUORLayerParametersGeoLabels.h"
#include "QUORLayerParametersLatLonGrid.h"
#include "QUORLayerParametersRadarRings.h"
#include "QUORLayerParametersTerrain.h"

/// Everything a visualization depends on: the data frame and one record for each layer. A plain value.
struct QUORVisualizationParameters {
    virtual ~QUORVisualizationParameters() = default;

    /// Whether both show the same objects with the same records. The grid takes no part: its record is made
    /// of the 3D product's file alone, so that a frame of the same product has the same.
    bool isSame(const QUORVisualizationParameters& other) const;

    QUORDataFrame::CPtr dataFrame;
    QUORLayerParameters3d product3d;
    QUORLayerParameters3dOutline outline;
    QUORLayerParameters2d product2d;
    QUORLayerParametersRadarRings rings;
    QUORLayerParametersTerrain terrain;
    QUORLayerParametersLatLonGrid grid;
    QUORLayerParametersGeoLabels labels;
    double verticalScale = 1.0;
};
