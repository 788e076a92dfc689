// SPDX-License-Identifier: MIT
#include "QUOROdimReader.h"

#include "QUORImportError.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <map>

namespace {

constexpr double SPEED_OF_LIGHT = 299792458.0;

/// Attributes of a group's "what", "where" or "how"; those of the levels above hold where it has none.
class Attributes {
public:
    Attributes(const char* kind, const std::vector<QUORNetcdfGroup>& innermostFirst) {
        for (const QUORNetcdfGroup& group : innermostFirst) {
            if (const auto found = group.findGroup(QLatin1String(kind))) {
                _groups.push_back(*found);
            }
        }
        _kind = QLatin1String(kind);
    }

    std::optional<double> number(const char* name) const {
        for (const QUORNetcdfGroup& group : _groups) {
            if (const auto value = group.number(name); value && std::isfinite(*value)) {
                return value;
            }
        }
        return {};
    }
    double demand(const char* name) const {
        const auto value = number(name);
        if (!value) {
            throw QUORImportError(_kind + QLatin1Char('/') + QLatin1String(name) +
                                  QStringLiteral(" is missing or no number"));
        }
        return *value;
    }
    QString text(const char* name) const {
        for (const QUORNetcdfGroup& group : _groups) {
            if (QString value = group.text(name); !value.isEmpty()) {
                return value;
            }
        }
        return {};
    }
    std::vector<double> numbers(const char* name) const {
        return _groups.empty() ? std::vector<double>() : _groups.front().numbers(name);
    }

private:
    std::vector<QUORNetcdfGroup> _groups;
    QString _kind;
};

QDateTime toTime(const QString& date, const QString& time) {
    return QDateTime(QDate::fromString(date, QStringLiteral("yyyyMMdd")),
                     QTime::fromString(time.left(6), QStringLiteral("HHmmss")), Qt::UTC);
}

/// The groups "dataset1", "dataset2" and so on, by their numbers.
std::vector<QUORNetcdfGroup> numberedGroups(const QUORNetcdfGroup& parent, const char* prefix) {
    const QRegularExpression pattern(QLatin1Char('^') + QLatin1String(prefix) +
                                     QStringLiteral("(\\d{1,6})$"));
    std::multimap<int, QUORNetcdfGroup> groups;
    for (const QUORNetcdfGroup& group : parent.getGroups()) {
        if (const auto match = pattern.match(group.getName()); match.hasMatch()) {
            groups.emplace(match.captured(1).toInt(), group);
        }
    }
    std::vector<QUORNetcdfGroup> sorted;
    for (const auto& [number, group] : groups) {
        sorted.push_back(group);
    }
    return sorted;
}

/// From identifiers such as "WMO:01104,NOD:norst,PLC:...".
QString siteName(const QString& source) {
    for (const char* key : {"NOD", "RAD", "PLC", "WMO", "WIGOS", "CMT"}) {
        for (const QString& part : source.split(QLatin1Char(','))) {
            QString value = part.section(QLatin1Char(':'), 1).trimmed();
            if (part.section(QLatin1Char(':'), 0, 0).trimmed() == QLatin1String(key) && !value.isEmpty() &&
                value != QLatin1String("00000")) {
                return value;
            }
        }
    }
    return source;
}

double middle(double start, double stop) {
    return start + std::remainder(stop - start, 360.0) / 2.0;
}

/// From the antenna's own readings, else evenly from where the first ray starts.
std::vector<float> azimuthsOf(const Attributes& how, std::size_t rays) {
    const std::vector<double> starts = how.numbers("startazA");
    const std::vector<double> stops = how.numbers("stopazA");
    std::vector<float> azimuths(rays);
    const double width = 360.0 / double(rays);
    const double first = how.number("astart").value_or(0.0);
    for (std::size_t ray = 0; ray < rays; ++ray) {
        if (starts.size() == rays) {
            azimuths[ray] =
                float(middle(starts[ray], stops.size() == rays ? stops[ray] : starts[ray] + width));
        } else {
            azimuths[ray] = float(first + (double(ray) + 0.5) * width);
        }
    }
    return azimuths;
}

struct Geometry {
    std::size_t rays;
    std::size_t gates;
    double firstGate;
    double gateSpacing;
};

Geometry geometryOf(const Attributes& where) {
    const double rays = where.demand("nrays");
    const double gates = where.demand("nbins");
    const double spacing = where.demand("rscale");
    if (!(rays >= 1.0 && rays <= 100000.0 && gates >= 1.0 && gates <= 100000.0)) {
        throw QUORImportError(QStringLiteral("impossible number of rays or gates"));
    }
    // In kilometres; some write metres.
    double start = where.number("rstart").value_or(0.0);
    start *= start > 0.0 && start * 1000.0 >= gates * spacing ? 1.0 : 1000.0;
    return {std::size_t(rays), std::size_t(gates), start + spacing / 2.0, spacing};
}

QUORRadarMoment momentOf(const QUORNetcdfGroup& data, const Attributes& what, const Geometry& geometry,
                         QUORRadarQuantities::Match match) {
    const auto variable = data.findVariable("data");
    if (!variable) {
        throw QUORImportError(data.getName() + QStringLiteral(" holds no data"));
    }
    const std::vector<std::size_t> shape = variable->getShape();
    if (shape != std::vector<std::size_t>{geometry.rays, geometry.gates}) {
        throw QUORImportError(
            QStringLiteral("%1 rays of %2 gates are announced, the data are of another size")
                .arg(geometry.rays)
                .arg(geometry.gates));
    }
    const double gain = what.number("gain").value_or(1.0);
    const double offset = what.number("offset").value_or(0.0);
    const auto nodata = what.number("nodata");
    const auto undetect = what.number("undetect");
    std::vector<float> values = variable->readRaw();
    for (float& value : values) {
        if (undetect && value == float(*undetect)) {
            value = QUORRadarValue::NO_ECHO;
        } else if (!std::isfinite(value) || (nodata && value == float(*nodata))) {
            value = QUORRadarValue::NO_DATA;
        } else {
            value = float(match.sign * (double(value) * gain + offset));
        }
    }
    QUORRadarMoment moment;
    moment.quantity = match.quantity;
    moment.gates = int(geometry.gates);
    moment.firstGate = geometry.firstGate;
    moment.gateSpacing = geometry.gateSpacing;
    moment.pack(values, variable->getStep() > 0.0 ? std::abs(gain) : 0.0);
    return moment;
}

QUORRadarSweep sweepOf(const QUORNetcdfGroup& root, const QUORNetcdfGroup& dataset, QUORRadarData& volume) {
    const Attributes where("where", {dataset, root});
    const Attributes what("what", {dataset, root});
    const Attributes how("how", {dataset, root});
    const Geometry geometry = geometryOf(where);
    QUORRadarSweep sweep;
    sweep.fixedAngle = where.demand("elangle");
    sweep.time = toTime(what.text("startdate"), what.text("starttime"));
    sweep.nyquist = std::abs(how.number("NI").value_or(0.0));
    sweep.prf = how.number("highprf").value_or(0.0);
    sweep.azimuths = azimuthsOf(how, geometry.rays);
    const std::vector<double> elevations = how.numbers("elangles");
    if (elevations.size() == geometry.rays) {
        sweep.elevations.assign(elevations.begin(), elevations.end());
    } else {
        sweep.elevations.assign(geometry.rays, float(sweep.fixedAngle));
    }
    std::map<QUORRadarQuantity, int> ranks;
    for (const QUORNetcdfGroup& data : numberedGroups(dataset, "data")) {
        const Attributes dataWhat("what", {data, dataset});
        const QString name = dataWhat.text("quantity");
        const auto match = QUORRadarQuantities::find(name);
        if (!match) {
            volume.leftOut.append(name);
            continue;
        }
        const auto known = ranks.find(match->quantity);
        if (known != ranks.end() && known->second <= match->rank) {
            volume.leftOut.append(name);
            continue;
        }
        std::erase_if(sweep.moments, [&](const QUORRadarMoment& moment) {
            const bool replaced = moment.quantity == match->quantity;
            if (replaced) {
                volume.leftOut.append(moment.name);
            }
            return replaced;
        });
        ranks[match->quantity] = match->rank;
        sweep.moments.push_back(momentOf(data, dataWhat, geometry, *match));
        sweep.moments.back().name = name;
        if (sweep.nyquist <= 0.0) {
            sweep.nyquist = std::abs(Attributes("how", {data}).number("NI").value_or(0.0));
        }
    }
    return sweep;
}

} // namespace

