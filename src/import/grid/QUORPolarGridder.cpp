// SPDX-License-Identifier: MIT
#include "QUORPolarGridder.h"

#include "QUORImportError.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <thread>

namespace {

constexpr double RADIAN = std::numbers::pi / 180.0;
/// The nearest ray may be so many ray spacings away; more is a gap.
constexpr double RAY_REACH = 0.75;

using Quantity = QUORRadarQuantity;

/// The better of two sweeps of one elevation. Of a split cut, reflectivity comes from the turn with the long
/// unambiguous range, which measures no velocity; of turns that repeat, from the first.
bool isBetter(const QUORRadarSweep& a, const QUORRadarSweep& b, Quantity quantity) {
    if (quantity == Quantity::Reflectivity || quantity == Quantity::RainRate) {
        const bool aSearches = a.find(Quantity::Velocity) == nullptr;
        const bool bSearches = b.find(Quantity::Velocity) == nullptr;
        const double aRange = a.find(quantity)->farthestRange();
        const double bRange = b.find(quantity)->farthestRange();
        if (aSearches != bSearches && (aSearches ? aRange >= bRange : bRange >= aRange)) {
            return aSearches;
        }
    }
    return false;
}

/// One sweep for each elevation, ascending.
std::vector<const QUORRadarSweep*> choose(const QUORRadarData& data, Quantity quantity) {
    std::vector<const QUORRadarSweep*> chosen;
    for (const QUORRadarSweep& sweep : data.sweeps) {
        if (sweep.find(quantity) == nullptr) {
            continue;
        }
        const auto same = std::find_if(chosen.begin(), chosen.end(), [&sweep](const QUORRadarSweep* other) {
            return std::abs(other->fixedAngle - sweep.fixedAngle) < QUORPolarGridder::SAME_ELEVATION;
        });
        if (same == chosen.end()) {
            chosen.push_back(&sweep);
        } else if (isBetter(sweep, **same, quantity)) {
            *same = &sweep;
        }
    }
    std::stable_sort(chosen.begin(), chosen.end(), [](const QUORRadarSweep* a, const QUORRadarSweep* b) {
        return a->fixedAngle < b->fixedAngle;
    });
    return chosen;
}

double turned(double azimuth) {
    const double rest = std::fmod(azimuth, 360.0);
    return rest < 0.0 ? rest + 360.0 : rest;
}

} // namespace

/// One sweep with its rays by azimuth.
class QUORPolarGridder::Turn {
public:
    Turn(const QUORRadarSweep& sweep, const QUORRadarMoment& moment, double halfBeam)
        : _sweep(&sweep), _moment(&moment), _inverseSpacing(1.0 / moment.gateSpacing) {
        const std::size_t count = sweep.azimuths.size();
        std::vector<int> order(count);
        std::iota(order.begin(), order.end(), 0);
        std::stable_sort(order.begin(), order.end(), [&sweep](int a, int b) {
            return turned(sweep.azimuths[std::size_t(a)]) < turned(sweep.azimuths[std::size_t(b)]);
        });
        for (const int ray : order) {
            _azimuths.push_back(turned(sweep.azimuths[std::size_t(ray)]));
            _rays.push_back(ray);
        }
        std::vector<double> spacings;
        for (std::size_t i = 0; i < count; ++i) {
            const double next = i + 1 < count ? _azimuths[i + 1] : _azimuths[0] + 360.0;
            spacings.push_back(next - _azimuths[i]);
        }
        std::nth_element(spacings.begin(), spacings.begin() + std::ptrdiff_t(count / 2), spacings.end());
        const double usual = std::min(spacings[count / 2], 10.0);
        _reach = std::max(RAY_REACH * usual, halfBeam / RADIAN);
        for (std::size_t degree = 0; degree < _firstOfDegree.size(); ++degree) {
            _firstOfDegree[degree] = std::size_t(
                std::lower_bound(_azimuths.begin(), _azimuths.end(), double(degree)) - _azimuths.begin());
        }
    }

