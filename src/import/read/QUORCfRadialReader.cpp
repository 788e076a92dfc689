// SPDX-License-Identifier: MIT
#include "QUORCfRadialReader.h"

#include "QUORCfTime.h"
#include "QUORImportError.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace {

constexpr double SPEED_OF_LIGHT = 299792458.0;

/// Rays first to last of a table.
struct Rays {
    std::size_t first;
    std::size_t last;
    std::size_t count() const { return last - first + 1; }
};

struct Gates {
    int count;
    double first;
    double spacing;
};

std::vector<double> demand(const QUORNetcdfGroup& group, const char* name) {
    const auto variable = group.findVariable(name);
    if (!variable) {
        throw QUORImportError(QStringLiteral("no %1 in it").arg(QLatin1String(name)));
    }
    return variable->readDoubles();
}

/// Nothing for a variable that is absent or not of that length.
std::vector<double> findAll(const QUORNetcdfGroup& group, const char* name, std::size_t count) {
    const auto variable = group.findVariable(name);
    if (!variable || !variable->isNumeric() || variable->getShape() != std::vector<std::size_t>{count}) {
        return {};
    }
    return variable->readDoubles();
}

double firstFinite(const std::vector<double>& values, std::size_t from = 0) {
    const auto found = std::find_if(values.begin() + std::ptrdiff_t(std::min(from, values.size())),
                                    values.end(), [](double value) { return std::isfinite(value); });
    return found == values.end() ? 0.0 : *found;
}

Gates gatesOf(const QUORNetcdfGroup& group) {
    const auto variable = group.findVariable("range");
    const std::vector<double> range = demand(group, "range");
    if (range.empty() || variable->getShape().size() != 1) {
        throw QUORImportError(QStringLiteral("no usable ranges of gates"));
    }
    const double unit =
        variable->text("units").startsWith(QLatin1String("k"), Qt::CaseInsensitive) ? 1000.0 : 1.0;
    const double spacing = range.size() > 1 ? (range.back() - range.front()) / double(range.size() - 1)
                                            : variable->number("meters_between_gates").value_or(0.0);
    for (std::size_t i = 0; i < range.size(); ++i) {
        if (!(std::abs(range[i] - range[0] - double(i) * spacing) <= 0.5 * spacing)) {
            throw QUORImportError(QStringLiteral("gates are not evenly spaced"));
        }
    }
    return {int(range.size()), range[0] * unit, spacing * unit};
}

/// The best field of each quantity; the names of the others.
struct Fields {
    std::map<QUORRadarQuantity, std::pair<QUORRadarQuantities::Match, QUORNetcdfVariable>> best;
    QStringList leftOut;
};

bool isField(const QUORNetcdfVariable& variable) {
    const QStringList dimensions = variable.getDimensions();
    return variable.isNumeric() && ((dimensions.size() == 2 && dimensions[1] == QLatin1String("range")) ||
                                    (dimensions.size() == 1 && dimensions[0] == QLatin1String("n_points")));
}

Fields fieldsOf(const QUORNetcdfGroup& group) {
    Fields fields;
    for (const QUORNetcdfVariable& variable : group.getVariables()) {
        if (!isField(variable)) {
            continue;
        }
        const auto match = QUORRadarQuantities::find(variable.getName(), variable.text("standard_name"));
        if (!match || !QUORRadarQuantities::unitFactor(match->quantity, variable.text("units"))) {
            fields.leftOut.append(variable.getName());
            continue;
        }
        const auto known = fields.best.find(match->quantity);
        if (known == fields.best.end()) {
            fields.best.emplace(match->quantity, std::pair(*match, variable));
        } else if (match->rank < known->second.first.rank) {
            fields.leftOut.append(known->second.second.getName());
            known->second = {*match, variable};
        } else {
            fields.leftOut.append(variable.getName());
        }
    }
    return fields;
}

/// The values of one field over all rays of a group, each ray filled up with no data.
class Table {
public:
    Table(const QUORNetcdfGroup& group, const QUORNetcdfVariable& variable, std::size_t rays,
          std::size_t gates)
        : _gates(gates), _values(variable.readValues()) {
        const std::vector<std::size_t> shape = variable.getShape();
        if (shape.size() == 1) {
            _starts = demand(group, "ray_start_index");
            _lengths = demand(group, "ray_n_gates");
        }
        const bool isWhole = shape.size() == 2 && shape[0] == rays && shape[1] == gates;
        if (!isWhole && (shape.size() == 2 || _starts.size() != rays || _lengths.size() != rays)) {
            throw QUORImportError(variable.getName() +
                                  QStringLiteral(" is not of %1 rays with %2 gates").arg(rays).arg(gates));
        }
    }

