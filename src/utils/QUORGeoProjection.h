// SPDX-License-Identifier: MIT
#pragma once

#include "QUORCoordinate.h"
#include "QUORPoint3D.h"

#include <QString>

#include <memory>
#include <span>

/// Conversion between geographic coordinates and the map plane of one product, metres from the
/// reference location. Immutable and safe to share between threads: one mutex per object guards the
/// library's handles, held over a batch.
class QUORGeoProjection {
public:
    using Ptr = std::shared_ptr<QUORGeoProjection>;
    using CPtr = std::shared_ptr<const QUORGeoProjection>;

    /// `projection` is the library's identifier ("aeqd" or "merc"), the radius is in metres. Illegal
    /// arguments or a failed initialisation are logged and leave the projection not ready.
    QUORGeoProjection(QString projection, const QUORCoordinate& reference, double earthRadius,
                      double inverseFlattening);
    virtual ~QUORGeoProjection();
    QUORGeoProjection(const QUORGeoProjection&) = delete;
    QUORGeoProjection& operator=(const QUORGeoProjection&) = delete;

    /// (0, 0, 0) when the projection is not ready or the library fails; z is always 0.
    QUORPoint3D projectFromLatLon(const QUORCoordinate& c) const;
    /// The same for many points under one lock; `points` must be as long as `coordinates`.
    void projectFromLatLon(std::span<const QUORCoordinate> coordinates, std::span<QUORPoint3D> points) const;
    /// Latitude within -90..90, longitude within -180..180; (0, 0) on failure.
    QUORCoordinate projectToLatLon(const QUORPoint3D& p) const;

    bool isReady() const;
    /// Metres of the map for a metre of the ground at the reference location, along the meridian there: 1 for
    /// an azimuthal map, more for Mercator away from the equator; 1 also where it cannot be told.
    double getScaleAtReference() const;
    /// Whether both put every place at the same point.
    bool isSameMap(const QUORGeoProjection& other) const;
    QString getName() const { return _name; }
    QUORCoordinate getReferenceLocation() const { return _reference; }
    double getEarthRadius() const { return _earthRadius; }
    double getInverseFlattening() const { return _inverseFlattening; }

private:
    struct Handles;

    QString _name;
    QUORCoordinate _reference;
    double _earthRadius;
    double _inverseFlattening;
    std::unique_ptr<Handles> _handles;
};