    /// The number of the ray nearest to an azimuth within 0..360, -1 in a gap.
    int nearestRay(double azimuth) const {
        const std::size_t count = _azimuths.size();
        std::size_t after = _firstOfDegree[std::min<std::size_t>(std::size_t(azimuth), 359)];
        while (after < count && _azimuths[after] < azimuth) {
            ++after;
        }
        const std::size_t next = after == count ? 0 : after;
        const std::size_t previous = after == 0 ? count - 1 : after - 1;
        const double toNext = _azimuths[next] + (after == count ? 360.0 : 0.0) - azimuth;
        const double toPrevious = azimuth - _azimuths[previous] + (after == 0 ? 360.0 : 0.0);
        if (std::min(toNext, toPrevious) > _reach) {
            return -1;
        }
        return _rays[toNext < toPrevious ? next : previous];
    }
    double elevation(int ray) const { return _sweep->elevations[std::size_t(ray)] * RADIAN; }
    const quint16* codes(int ray) const {
        return _moment->codes.data() + std::size_t(ray) * std::size_t(_moment->gates);
    }
    /// The value of the gate nearest to a range along the ray with those codes.
    float sample(const quint16* codes, double range) const {
        const double gate = std::floor((range - _moment->firstGate) * _inverseSpacing + 0.5);
        return gate >= 0.0 && gate < _moment->gates ? _moment->value(codes[std::size_t(gate)])
                                                    : QUORRadarValue::NO_DATA;
    }
    double nyquist() const { return _sweep->nyquist; }
    const QUORRadarSweep* sweep() const { return _sweep; }

private:
    const QUORRadarSweep* _sweep;
    const QUORRadarMoment* _moment;
    double _inverseSpacing;
    double _reach = 0.0; ///< degrees
    std::vector<double> _azimuths;
    std::vector<int> _rays;
    std::array<std::size_t, 360> _firstOfDegree{};
};

/// The rays over one point of the ground, from the lowest.
struct QUORPolarGridder::Column {
    struct Ray {
        double elevation;
        const Turn* turn;
        const quint16* codes;
    };
    std::vector<Ray> rays;

    void fill(const std::vector<Turn>& turns, double azimuth) {
        rays.clear();
        for (const Turn& turn : turns) {
            if (const int ray = turn.nearestRay(azimuth); ray >= 0) {
                rays.push_back({turn.elevation(ray), &turn, turn.codes(ray)});
            }
        }
        // Nearly always so already: the sweeps ascend.
        std::stable_sort(rays.begin(), rays.end(),
                         [](const Ray& a, const Ray& b) { return a.elevation < b.elevation; });
    }
};

QUORPolarGridder::QUORPolarGridder(const QUORRadarData& data, QUORRadarQuantity quantity,
                                   QUORBetweenBeams between)
    : _interpolation(quantity, between),
      _geometry(data.site.altitude),
      _halfBeam((data.beamWidth > 0.0 ? std::clamp(data.beamWidth, 0.1, 10.0) : USUAL_BEAM_WIDTH) / 2.0 *
                RADIAN) {
    for (const QUORRadarSweep* sweep : choose(data, quantity)) {
        _turns.emplace_back(*sweep, *sweep->find(quantity), _halfBeam);
    }
}

QUORPolarGridder::~QUORPolarGridder() = default;

std::vector<const QUORRadarSweep*> QUORPolarGridder::getSweeps() const {
    std::vector<const QUORRadarSweep*> sweeps;
    for (const Turn& turn : _turns) {
        sweeps.push_back(turn.sweep());
    }
    return sweeps;
}

