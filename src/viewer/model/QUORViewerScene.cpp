// SPDX-License-Identifier: MIT
#include "QUORViewerScene.h"

bool QUORViewerScene::serves(const QUORFileLeaf::CPtr& product, int settingsRevision) const {
    return isComplete() && leaf == product && revision == settingsRevision;
}

std::array<QUORPoint3D, 2> QUORViewerScene::getCorners(double verticalScale) const {
    const QUORFile& file = *leaf->getFile();
    const QUORPoint3D middle = file.getMiddleM();
    const double halfWidth = 0.5 * file.getWidthM();
    const double halfLength = 0.5 * file.getLengthM();
    return {QUORPoint3D{middle.x - halfWidth, middle.y - halfLength, 0.0},
            QUORPoint3D{middle.x + halfWidth, middle.y + halfLength,
                        (file.getRadarElevation() + file.getHeightM()) * verticalScale}};
}
