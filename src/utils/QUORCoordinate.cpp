// SPDX-License-Identifier: MIT
#include "QUORCoordinate.h"

#include "QUORGeoProjection.h"
#include "QUORUnits.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double BINARY_ANGLES_PER_DEGREE = 11930464.711111112;
constexpr double EARTH_RADIUS = 6378137.0;
constexpr double INVERSE_FLATTENING = 298.257;
constexpr QChar DEGREE_SIGN(0x00B0);

double fromBinaryAngle(unsigned int angle) {
    const double degrees = angle / BINARY_ANGLES_PER_DEGREE;
    return degrees >= 180.0 ? degrees - 360.0 : degrees;
}

double normalized(double angle) {
    if (angle >= -180.0 && angle <= 180.0) {
        return angle;
    }
    if (angle > 180.0 && angle <= 360.0) {
        return angle - 360.0;
    }
    return angle >= -360.0 && angle < -180.0 ? angle + 360.0 : 0.0;
}

double fromParts(int degrees, unsigned int minutes, unsigned int seconds, bool negative) {
    const double angle = degrees + minutes / 60.0 + seconds / 3600.0;
    return negative ? -angle : angle;
}

// Callers ask for many distances from one place in a row.
QUORPoint3D projectAround(const QUORCoordinate& centre, const QUORCoordinate& other) {
    thread_local QUORGeoProjection::CPtr projection;
    if (!projection || projection->getReferenceLocation() != centre) {
        projection = std::make_shared<QUORGeoProjection>(QStringLiteral("aeqd"), centre, EARTH_RADIUS,
                                                         INVERSE_FLATTENING);
    }
    return projection->projectFromLatLon(other);
}

QString decimalText(double angle, QChar mark) {
    return QString::number(std::abs(angle), 'f', 4) + DEGREE_SIGN + QLatin1Char(' ') + mark;
}

QString wholeDegreesText(long long degrees) {
    return QString::number(degrees) + DEGREE_SIGN + QLatin1Char(' ');
}

// Rounded to the smallest unit before it is split: no part may read 60.
QString minutesSecondsText(double angle, QChar mark) {
    constexpr long long MINUTE = 60 * 100;
    constexpr long long DEGREE = 60 * MINUTE;
    const long long hundredths = std::llround(std::abs(angle) * DEGREE);
    return wholeDegreesText(hundredths / DEGREE) + QString::number(hundredths % DEGREE / MINUTE) +
           QStringLiteral("' ") + QString::number(double(hundredths % MINUTE) / 100.0, 'f', 2) +
           QStringLiteral("\" ") + mark;
}

QString minutesText(double angle, QChar mark) {
    constexpr long long DEGREE = 60 * 1000;
    const long long thousandths = std::llround(std::abs(angle) * DEGREE);
    return wholeDegreesText(thousandths / DEGREE) +
           QString::number(double(thousandths % DEGREE) / 1000.0, 'f', 3) + QStringLiteral("' ") + mark;
}

int toBound(double degrees) {
    return int(std::lround(degrees));
}

// Also takes what a division by the length of a degree at a pole gives.
double limitedDegrees(double degrees) {
    return degrees < 360.0 ? std::max(degrees, 0.0) : 360.0;
}

} // namespace

QUORCoordinate::QUORCoordinate(unsigned int lat, unsigned int lon)
    : _lat(fromBinaryAngle(lat)), _lon(fromBinaryAngle(lon)) {}

QUORCoordinate::QUORCoordinate(double lat, double lon) : _lat(normalized(lat)), _lon(normalized(lon)) {}

QUORCoordinate::QUORCoordinate(int latDeg, unsigned int latMin, unsigned int latSec, char latHemisphere,
                               int lonDeg, unsigned int lonMin, unsigned int lonSec, char lonHemisphere)
    : _lat(fromParts(latDeg, latMin, latSec, latHemisphere == 's' || latHemisphere == 'S')),
      _lon(fromParts(lonDeg, lonMin, lonSec, lonHemisphere == 'w' || lonHemisphere == 'W')) {}

QChar QUORCoordinate::getLatitudeMark() const {
    return QLatin1Char(_lat < 0.0 ? 'S' : 'N');
}

QChar QUORCoordinate::getLongitudeMark() const {
    return QLatin1Char(_lon < 0.0 ? 'W' : 'E');
}

double QUORCoordinate::getDistanceTo(const QUORCoordinate& other) const {
    if (*this == other) {
        return 0.0;
    }
    const QUORPoint3D p = projectAround(*this, other);
    return std::hypot(p.x, p.y);
}

double QUORCoordinate::getBearingTo(const QUORCoordinate& other) const {
    if (*this == other) {
        return 0.0;
    }
    const QUORPoint3D p = projectAround(*this, other);
    double bearing = std::atan2(p.x, p.y) * QUORUnits::DEGREES_PER_RADIAN;
    if (bearing < 0.0) {
        bearing += 360.0;
    }
    return std::clamp(bearing, 0.0, 360.0);
}

double QUORCoordinate::calcOneLatDegLength() const {
    const double towardEquator = _lat >= 0.0 ? _lat - 1.0 : _lat + 1.0;
    return QUORCoordinate(_lat, _lon).getDistanceTo(QUORCoordinate(towardEquator, _lon));
}

double QUORCoordinate::calcOneLonDegLength() const {
    return QUORCoordinate(_lat, _lon - 0.5).getDistanceTo(QUORCoordinate(_lat, _lon + 0.5));
}

void QUORCoordinate::calcLatLonBounds(double range, int& minLat, int& maxLat, int& minLon, int& maxLon,
                                      int minDegrees) const {
    const double latLength = calcOneLatDegLength();
    const double lonLength = calcOneLonDegLength();
    const double nLat = limitedDegrees(std::max(std::ceil(range / latLength), double(minDegrees)));
    const double nLon = limitedDegrees(std::ceil(latLength / lonLength * nLat));
    minLat = std::clamp(toBound(_lat - nLat), -90, 90);
    maxLat = std::clamp(toBound(_lat + nLat), -90, 90);
    minLon = toBound(_lon - nLon);
    maxLon = toBound(_lon + nLon);
    if (minLat == -90 || maxLat == 90) {
        minLon = -180;
        maxLon = 180;
    }
}

QString QUORCoordinate::formattedString(Formatter formatter, Modifier modifier) const {
    const auto latitude = [&] { return formatter(_lat, getLatitudeMark()); };
    const auto longitude = [&] { return formatter(_lon, getLongitudeMark()); };
    switch (modifier) {
    case Latitude:
        return latitude();
    case Longitude:
        return longitude();
    default:
        return latitude() + QStringLiteral(", ") + longitude();
    }
}

QString QUORCoordinate::toDecimalString(Modifier modifier) const {
    return formattedString(decimalText, modifier);
}

QString QUORCoordinate::toDmString(Modifier modifier) const {
    return formattedString(minutesSecondsText, modifier);
}

QString QUORCoordinate::toDMsString(Modifier modifier) const {
    return formattedString(minutesText, modifier);
}