bool QUOROdimReader::recognises(const QUORNetcdfGroup& root) {
    const auto what = root.findGroup(QStringLiteral("what"));
    return what &&
           (!what->text("object").isEmpty() || root.text("Conventions").startsWith(QLatin1String("ODIM_H5")));
}

QUORRadarData QUOROdimReader::read(const QUORNetcdfGroup& root) {
    const Attributes what("what", {root});
    const Attributes where("where", {root});
    const QString object = what.text("object");
    if (object != QLatin1String("PVOL") && object != QLatin1String("SCAN")) {
        throw QUORImportError(
            QStringLiteral("an ODIM_H5 file of kind \"%1\", not a polar volume or scan").arg(object));
    }
    QUORRadarData data;
    const QString version = root.text("Conventions").section(QLatin1Char('/'), 1);
    data.format = QStringLiteral("ODIM_H5 ") + (version.isEmpty() ? what.text("version") : version);
    data.time = toTime(what.text("date"), what.text("time"));
    data.site.name = siteName(what.text("source"));
    data.site.latitude = where.demand("lat");
    data.site.longitude = where.demand("lon");
    data.site.altitude = where.demand("height");
    const std::vector<QUORNetcdfGroup> datasets = numberedGroups(root, "dataset");
    std::vector<QUORNetcdfGroup> levels{root};
    if (!datasets.empty()) {
        levels.insert(levels.begin(), datasets.front());
    }
    const Attributes how("how", levels);
    data.beamWidth = how.number("beamwidth").value_or(how.number("beamwH").value_or(0.0));
    data.wavelength = how.number("wavelength").value_or(0.0) * 0.01;
    if (const auto frequency = how.number("frequency");
        data.wavelength <= 0.0 && frequency && *frequency > 1e8) {
        data.wavelength = SPEED_OF_LIGHT / *frequency;
    }
    for (const QUORNetcdfGroup& dataset : datasets) {
        data.sweeps.push_back(sweepOf(root, dataset, data));
    }
    data.isPiece = data.sweeps.size() == 1;
    data.leftOut.removeDuplicates();
    return data;
}
