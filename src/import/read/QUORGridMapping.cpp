// SPDX-License-Identifier: MIT
#include "QUORGridMapping.h"

#include "QUORImportError.h"
#include "QUORMapPlane.h"

#include <cmath>

namespace {

constexpr double USUAL_RADIUS = 6378137.0;
constexpr double USUAL_INVERSE_FLATTENING = 298.257223;

QString term(const char* name, double value) {
    return QStringLiteral(" +%1=%2").arg(QLatin1String(name)).arg(value, 0, 'f', 9);
}

} // namespace

QUORGridMapping::QUORGridMapping(const QUORNetcdfGroup& root, const QUORNetcdfVariable& field,
                                 const QString& xName)
    : _root(root) {
    if (const QString name = field.text("grid_mapping"); !name.isEmpty()) {
        _mapping = root.findVariable(name.toUtf8().constData());
    }
    for (const QUORNetcdfVariable& variable : root.getVariables()) {
        if (!_mapping && !variable.text("grid_mapping_name").isEmpty()) {
            _mapping = variable;
        }
    }
    _name = _mapping ? _mapping->text("grid_mapping_name") : QString();
    const auto x = root.findVariable(xName.toUtf8().constData());
    if (x && (x->text("units").startsWith(QLatin1String("degree")) ||
              x->text("standard_name") == QLatin1String("longitude"))) {
        _name = QStringLiteral("latitude_longitude");
    }
    _radius = attribute("semi_major_axis", attribute("earth_radius", USUAL_RADIUS));
    _inverseFlattening = attribute("inverse_flattening", USUAL_INVERSE_FLATTENING);
    if (_mapping && !_mapping->number("inverse_flattening")) {
        const double minor = attribute("semi_minor_axis", _mapping->number("earth_radius") ? _radius : 0.0);
        if (minor > 0.0) {
            _inverseFlattening = _radius - minor > 1.0 ? _radius / (_radius - minor) : 0.0;
        }
    }
    // What no product header may hold.
    if (!(_radius >= 6.0e6 && _radius <= 6.6e6)) {
        _radius = USUAL_RADIUS;
    }
    if (!(_inverseFlattening >= 100.0 && _inverseFlattening < 4000.0)) {
        _inverseFlattening = 0.0;
    }
}

double QUORGridMapping::attribute(const char* name, double otherwise) const {
    const auto value = _mapping ? _mapping->number(name) : std::nullopt;
    return value && std::isfinite(*value) ? *value : otherwise;
}

QString QUORGridMapping::earth() const {
    return term("a", _radius) +
           (_inverseFlattening > 0.0 ? term("rf", _inverseFlattening) : term("b", _radius));
}

QString QUORGridMapping::describe() const {
    const auto proj = [this](const char* name) {
        return QStringLiteral("+proj=%1").arg(QLatin1String(name)) + earth() +
               term("x_0", attribute("false_easting", 0.0)) + term("y_0", attribute("false_northing", 0.0));
    };
    const QString latitude = term("lat_0", attribute("latitude_of_projection_origin", 0.0));
    const QString longitude = term("lon_0", attribute("longitude_of_projection_origin",
                                                      attribute("longitude_of_central_meridian", 0.0)));
    const std::vector<double> parallels =
        _mapping ? _mapping->numbers("standard_parallel") : std::vector<double>();
    const auto parallel = [&](const char* first, const char* second) {
        return parallels.empty() ? QString()
                                 : term(first, parallels.front()) +
                                       (second != nullptr ? term(second, parallels.back()) : QString());
    };
    if (_name == QLatin1String("latitude_longitude")) {
        return QStringLiteral("+proj=longlat") + earth();
    }
    if (_name == QLatin1String("lambert_conformal_conic")) {
        return proj("lcc") + latitude + longitude + parallel("lat_1", "lat_2");
    }
    if (_name == QLatin1String("albers_conical_equal_area")) {
        return proj("aea") + latitude + longitude + parallel("lat_1", "lat_2");
    }
    if (_name == QLatin1String("lambert_azimuthal_equal_area")) {
        return proj("laea") + latitude + longitude;
    }
    if (_name == QLatin1String("transverse_mercator")) {
        return proj("tmerc") + latitude + longitude +
               term("k_0", attribute("scale_factor_at_central_meridian", 1.0));
    }
    if (_name == QLatin1String("mercator")) {
        return proj("merc") + longitude + parallel("lat_ts", nullptr);
    }
    if (_name == QLatin1String("stereographic")) {
        return proj("stere") + latitude + longitude +
               term("k_0", attribute("scale_factor_at_projection_origin", 1.0));
    }
    if (_name == QLatin1String("polar_stereographic")) {
        const double vertical = attribute("straight_vertical_longitude_from_pole",
                                          attribute("longitude_of_projection_origin", 0.0));
        return proj("stere") + latitude + term("lon_0", vertical) + parallel("lat_ts", nullptr);
    }
    throw QUORImportError(QStringLiteral("a grid mapping that is not known: ") + _name);
}

