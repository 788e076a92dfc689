// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDisplayState.h"
#include "QUORGeneralSettings.h"

class QUORVisualization;

/// What the user of a visualization controller implements.
class QUORVisualizationObserver {
public:
    virtual ~QUORVisualizationObserver() = default;

    /// On the controller's thread, once for each request that led to a build or was served by one. The
    /// result item is null when the build failed.
    virtual void visualizationFinished(QUORVisualization* visualization) = 0;
    /// Asked for on the thread of the request.
    virtual QUORGeneralSettings::CPtr getVisualizationGeneralSettings() = 0;
    virtual QUORDisplayState::CPtr getVisualizationDisplayState() = 0;
};
