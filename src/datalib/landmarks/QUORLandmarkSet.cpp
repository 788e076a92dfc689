// SPDX-License-Identifier: MIT
#include "QUORLandmarkSet.h"

QUORLandmarkSet::QUORLandmarkSet(const QUORCoordinate& centre, const QUORCoordinate& lowerBound,
                                 const QUORCoordinate& upperBound)
    : _centre(centre), _lowerBound(lowerBound), _upperBound(upperBound) {}

QUORLandmarkSet::~QUORLandmarkSet() = default;

bool QUORLandmarkSet::contains(const QUORCoordinate& location) const {
    const double west = _lowerBound.getLon();
    const double east = _upperBound.getLon();
    const double lon = location.getLon();
    return _lowerBound.getLat() <= location.getLat() && location.getLat() <= _upperBound.getLat() &&
           (west <= east ? west <= lon && lon <= east : west <= lon || lon <= east);
}
