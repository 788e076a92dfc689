// SPDX-License-Identifier: MIT
#include "QUORGridResampler.h"

#include "QUORImportError.h"
#include "QUORMapPlane.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr std::size_t NOWHERE = std::size_t(-1);
constexpr double EVEN = 0.02;       ///< of a step
constexpr double SAME_LEVEL = 0.01; ///< of a step
constexpr double MOST_LEVELS = 200.0;

double meanStep(const std::vector<double>& axis) {
    return (axis.back() - axis.front()) / double(axis.size() - 1);
}

bool isEven(const std::vector<double>& axis) {
    const double step = meanStep(axis);
    for (std::size_t i = 0; i < axis.size(); ++i) {
        if (std::abs(axis[i] - axis.front() - double(i) * step) > EVEN * step) {
            return false;
        }
    }
    return true;
}

double smallestStep(const std::vector<double>& axis) {
    double smallest = axis[1] - axis[0];
    for (std::size_t i = 2; i < axis.size(); ++i) {
        smallest = std::min(smallest, axis[i] - axis[i - 1]);
    }
    return smallest;
}

/// The nearest point of an axis, which reaches half a step beyond its ends.
std::size_t nearest(const std::vector<double>& axis, double value) {
    const std::size_t last = axis.size() - 1;
    if (!(value >= axis[0] - (axis[1] - axis[0]) / 2.0 &&
          value <= axis[last] + (axis[last] - axis[last - 1]) / 2.0)) {
        return NOWHERE;
    }
    const auto after = std::size_t(std::lower_bound(axis.begin(), axis.end(), value) - axis.begin());
    if (after == 0 || after > last) {
        return std::min(after, last);
    }
    return value - axis[after - 1] < axis[after] - value ? after - 1 : after;
}

QString planeOf(const QUORRadarData& data) {
    const auto number = [](double value) { return QString::number(value, 'f', 9); };
    return QStringLiteral("+proj=aeqd +lat_0=") + number(data.site.latitude) + QStringLiteral(" +lon_0=") +
           number(data.site.longitude) + QStringLiteral(" +a=") + number(data.grid->earthRadius) +
           (data.grid->inverseFlattening > 0.0
                ? QStringLiteral(" +rf=") + number(data.grid->inverseFlattening)
                : QStringLiteral(" +b=") + number(data.grid->earthRadius));
}

} // namespace

QUORGridResampler::QUORGridResampler(const QUORRadarData& data, const QUORGridRequest& request)
    : _data(data), _grid(*data.grid) {
    if (_grid.z.size() < 2) {
        throw QUORImportError(QStringLiteral("a single level: no volume"));
    }
    const bool isWhole = request.points || request.steps;
    if (isWhole && _grid.projection.isEmpty()) {
        _shape = request.propose(data);
    } else {
        if (_grid.projection.isEmpty()) {
            keepPlane();
        } else {
            coverPlane();
        }
        chooseLevels();
        if (!request.isEmpty()) {
            QUORGridRequest rest = request;
            const double range =
                std::max(_shape.points[0] * _shape.steps[0], _shape.points[1] * _shape.steps[1]) / 2.0;
            rest.range = request.range.value_or(range);
            if (!isWhole) {
                rest.steps = _shape.steps;
            }
            replace(rest.propose(data), isWhole || request.range, isWhole || request.height);
        }
    }
    if (const char* reason = _shape.error(); *reason != '\0') {
        throw QUORRequestError(QString::fromLatin1(reason));
    }
    findColumns();
}

/// What was asked for of the file's own grid.
void QUORGridResampler::replace(const QUORGridShape& asked, bool plane, bool levels) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (axis == 2 ? levels : plane) {
            _shape.points[axis] = asked.points[axis];
            _shape.steps[axis] = asked.steps[axis];
        }
    }
    if (plane) {
        _shape.radar = asked.radar;
    }
}

void QUORGridResampler::keepPlane() {
    const std::array<const std::vector<double>*, 2> axes{&_grid.x, &_grid.y};
    for (const std::size_t a : {0U, 1U}) {
        const std::vector<double>& axis = *axes[a];
        const bool even = isEven(axis);
        _shape.steps[a] = even ? meanStep(axis) : smallestStep(axis);
        const double intervals = (axis.back() - axis.front()) / _shape.steps[a];
        _shape.points[a] = int(std::min(std::floor(intervals + EVEN), 1e6)) + 1;
        _shape.radar[a] = -axis.front() / _shape.steps[a];
        if (!even) {
            _warnings.append(QStringLiteral("steps along %1 are not even: resampled to %2 m")
                                 .arg(QLatin1Char("xy"[a]))
                                 .arg(_shape.steps[a], 0, 'f', 0));
        }
    }
}

/// A grid around the site that covers the file's, with as many points.
void QUORGridResampler::coverPlane() {
    const QUORMapPlane from(_grid.projection);
    const QUORMapPlane to(planeOf(_data));
    std::array<double, 2> reach{0.0, 0.0};
    const auto take = [&](double x, double y) {
        const auto [latitude, longitude] = from.unproject(x, y);
        const auto [east, north] = to.project(latitude, longitude);
        reach = {std::fmax(reach[0], std::abs(east)), std::fmax(reach[1], std::abs(north))};
    };
    for (const double x : _grid.x) {
        take(x, _grid.y.front());
        take(x, _grid.y.back());
    }
    for (const double y : _grid.y) {
        take(_grid.x.front(), y);
        take(_grid.x.back(), y);
    }
    const std::array<std::size_t, 2> counts{_grid.x.size(), _grid.y.size()};
    for (const std::size_t a : {0U, 1U}) {
        _shape.steps[a] = std::round(2.0 * reach[a] / double(counts[a] - 1));
        _shape.points[a] = 2 * int(std::min(std::ceil(reach[a] / std::max(_shape.steps[a], 1.0)), 1e6));
    }
    _shape.centre();
    _warnings.append(QStringLiteral("resampled from another map projection"));
}