    std::vector<float> take(const Rays& rays, double factor) const {
        std::vector<float> values(rays.count() * _gates, QUORRadarValue::NO_DATA);
        auto out = values.begin();
        for (std::size_t ray = rays.first; ray <= rays.last; ++ray, out += std::ptrdiff_t(_gates)) {
            const auto [start, length] = rowOf(ray);
            const auto first = _values.begin() + std::ptrdiff_t(start);
            std::transform(first, first + std::ptrdiff_t(length), out, [factor](float value) {
                return QUORRadarValue::isNoEcho(value) ? value : float(value * factor);
            });
        }
        return values;
    }

private:
    std::pair<std::size_t, std::size_t> rowOf(std::size_t ray) const {
        if (_starts.empty()) {
            return {ray * _gates, _gates};
        }
        const double start = _starts[ray];
        const double length = _lengths[ray];
        if (!(start >= 0.0 && length >= 0.0 && length <= double(_gates) &&
              start + length <= double(_values.size()))) {
            throw QUORImportError(QStringLiteral("ray %1 is not within the data").arg(ray));
        }
        return {std::size_t(start), std::size_t(length)};
    }

    std::size_t _gates;
    std::vector<float> _values;
    std::vector<double> _starts;
    std::vector<double> _lengths;
};

/// Angles, speeds and times of the rays of a group, without their values.
class RayTable {
public:
    explicit RayTable(const QUORNetcdfGroup& group)
        : _azimuths(demand(group, "azimuth")),
          _elevations(demand(group, "elevation")),
          _nyquists(findAll(group, "nyquist_velocity", _azimuths.size())),
          _periods(findAll(group, "prt", _azimuths.size())) {
        if (_elevations.size() != _azimuths.size() || _azimuths.empty()) {
            throw QUORImportError(QStringLiteral("%1 azimuths and %2 elevations")
                                      .arg(_azimuths.size())
                                      .arg(_elevations.size()));
        }
    }

    std::size_t count() const { return _azimuths.size(); }

    QUORRadarSweep sweep(const Rays& rays, double fixedAngle) const {
        QUORRadarSweep sweep;
        for (std::size_t ray = rays.first; ray <= rays.last; ++ray) {
            sweep.azimuths.push_back(float(_azimuths[ray]));
            sweep.elevations.push_back(float(_elevations[ray]));
        }
        sweep.nyquist = std::abs(firstFinite(_nyquists, rays.first));
        const double period = firstFinite(_periods, rays.first);
        sweep.prf = period > 1e-6 ? 1.0 / period : 0.0;
        std::vector<float> sorted = sweep.elevations;
        const auto middle = sorted.begin() + std::ptrdiff_t(sorted.size() / 2);
        std::nth_element(sorted.begin(), middle, sorted.end());
        sweep.fixedAngle = std::isfinite(fixedAngle) ? fixedAngle : double(*middle);
        return sweep;
    }

private:
    std::vector<double> _azimuths;
    std::vector<double> _elevations;
    std::vector<double> _nyquists;
    std::vector<double> _periods;
};

/// Turns of the antenna around the vertical; others cannot be drawn as a volume.
bool isTurn(const QString& mode) {
    return !mode.contains(QLatin1String("rhi"), Qt::CaseInsensitive) &&
           !mode.contains(QLatin1String("idle"), Qt::CaseInsensitive) &&
           !mode.contains(QLatin1String("calibration"), Qt::CaseInsensitive);
}

/// Reads the quantities of those sweeps of a group.
void addMoments(const QUORNetcdfGroup& group, std::size_t rays, const std::vector<Rays>& parts,
                const std::vector<QUORRadarSweep*>& sweeps, QUORRadarData& data) {
    const Gates gates = gatesOf(group);
    const Fields fields = fieldsOf(group);
    data.leftOut += fields.leftOut;
    for (const auto& [quantity, field] : fields.best) {
        const auto& [match, variable] = field;
        const Table table(group, variable, rays, std::size_t(gates.count));
        const double unit = *QUORRadarQuantities::unitFactor(quantity, variable.text("units"));
        for (std::size_t i = 0; i < parts.size(); ++i) {
            QUORRadarMoment moment;
            moment.quantity = quantity;
            moment.name = variable.getName();
            moment.gates = gates.count;
            moment.firstGate = gates.first;
            moment.gateSpacing = gates.spacing;
            moment.pack(table.take(parts[i], match.sign * unit), variable.getStep() * unit);
            sweeps[i]->moments.push_back(std::move(moment));
        }
    }
}

/// In the root, or in the groups that version 2 has for such things.
std::optional<double> findInstrumentNumber(const QUORNetcdfGroup& root, const char* name) {
    if (const auto value = root.findNumber(name)) {
        return value;
    }
    for (const char* group : {"radar_parameters", "instrument_parameters", "radar_calibration"}) {
        if (const auto found = root.findGroup(QLatin1String(group))) {
            if (const auto value = found->findNumber(name)) {
                return value;
            }
        }
    }
    return {};
}