/// `above` is the first ray of the column that is higher, counted on from call to call as points ascend.
float QUORPolarGridder::between(const Column& column, double elevation, double range,
                                std::size_t& above) const {
    while (above < column.rays.size() && column.rays[above].elevation <= elevation) {
        ++above;
    }
    const auto sample = [&](std::size_t index) {
        const float value = column.rays[index].turn->sample(column.rays[index].codes, range);
        return _interpolation.needsEcho() && QUORRadarValue::isNoEcho(value) ? QUORRadarValue::NO_DATA
                                                                             : value;
    };
    const auto isInBeam = [&](std::size_t index) {
        return std::abs(column.rays[index].elevation - elevation) <= _halfBeam;
    };
    float lower = QUORRadarValue::NO_DATA;
    float upper = QUORRadarValue::NO_DATA;
    if (above > 0) {
        lower = sample(above - 1);
    }
    if (above < column.rays.size()) {
        upper = sample(above);
    }
    if (!QUORRadarValue::isNoData(lower) && !QUORRadarValue::isNoData(upper)) {
        const Column::Ray& a = column.rays[above - 1];
        const Column::Ray& b = column.rays[above];
        if (b.elevation - a.elevation <= WIDEST_GAP * RADIAN) {
            const double weight = (elevation - a.elevation) / (b.elevation - a.elevation);
            return _interpolation.combine(lower, upper, weight,
                                          std::min(a.turn->nyquist(), b.turn->nyquist()));
        }
    }
    if (!QUORRadarValue::isNoData(lower) && isInBeam(above - 1)) {
        return lower;
    }
    return !QUORRadarValue::isNoData(upper) && isInBeam(above) ? upper : QUORRadarValue::NO_DATA;
}

void QUORPolarGridder::gridRows(const QUORGridShape& shape, double firstHeight, int levels, int firstRow,
                                int lastRow, float* out) const {
    Column column;
    column.rays.reserve(_turns.size());
    for (int j = firstRow; j < lastRow; ++j) {
        for (int i = 0; i < shape.points[0]; ++i) {
            const double x = shape.x(i);
            const double y = shape.y(j);
            const double distance = std::hypot(x, y);
            column.fill(_turns, turned(std::atan2(x, y) / RADIAN));
            std::size_t above = 0;
            float* cell = out + std::size_t(j) * std::size_t(shape.points[0]) + std::size_t(i);
            for (int k = 0; k < levels; ++k, cell += shape.cells()) {
                const auto point = _geometry.see(distance, firstHeight + shape.z(k));
                *cell = between(column, point.elevation, point.range, above);
            }
        }
    }
}

std::vector<float> QUORPolarGridder::gridLevels(const QUORGridShape& shape, double firstHeight,
                                                int levels) const {
    std::vector<float> values(shape.cells() * std::size_t(levels), QUORRadarValue::NO_DATA);
    const int rows = shape.points[1];
    const int workers = std::clamp(int(std::thread::hardware_concurrency()), 1, std::min(rows, 16));
    std::vector<std::jthread> threads;
    for (int worker = 1; worker < workers; ++worker) {
        threads.emplace_back([&, worker] {
            gridRows(shape, firstHeight, levels, rows * worker / workers, rows * (worker + 1) / workers,
                     values.data());
        });
    }
    gridRows(shape, firstHeight, levels, 0, rows / workers, values.data());
    return values;
}

std::vector<float> QUORPolarGridder::grid(const QUORGridShape& shape) const {
    return gridLevels(shape, 0.0, shape.points[2]);
}

std::vector<float> QUORPolarGridder::gridLevel(const QUORGridShape& shape, double height) const {
    return gridLevels(shape, height, 1);
}

std::vector<float> QUORPolarGridder::projectLowest(const QUORGridShape& shape) const {
    std::vector<float> values(shape.cells(), QUORRadarValue::NO_DATA);
    if (_turns.empty()) {
        return values;
    }
    const Turn& turn = _turns.front();
    float* cell = values.data();
    for (int j = 0; j < shape.points[1]; ++j) {
        for (int i = 0; i < shape.points[0]; ++i, ++cell) {
            const int ray = turn.nearestRay(turned(std::atan2(shape.x(i), shape.y(j)) / RADIAN));
            if (ray >= 0) {
                const double range = _geometry.range(std::hypot(shape.x(i), shape.y(j)), turn.elevation(ray));
                *cell = turn.sample(turn.codes(ray), range);
            }
        }
    }
    return values;
}
