// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <memory>
#include <utility>

/// A plane of a map as the map library describes it, such as "+proj=lcc +lat_1=40 ... +a=6370000 +b=6370000",
/// or degrees ("+proj=longlat ..."). Used by one thread at a time.
class QUORMapPlane {
public:
    /// Throws a QUORImportError for a description that the library does not understand.
    explicit QUORMapPlane(const QString& description);
    ~QUORMapPlane();
    QUORMapPlane(const QUORMapPlane&) = delete;
    QUORMapPlane& operator=(const QUORMapPlane&) = delete;

    /// x and y of a place in degrees; not numbers where the map has no such place.
    std::pair<double, double> project(double latitude, double longitude) const;
    /// Latitude and longitude in degrees.
    std::pair<double, double> unproject(double x, double y) const;
    bool isDegrees() const { return _isDegrees; }

private:
    struct Handles;
    std::unique_ptr<Handles> _handles;
    bool _isDegrees;
};
