// SPDX-License-Identifier: MIT
#include "QUORRadarChecks.h"

#include "QUORImportError.h"
#include "QUORRadarData.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double FARTHEST_GATE = 2e6;
constexpr double HIGHEST_SITE = 12000.0;

bool isWithin(double value, double lowest, double highest) {
    return value >= lowest && value <= highest; // false for what is not a number
}

void demand(bool condition, const QString& reason) {
    if (!condition) {
        throw QUORImportError(reason);
    }
}

void verifyMoment(const QUORRadarMoment& moment, std::size_t rays, const QString& where) {
    const QString what = where + moment.name + QStringLiteral(": ");
    demand(moment.gates > 0 && double(rays) * moment.gates <= QUORRadarChecks::MOST_VALUES,
           what + QStringLiteral("impossible number of gates, ") + QString::number(moment.gates));
    demand(moment.codes.size() == rays * std::size_t(moment.gates),
           what + QStringLiteral("the number of values is not rays times gates"));
    demand(isWithin(moment.gateSpacing, 1.0, 1e5) && isWithin(moment.firstGate, -1e5, 1e6) &&
               isWithin(moment.farthestRange(), 1.0, FARTHEST_GATE),
           what + QStringLiteral("impossible range or length of gates"));
    demand(std::isfinite(moment.scale) && std::isfinite(moment.offset),
           what + QStringLiteral("impossible scale or offset"));
}

void verifySweep(const QUORRadarSweep& sweep, int number) {
    const QString where = QStringLiteral("sweep %1: ").arg(number);
    const std::size_t rays = sweep.azimuths.size();
    demand(rays > 0 && rays <= 100000, where + QStringLiteral("impossible number of rays, %1").arg(rays));
    demand(sweep.elevations.size() == rays, where + QStringLiteral("rays without an elevation"));
    for (std::size_t ray = 0; ray < rays; ++ray) {
        demand(isWithin(sweep.azimuths[ray], -360.0, 720.0),
               where + QStringLiteral("ray %1 has no usable azimuth").arg(ray));
        demand(isWithin(sweep.elevations[ray], -10.0, 180.0),
               where + QStringLiteral("ray %1 has no usable elevation").arg(ray));
    }
    demand(isWithin(sweep.fixedAngle, -10.0, 180.0), where + QStringLiteral("no usable elevation"));
    demand(isWithin(sweep.nyquist, 0.0, 1000.0), where + QStringLiteral("impossible Nyquist velocity"));
    for (const QUORRadarMoment& moment : sweep.moments) {
        verifyMoment(moment, rays, where);
    }
}

void verifyAxis(const std::vector<double>& axis, const char* name, std::size_t fewest) {
    const QString what = QLatin1String(name) + QLatin1Char(' ');
    demand(axis.size() >= fewest && axis.size() <= 20000,
           what + QStringLiteral("has an impossible number of points, %1").arg(axis.size()));
    for (std::size_t i = 0; i < axis.size(); ++i) {
        demand(isWithin(axis[i], -2e7, 2e7) && (i == 0 || axis[i] > axis[i - 1]),
               what + QStringLiteral("does not ascend or is not a distance"));
    }
}

void verifyGrid(const QUORRadarGrid& grid) {
    verifyAxis(grid.x, "x", 2);
    verifyAxis(grid.y, "y", 2);
    verifyAxis(grid.z, "z", 1);
    const double count = double(grid.x.size()) * double(grid.y.size()) * double(grid.z.size());
    demand(count <= QUORRadarChecks::MOST_VALUES, QStringLiteral("the grid is too large"));
    for (const QUORRadarGrid::Field& field : grid.fields) {
        demand(double(field.values.size()) == count,
               field.name + QStringLiteral(": the number of values is not that of the grid"));
    }
}

} // namespace

void QUORRadarChecks::verify(const QUORRadarData& data) {
    demand(data.time.isValid() && isWithin(data.time.date().year(), 1970, 2100),
           QStringLiteral("no usable time"));
    demand(isWithin(data.site.latitude, -90.0, 90.0) && isWithin(data.site.longitude, -360.0, 360.0),
           QStringLiteral("no usable position of the radar"));
    demand(isWithin(data.site.altitude, -500.0, HIGHEST_SITE),
           QStringLiteral("no usable height of the radar"));
    if (data.grid) {
        verifyGrid(*data.grid);
    } else {
        demand(!data.sweeps.empty() && data.sweeps.size() <= MOST_SWEEPS,
               QStringLiteral("impossible number of sweeps, %1").arg(data.sweeps.size()));
        int number = 0;
        for (const QUORRadarSweep& sweep : data.sweeps) {
            verifySweep(sweep, ++number);
        }
    }
    demand(std::any_of(QUORRadarQuantities::ALL.begin(), QUORRadarQuantities::ALL.end(),
                       [&data](QUORRadarQuantity quantity) { return data.has(quantity); }),
           data.leftOut.isEmpty() ? QStringLiteral("no data in it")
                                  : QStringLiteral("no quantity in it that a product holds, only ") +
                                        data.leftOut.mid(0, 20).join(QStringLiteral(", ")));
}
