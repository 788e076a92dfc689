// SPDX-License-Identifier: MIT
#include "QUORTerrainDir.h"

#include "QUORLog.h"

#include <cmath>

QUORTerrainDir::QUORTerrainDir(const QString& sourcePath, const QString& cachePath) {
    const QUORLogScope scope("QUORTerrainDir::QUORTerrainDir");
    setPath(sourcePath, cachePath);
}

QUORTerrainDir::~QUORTerrainDir() = default;

void QUORTerrainDir::setPath(const QString& sourcePath, const QString& cachePath) {
    _sourcePath = sourcePath;
    _cachePath = cachePath;
}

void QUORTerrainDir::scanFiles() {
    const QUORLogScope scope("QUORTerrainDir::scanFiles");
}

QUORTerrainSet::Ptr QUORTerrainDir::getTerrainSet(const QUORGeoProjection::CPtr& projection,
                                                  const QUORCoordinate& corner1,
                                                  const QUORCoordinate& corner2) {
    return std::make_shared<QUORTerrainSet>(
        projection, QUORCoordinate(std::floor(corner1.getLat()), std::floor(corner1.getLon())),
        QUORCoordinate(std::ceil(corner2.getLat()), std::ceil(corner2.getLon())));
}
