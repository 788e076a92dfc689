// SPDX-License-Identifier: MIT
#include "QUORRadarData.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double MOST_STEPS = 65500.0;
constexpr int FIRST_CODE = 2;

/// Also the memory, which "= {}" keeps.
template <class T>
void release(std::vector<T>& values) {
    std::vector<T>().swap(values);
}

} // namespace

void QUORRadarMoment::pack(std::span<const float> values, double step) {
    float lowest = std::numeric_limits<float>::max();
    float highest = std::numeric_limits<float>::lowest();
    for (const float value : values) {
        if (std::isfinite(value)) {
            lowest = std::min(lowest, value);
            highest = std::max(highest, value);
        }
    }
    const double range = highest > lowest ? double(highest) - double(lowest) : 0.0;
    if (!(step > 0.0) || range / step > MOST_STEPS) {
        step = std::max(range / MOST_STEPS, 1e-3);
    }
    scale = float(step);
    offset = float(double(lowest) - FIRST_CODE * step);
    codes.resize(values.size());
    std::transform(values.begin(), values.end(), codes.begin(), [&](float value) {
        if (QUORRadarValue::isNoEcho(value)) {
            return NO_ECHO;
        }
        return std::isfinite(value)
                   ? quint16(std::lround((double(value) - double(lowest)) / step) + FIRST_CODE)
                   : NO_DATA;
    });
}

const QUORRadarMoment* QUORRadarSweep::find(QUORRadarQuantity quantity) const {
    const auto found =
        std::find_if(moments.begin(), moments.end(),
                     [quantity](const QUORRadarMoment& moment) { return moment.quantity == quantity; });
    return found == moments.end() ? nullptr : &*found;
}

bool QUORRadarData::has(QUORRadarQuantity quantity) const {
    if (grid) {
        return std::any_of(grid->fields.begin(), grid->fields.end(),
                           [quantity](const QUORRadarGrid::Field& f) { return f.quantity == quantity; });
    }
    return std::any_of(sweeps.begin(), sweeps.end(),
                       [quantity](const QUORRadarSweep& s) { return s.find(quantity) != nullptr; });
}

std::size_t QUORRadarData::size() const {
    std::size_t bytes = 0;
    for (const QUORRadarSweep& sweep : sweeps) {
        bytes += (sweep.azimuths.capacity() + sweep.elevations.capacity()) * sizeof(float);
        for (const QUORRadarMoment& moment : sweep.moments) {
            bytes += moment.codes.capacity() * sizeof(quint16);
        }
    }
    if (grid) {
        for (const QUORRadarGrid::Field& field : grid->fields) {
            bytes += field.values.capacity() * sizeof(float);
        }
    }
    return bytes;
}

void QUORRadarData::dropValues() {
    hasValues = false;
    for (QUORRadarSweep& sweep : sweeps) {
        release(sweep.azimuths);
        release(sweep.elevations);
        for (QUORRadarMoment& moment : sweep.moments) {
            release(moment.codes);
        }
    }
    if (grid) {
        for (QUORRadarGrid::Field& field : grid->fields) {
            release(field.values);
        }
    }
}

double QUORRadarData::highestNyquist() const {
    double highest = 0.0;
    for (const QUORRadarSweep& sweep : sweeps) {
        if (sweep.find(QUORRadarQuantity::Velocity) != nullptr ||
            sweep.find(QUORRadarQuantity::Width) != nullptr) {
            highest = std::max(highest, sweep.nyquist);
        }
    }
    return highest;
}