void QUORGridMapping::placeEquidistant(QUORRadarData& data) const {
    const auto number = [this](const char* name) { return _root.findNumber(name); };
    const auto latitude = _mapping && _mapping->number("latitude_of_projection_origin")
                              ? _mapping->number("latitude_of_projection_origin")
                              : number("origin_latitude");
    const auto longitude = _mapping && _mapping->number("longitude_of_projection_origin")
                               ? _mapping->number("longitude_of_projection_origin")
                               : number("origin_longitude");
    const auto otherLatitude = number("radar_latitude") ? number("radar_latitude") : number("lat");
    const auto otherLongitude = number("radar_longitude") ? number("radar_longitude") : number("lon");
    if ((!latitude && !otherLatitude) || (!longitude && !otherLongitude)) {
        throw QUORImportError(
            QStringLiteral("no grid mapping and no origin: the place of the grid is not known"));
    }
    data.site.latitude = latitude ? *latitude : *otherLatitude;
    data.site.longitude = longitude ? *longitude : *otherLongitude;
    for (double& x : data.grid->x) {
        x -= attribute("false_easting", 0.0);
    }
    for (double& y : data.grid->y) {
        y -= attribute("false_northing", 0.0);
    }
    const auto holdsOrigin = [](const std::vector<double>& axis) {
        return !axis.empty() && axis.front() <= 0.0 && axis.back() >= 0.0;
    };
    if (!holdsOrigin(data.grid->x) || !holdsOrigin(data.grid->y)) {
        // A product is drawn around its origin: the middle of the grid has to be it.
        data.grid->projection = QStringLiteral("+proj=aeqd") + earth() + term("lat_0", data.site.latitude) +
                                term("lon_0", data.site.longitude);
        placeInMiddle(data);
    }
}

void QUORGridMapping::placeInMiddle(QUORRadarData& data) const {
    const auto middle = [](const std::vector<double>& axis) {
        return axis.empty() ? 0.0 : (axis.front() + axis.back()) / 2.0;
    };
    std::tie(data.site.latitude, data.site.longitude) =
        QUORMapPlane(data.grid->projection).unproject(middle(data.grid->x), middle(data.grid->y));
}

void QUORGridMapping::place(QUORRadarData& data) const {
    data.grid->earthRadius = _radius;
    data.grid->inverseFlattening = _inverseFlattening;
    if (_name.isEmpty() || _name == QLatin1String("azimuthal_equidistant")) {
        placeEquidistant(data);
        return;
    }
    data.grid->projection = describe();
    const auto latitude = _root.findNumber("radar_latitude");
    const auto longitude = _root.findNumber("radar_longitude");
    if (latitude && longitude) {
        data.site.latitude = *latitude;
        data.site.longitude = *longitude;
        return;
    }
    placeInMiddle(data);
}