void readInstrument(const QUORNetcdfGroup& root, QUORRadarData& data) {
    data.site.name = root.text("site_name");
    if (data.site.name.isEmpty()) {
        data.site.name = root.text("instrument_name");
    }
    const double nowhere = std::nan("");
    data.site.latitude = root.findNumber("latitude").value_or(nowhere);
    data.site.longitude = root.findNumber("longitude").value_or(nowhere);
    data.site.altitude = root.findNumber("altitude").value_or(nowhere);
    if (const auto height = root.findNumber("altitude_agl"); height && *height > 0.0 && *height < 1000.0) {
        data.site.heightOfAntenna = height;
    }
    for (const QString& text : {root.findText("time_coverage_start"), root.text("time_coverage_start")}) {
        if (!data.time.isValid()) {
            data.time = QUORCfTime::parse(text);
        }
    }
    if (!data.time.isValid()) {
        data.time = QUORCfTime::first(root, "time");
    }
    data.beamWidth = findInstrumentNumber(root, "radar_beam_width_h").value_or(0.0);
    if (const auto frequency = findInstrumentNumber(root, "frequency"); frequency && *frequency > 1e8) {
        data.wavelength = SPEED_OF_LIGHT / *frequency;
    }
}

void readTable(const QUORNetcdfGroup& root, QUORRadarData& data) {
    const RayTable table(root);
    const std::vector<double> starts = demand(root, "sweep_start_ray_index");
    const std::vector<double> ends = demand(root, "sweep_end_ray_index");
    const std::vector<double> angles = findAll(root, "fixed_angle", starts.size());
    const auto modes = root.findVariable("sweep_mode");
    const QStringList names = modes && modes->isText() ? modes->readTexts() : QStringList();
    if (starts.size() != ends.size()) {
        throw QUORImportError(
            QStringLiteral("%1 sweeps begin and %2 end").arg(starts.size()).arg(ends.size()));
    }
    std::vector<Rays> parts;
    for (std::size_t i = 0; i < starts.size(); ++i) {
        if (!(starts[i] >= 0.0 && ends[i] >= starts[i] && ends[i] < double(table.count()))) {
            throw QUORImportError(QStringLiteral("sweep %1: rays %2 to %3 of %4")
                                      .arg(i + 1)
                                      .arg(starts[i])
                                      .arg(ends[i])
                                      .arg(table.count()));
        }
        if (isTurn(names.value(qsizetype(i)))) {
            parts.push_back({std::size_t(starts[i]), std::size_t(ends[i])});
            data.sweeps.push_back(table.sweep(parts.back(), i < angles.size() ? angles[i] : std::nan("")));
        }
    }
    std::vector<QUORRadarSweep*> sweeps;
    for (QUORRadarSweep& sweep : data.sweeps) {
        sweeps.push_back(&sweep);
    }
    addMoments(root, table.count(), parts, sweeps, data);
}

std::vector<QUORNetcdfGroup> sweepGroups(const QUORNetcdfGroup& root) {
    std::vector<QUORNetcdfGroup> groups;
    const auto names = root.findVariable("sweep_group_name");
    if (names && names->isText()) {
        for (const QString& name : names->readTexts()) {
            if (const auto group = root.findGroup(name)) {
                groups.push_back(*group);
            }
        }
    }
    if (groups.empty()) {
        for (const QUORNetcdfGroup& group : root.getGroups()) {
            if (group.getName().startsWith(QLatin1String("sweep"))) {
                groups.push_back(group);
            }
        }
    }
    return groups;
}

void readGroups(const QUORNetcdfGroup& root, QUORRadarData& data) {
    for (const QUORNetcdfGroup& group : sweepGroups(root)) {
        if (!isTurn(group.findText("sweep_mode"))) {
            continue;
        }
        const RayTable table(group);
        double angle = std::nan("");
        for (const char* name : {"sweep_fixed_angle", "fixed_angle"}) {
            angle = group.findNumber(name).value_or(angle);
        }
        const Rays all{0, table.count() - 1};
        data.sweeps.push_back(table.sweep(all, angle));
        addMoments(group, table.count(), {all}, {&data.sweeps.back()}, data);
        if (!data.time.isValid()) {
            data.time = QUORCfTime::first(group, "time");
        }
    }
}

} // namespace

bool QUORCfRadialReader::recognises(const QUORNetcdfGroup& root) {
    if (root.findVariable("azimuth") && root.findVariable("elevation") &&
        root.findVariable("sweep_start_ray_index")) {
        return true;
    }
    const std::vector<QUORNetcdfGroup> groups = sweepGroups(root);
    return !groups.empty() && groups.front().findVariable("azimuth") && groups.front().findVariable("range");
}

QUORRadarData QUORCfRadialReader::read(const QUORNetcdfGroup& root) {
    QUORRadarData data;
    readInstrument(root, data);
    if (root.findVariable("sweep_start_ray_index")) {
        data.format = QStringLiteral("CfRadial 1");
        readTable(root, data);
    } else {
        data.format = QStringLiteral("CfRadial 2");
        readGroups(root, data);
    }
    if (data.sweeps.empty()) {
        throw QUORImportError(QStringLiteral("no turn of the antenna in it, only vertical cuts or nothing"));
    }
    data.isPiece = data.sweeps.size() == 1;
    data.leftOut.removeDuplicates();
    return data;
}
