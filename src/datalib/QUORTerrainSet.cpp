// SPDX-License-Identifier: MIT
#include "QUORTerrainSet.h"

#include <QMutexLocker>

#include <vtkAssembly.h>

#include <utility>

QUORTerrainSet::QUORTerrainSet(QUORGeoProjection::CPtr projection, const QUORCoordinate& southWest,
                               const QUORCoordinate& northEast)
    : _projection(std::move(projection)), _southWest(southWest), _northEast(northEast) {}

QUORTerrainSet::~QUORTerrainSet() = default;

bool QUORTerrainSet::loadFiles(const QUORAbortFlag& /*abort*/) const {
    return true;
}

vtkSmartPointer<vtkProp3D> QUORTerrainSet::getProp() const {
    const QMutexLocker lock(&_mutex);
    return _prop;
}

double QUORTerrainSet::getElevationAtLocation(const QUORCoordinate& /*location*/) const {
    return 0.0;
}
