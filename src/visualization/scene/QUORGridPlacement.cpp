// SPDX-License-Identifier: MIT
#include "QUORGridPlacement.h"

#include "QUORFile.h"

namespace {

/// Scene metres for one step of the grid.
double stepOf(double extent, int points) {
    return points > 1 ? extent / (points - 1) : 1.0;
}

} // namespace

QUORGridPlacement QUORGridPlacement::ofLayer(const QUORFile& file, double verticalScale) {
    const QUORPoint3D step{stepOf(file.getWidthM(), file.getXPoints()),
                           stepOf(file.getLengthM(), file.getYPoints()), 1.0};
    const QUORPoint3D middle = file.getMiddleM();
    return {{middle.x - 0.5 * file.getXPoints() * step.x, middle.y - 0.5 * file.getYPoints() * step.y,
             file.getRadarElevation() * verticalScale},
            step};
}

QUORGridPlacement QUORGridPlacement::ofVolume(const QUORFile& file, double verticalScale) {
    QUORGridPlacement placement = ofLayer(file, verticalScale);
    placement.step.z = stepOf(file.getHeightM() * verticalScale, file.getZPoints());
    return placement;
}

QUORPoint3D QUORGridPlacement::toGrid(const QUORPoint3D& scene) const {
    return {(scene.x - origin.x) / step.x, (scene.y - origin.y) / step.y, (scene.z - origin.z) / step.z};
}

QUORPoint3D QUORGridPlacement::toScene(const QUORPoint3D& grid) const {
    return {origin.x + grid.x * step.x, origin.y + grid.y * step.y, origin.z + grid.z * step.z};
}
