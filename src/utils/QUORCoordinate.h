// SPDX-License-Identifier: MIT
#pragma once

#include <QChar>
#include <QString>

/// A geographic position: latitude and longitude in degrees, north and east positive.
class QUORCoordinate {
public:
    /// What a text form contains.
    enum Modifier { Both = 0, Latitude = 1, Longitude = 2 };
    /// Writes one angle (its absolute value) with its hemisphere mark.
    using Formatter = QString (*)(double angle, QChar mark);

    QUORCoordinate() = default;
    /// From binary angles (a full turn is 2^32): the result lies in -180 (inclusive) to 180 (exclusive).
    QUORCoordinate(unsigned int lat, unsigned int lon);
    /// Each angle brought from up to one turn away into -180..180; anything else becomes 0.
    QUORCoordinate(double lat, double lon);
    QUORCoordinate(int latDeg, unsigned int latMin, unsigned int latSec, char latHemisphere, int lonDeg,
                   unsigned int lonMin, unsigned int lonSec, char lonHemisphere);

    double getLat() const { return _lat; }
    double getLon() const { return _lon; }
    QChar getLatitudeMark() const;
    QChar getLongitudeMark() const;

    /// Metres, on a local azimuthal equidistant map; exactly 0 for equal coordinates.
    double getDistanceTo(const QUORCoordinate& other) const;
    /// Degrees clockwise from north, 0 to 360.
    double getBearingTo(const QUORCoordinate& other) const;
    /// Metres; defined for latitudes within -90..90.
    double calcOneLatDegLength() const;
    double calcOneLonDegLength() const;
    /// Whole-degree bounds of a square area `range` metres to each side, at least `minDegrees` of
    /// latitude each way. An area that touches a pole spans all longitudes.
    void calcLatLonBounds(double range, int& minLat, int& maxLat, int& minLon, int& maxLon,
                          int minDegrees) const;

    QString formattedString(Formatter formatter, Modifier modifier) const;
    QString toDecimalString(Modifier modifier) const;
    /// Degrees, minutes and seconds (60° 7' 24.24" N), whatever the name says: what the setting "DMs"
    /// selects.
    QString toDmString(Modifier modifier) const;
    /// Degrees and minutes (60° 7.404' N), likewise: what the setting "Dm" selects.
    QString toDMsString(Modifier modifier) const;

    bool operator==(const QUORCoordinate&) const = default;

private:
    double _lat = 0.0;
    double _lon = 0.0;
};