void QUORGridResampler::chooseLevels() {
    const bool even = isEven(_grid.z);
    const double top = _grid.z.back();
    if (!(top > 0.0)) {
        throw QUORImportError(QStringLiteral("all levels are below the antenna"));
    }
    const double step = even ? meanStep(_grid.z) : smallestStep(_grid.z);
    _shape.steps[2] = std::max(step, top / MOST_LEVELS);
    _shape.points[2] = int(std::floor(top / _shape.steps[2] + SAME_LEVEL)) + 1;
    const double offset = std::remainder(_grid.z.front(), _shape.steps[2]) / _shape.steps[2];
    if (!even) {
        _warnings.append(QStringLiteral("levels are not evenly spaced: resampled to %1 m")
                             .arg(_shape.steps[2], 0, 'f', 0));
    } else if (std::abs(offset) > SAME_LEVEL) {
        _warnings.append(QStringLiteral("levels are not whole steps above the antenna: resampled"));
    }
}

void QUORGridResampler::findColumns() {
    const bool isSame = _grid.projection.isEmpty();
    const QUORMapPlane to(isSame ? QStringLiteral("+proj=longlat") : planeOf(_data));
    const QUORMapPlane from(isSame ? QStringLiteral("+proj=longlat") : _grid.projection);
    _columns.reserve(_shape.cells());
    for (int j = 0; j < _shape.points[1]; ++j) {
        for (int i = 0; i < _shape.points[0]; ++i) {
            double x = _shape.x(i);
            double y = _shape.y(j);
            if (!isSame) {
                const auto [latitude, longitude] = to.unproject(x, y);
                std::tie(x, y) = from.project(latitude, longitude);
                // Degrees of a file may count from 0 to 360.
                if (from.isDegrees() && x < _grid.x.front() - 1.0) {
                    x += 360.0;
                }
            }
            const std::size_t column = nearest(_grid.x, x);
            const std::size_t row = nearest(_grid.y, y);
            _columns.push_back(column == NOWHERE || row == NOWHERE ? NOWHERE : row * _grid.x.size() + column);
        }
    }
}

std::optional<QUORGridResampler::Level> QUORGridResampler::findLevel(double height) const {
    const std::vector<double>& z = _grid.z;
    const double tolerance = SAME_LEVEL * smallestStep(z);
    if (!(height >= z.front() - tolerance && height <= z.back() + tolerance)) {
        return {};
    }
    const auto after = std::upper_bound(z.begin(), z.end(), height);
    const auto above = std::clamp<std::size_t>(std::size_t(after - z.begin()), 1, z.size() - 1);
    const double weight = std::clamp((height - z[above - 1]) / (z[above] - z[above - 1]), 0.0, 1.0);
    return Level{above - 1, above, weight};
}

void QUORGridResampler::fill(const std::vector<float>& from, const QUORInterpolation& interpolation,
                             double height, float* to) const {
    const auto level = findLevel(height);
    if (!level) {
        return;
    }
    const std::size_t plane = _grid.x.size() * _grid.y.size();
    const bool isBelow = level->weight < SAME_LEVEL;
    const bool isAbove = level->weight > 1.0 - SAME_LEVEL;
    for (std::size_t i = 0; i < _columns.size(); ++i) {
        if (_columns[i] == NOWHERE) {
            continue;
        }
        const float below = from[level->below * plane + _columns[i]];
        const float above = from[level->above * plane + _columns[i]];
        if (isBelow || isAbove) {
            to[i] = isBelow ? below : above;
        } else if (QUORRadarValue::isNoData(below) || QUORRadarValue::isNoData(above)) {
            to[i] = level->weight < 0.5 ? below : above;
        } else {
            to[i] = interpolation.combine(below, above, level->weight, 0.0);
        }
    }
}

const std::vector<float>& QUORGridResampler::valuesOf(QUORRadarQuantity quantity) const {
    for (const QUORRadarGrid::Field& field : _grid.fields) {
        if (field.quantity == quantity) {
            return field.values;
        }
    }
    throw QUORImportError(QStringLiteral("no ") + QUORRadarQuantities::describe(quantity));
}

std::vector<float> QUORGridResampler::grid(QUORRadarQuantity quantity, QUORBetweenBeams between) const {
    std::vector<float> values(_shape.count(), QUORRadarValue::NO_DATA);
    const QUORInterpolation interpolation(quantity, between);
    for (int k = 0; k < _shape.points[2]; ++k) {
        fill(valuesOf(quantity), interpolation, _shape.z(k), values.data() + std::size_t(k) * _shape.cells());
    }
    return values;
}

std::vector<float> QUORGridResampler::gridLevel(QUORRadarQuantity quantity, double height,
                                                QUORBetweenBeams between) const {
    std::vector<float> values(_shape.cells(), QUORRadarValue::NO_DATA);
    fill(valuesOf(quantity), QUORInterpolation(quantity, between), height, values.data());
    return values;
}
