// SPDX-License-Identifier: MIT
#include "QUORCfGridReader.h"

#include "QUORCfTime.h"
#include "QUORGridMapping.h"
#include "QUORImportError.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

namespace {

enum class Axis { X, Y, Z, Other };

struct AxisRow {
    Axis axis;
    const char* letter;
    QStringList standardNames;
    QStringList names;
};

const std::array<AxisRow, 3>& axisRows() {
    static const std::array<AxisRow, 3> rows{
        {{Axis::X,
          "X",
          {"projection_x_coordinate", "longitude", "grid_longitude"},
          {"x", "x0", "x_disp", "lon", "longitude", "easting", "xc"}},
         {Axis::Y,
          "Y",
          {"projection_y_coordinate", "latitude", "grid_latitude"},
          {"y", "y0", "y_disp", "lat", "latitude", "northing", "yc"}},
         {Axis::Z,
          "Z",
          {"projection_z_coordinate", "altitude", "height", "height_above_mean_sea_level",
           "height_above_reference_ellipsoid"},
          {"z", "z0", "z_disp", "height", "altitude", "alt", "level", "levels"}}}};
    return rows;
}

Axis axisOf(const QUORNetcdfGroup& root, const QString& dimension) {
    const auto variable = root.findVariable(dimension.toUtf8().constData());
    if (!variable || !variable->isNumeric() || variable->getShape().size() != 1) {
        return Axis::Other;
    }
    for (const AxisRow& row : axisRows()) {
        if (variable->text("axis").compare(QLatin1String(row.letter), Qt::CaseInsensitive) == 0 ||
            row.standardNames.contains(variable->text("standard_name"), Qt::CaseInsensitive) ||
            row.names.contains(dimension, Qt::CaseInsensitive)) {
            return row.axis;
        }
    }
    return Axis::Other;
}

/// Where x, y and z stand among the dimensions of a field; nothing when one of them is not there.
std::optional<std::array<std::size_t, 3>> placesOf(const QUORNetcdfGroup& root,
                                                   const QUORNetcdfVariable& variable) {
    std::array<std::size_t, 3> places{99, 99, 99};
    const QStringList dimensions = variable.getDimensions();
    for (qsizetype i = 0; i < dimensions.size(); ++i) {
        if (const Axis axis = axisOf(root, dimensions[i]); axis != Axis::Other) {
            places[std::size_t(axis)] = std::size_t(i);
        }
    }
    return *std::max_element(places.begin(), places.end()) == 99 ? std::nullopt : std::optional(places);
}

struct Field {
    QUORRadarQuantities::Match match;
    QUORNetcdfVariable variable;
    std::array<std::size_t, 3> places;
};

std::map<QUORRadarQuantity, Field> fieldsOf(const QUORNetcdfGroup& root, QStringList* leftOut) {
    std::map<QUORRadarQuantity, Field> fields;
    const auto leave = [leftOut](const QString& name) {
        if (leftOut != nullptr) {
            leftOut->append(name);
        }
    };
    for (const QUORNetcdfVariable& variable : root.getVariables()) {
        const auto places = variable.isNumeric() ? placesOf(root, variable) : std::nullopt;
        if (!places) {
            continue;
        }
        const auto match = QUORRadarQuantities::find(variable.getName(), variable.text("standard_name"));
        if (!match || !QUORRadarQuantities::unitFactor(match->quantity, variable.text("units"))) {
            leave(variable.getName());
            continue;
        }
        const auto known = fields.find(match->quantity);
        if (known == fields.end()) {
            fields.emplace(match->quantity, Field{*match, variable, *places});
        } else if (match->rank < known->second.match.rank) {
            leave(known->second.variable.getName());
            known->second = {*match, variable, *places};
        } else {
            leave(variable.getName());
        }
    }
    return fields;
}

/// How many metres, or degrees, a unit of an axis is; no unit is metres. Throws a QUORImportError.
double lengthOf(const QString& axis, const QString& units) {
    const QString unit = units.simplified().section(QLatin1Char(' '), 0, 0); // such as "km MSL"
    static const QStringList kilometres{"km", "kms", "kilometer", "kilometers", "kilometre", "kilometres"};
    static const QStringList metres{"", "m", "meter", "meters", "metre", "metres", "1"};
    if (kilometres.contains(unit, Qt::CaseInsensitive)) {
        return 1000.0;
    }
    if (metres.contains(unit, Qt::CaseInsensitive) ||
        unit.startsWith(QLatin1String("degree"), Qt::CaseInsensitive)) {
        return 1.0;
    }
    throw QUORImportError(QStringLiteral("%1: unknown unit \"%2\"").arg(axis, units));
}

/// Ascending; `isReversed` tells of an axis that descends in the file.
std::vector<double> coordinates(const QUORNetcdfGroup& root, const QString& name, bool& isReversed) {
    const QUORNetcdfVariable variable = *root.findVariable(name.toUtf8().constData());
    std::vector<double> values = variable.readDoubles();
    const double unit = lengthOf(name, variable.text("units"));
    for (double& value : values) {
        value *= unit;
    }
    isReversed = values.size() > 1 && values.front() > values.back();
    if (isReversed) {
        std::reverse(values.begin(), values.end());
    }
    return values;
}

/// Heights are over the origin of the grid, unless they are said to be over the sea.
bool isOverTheSea(const QUORNetcdfVariable& z) {
    const QString standardName = z.text("standard_name");
    const QString title = z.text("long_name").toLower();
    return standardName == QLatin1String("altitude") ||
           standardName == QLatin1String("height_above_mean_sea_level") ||
           title.contains(QLatin1String("sea level")) || title.contains(QLatin1String("msl"));
}

/// Brings the values of the first time into the order of the product.
std::vector<float> arrange(const Field& field, const std::vector<std::size_t>& shape,
                           const std::array<bool, 3>& isReversed) {
    const std::vector<float> stored = field.variable.readValues();
    std::vector<std::size_t> strides(shape.size(), 1);
    for (std::size_t i = shape.size() - 1; i > 0; --i) {
        strides[i - 1] = strides[i] * shape[i];
    }
    std::array<std::size_t, 3> counts{};
    std::array<std::size_t, 3> steps{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        counts[axis] = shape[field.places[axis]];
        steps[axis] = strides[field.places[axis]];
    }
    const double factor = field.match.sign * *QUORRadarQuantities::unitFactor(field.match.quantity,
                                                                              field.variable.text("units"));
    std::vector<float> values;
    values.reserve(counts[0] * counts[1] * counts[2]);
    const auto at = [&](std::size_t axis, std::size_t index) {
        return (isReversed[axis] ? counts[axis] - 1 - index : index) * steps[axis];
    };
    for (std::size_t z = 0; z < counts[2]; ++z) {
        for (std::size_t y = 0; y < counts[1]; ++y) {
            for (std::size_t x = 0; x < counts[0]; ++x) {
                const float value = stored[at(0, x) + at(1, y) + at(2, z)];
                values.push_back(QUORRadarValue::isNoEcho(value) ? value : float(value * factor));
            }
        }
    }
    return values;
}

QString nameOf(const QUORNetcdfGroup& root) {
    for (const QString& name : {root.text("site_name"), root.text("radar_name"), root.text("instrument_name"),
                                root.findText("radar_name"), root.text("title"), root.text("institution")}) {
        if (!name.isEmpty()) {
            return name;
        }
    }
    return {};
}

std::optional<double> firstNumber(const QUORNetcdfGroup& root, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        if (const auto value = root.findNumber(name)) {
            return value;
        }
    }
    return {};
}

