// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDataFrame.h"
#include "QUORProductReader.h"
#include "QUORVisualizationPipelineItem.h"

#include <array>

/// A product with everything that a viewer shows of it. What was drawn dies with its last copy, which the
/// rendering thread must hold.
struct QUORViewerScene {
    QUORFileLeaf::CPtr leaf;
    QUORDataFrame::Ptr frame;
    QUORProductReader::CPtr reader;
    QUORVisualizationPipelineItem::Ptr item; ///< null until it is built
    int revision = -1;                       ///< of the display settings that it was built with

    bool isComplete() const { return item != nullptr; }
    /// Whether it shows that product as those settings say.
    bool serves(const QUORFileLeaf::CPtr& product, int settingsRevision) const;
    /// The box of the product from the sea up, in scene metres at a vertical scale.
    std::array<QUORPoint3D, 2> getCorners(double verticalScale) const;
};
