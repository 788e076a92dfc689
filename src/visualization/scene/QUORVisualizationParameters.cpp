// SPDX-License-Identifier: MIT
#include "QUORVisualizationParameters.h"

namespace {

bool isSameFrame(const QUORDataFrame::CPtr& a, const QUORDataFrame::CPtr& b) {
    if (!a || !b) {
        return !a && !b;
    }
    return a->getData3d() == b->getData3d() && a->getData2d() == b->getData2d() &&
           a->getTerrainSet() == b->getTerrainSet() && a->getLandmarkSet() == b->getLandmarkSet();
}

} // namespace

bool QUORVisualizationParameters::isSame(const QUORVisualizationParameters& other) const {
    return isSameFrame(dataFrame, other.dataFrame) && !product3d.hasChanged(other.product3d) &&
           !outline.hasChanged(other.outline) && !product2d.hasChanged(other.product2d) &&
           !rings.hasChanged(other.rings) && !terrain.hasChanged(other.terrain) &&
           !labels.hasChanged(other.labels);
}