void readTime(const QUORNetcdfGroup& root, QUORRadarData& data) {
    data.time = QUORCfTime::first(root, "time");
    for (const QString& text : {root.text("time_coverage_start"), root.findText("time_coverage_start")}) {
        if (!data.time.isValid()) {
            data.time = QUORCfTime::parse(text);
        }
    }
}

} // namespace

bool QUORCfGridReader::recognises(const QUORNetcdfGroup& root) {
    return !fieldsOf(root, nullptr).empty();
}

QUORRadarData QUORCfGridReader::read(const QUORNetcdfGroup& root) {
    QUORRadarData data;
    data.format = QStringLiteral("gridded CF netCDF");
    data.site.name = nameOf(root);
    data.site.altitude = firstNumber(root, {"origin_altitude", "radar_altitude", "alt"}).value_or(0.0);
    readTime(root, data);
    const std::map<QUORRadarQuantity, Field> fields = fieldsOf(root, &data.leftOut);
    const Field& model = fields.begin()->second;
    const std::vector<std::size_t> shape = model.variable.getShape();
    const QStringList dimensions = model.variable.getDimensions();
    const auto dimension = [&](Axis axis) { return dimensions[qsizetype(model.places[std::size_t(axis)])]; };
    QUORRadarGrid& grid = data.grid.emplace();
    std::array<bool, 3> isReversed{};
    grid.x = coordinates(root, dimension(Axis::X), isReversed[0]);
    grid.y = coordinates(root, dimension(Axis::Y), isReversed[1]);
    grid.z = coordinates(root, dimension(Axis::Z), isReversed[2]);
    if (isOverTheSea(*root.findVariable(dimension(Axis::Z).toUtf8().constData()))) {
        for (double& height : grid.z) {
            height -= data.site.altitude;
        }
    }
    QUORGridMapping(root, model.variable, dimension(Axis::X)).place(data);
    for (const auto& [quantity, field] : fields) {
        if (field.variable.getDimensions() != dimensions) {
            data.leftOut.append(field.variable.getName());
            continue;
        }
        grid.fields.push_back({quantity, field.variable.getName(), arrange(field, shape, isReversed)});
    }
    for (std::size_t i = 0; i < shape.size(); ++i) {
        if (std::find(model.places.begin(), model.places.end(), i) == model.places.end() && shape[i] > 1) {
            data.warnings.append(
                QStringLiteral("of %1 only the first is read").arg(dimensions[qsizetype(i)]));
        }
    }
    return data;
}
