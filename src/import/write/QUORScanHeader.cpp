// SPDX-License-Identifier: MIT
#include "QUORScanHeader.h"

#include "QUORRadarData.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int MOST_WIDENED = 4;

double highestSpeed(const QUORRadarData& data) {
    double highest = 0.0;
    const auto take = [&highest](float value) {
        if (std::isfinite(value)) {
            highest = std::max(highest, std::abs(double(value)));
        }
    };
    for (const QUORRadarSweep& sweep : data.sweeps) {
        if (const QUORRadarMoment* moment = sweep.find(QUORRadarQuantity::Velocity)) {
            for (const quint16 code : moment->codes) {
                take(moment->value(code));
            }
        }
    }
    return highest;
}

double highestPrf(const QUORRadarData& data) {
    double highest = 0.0;
    for (const QUORRadarSweep& sweep : data.sweeps) {
        highest = std::max(highest, sweep.prf);
    }
    return highest;
}

} // namespace

QUORScanHeader QUORScanHeader::of(const QUORRadarData& data, QUORRadarQuantity quantity, bool isOneByte) {
    QUORScanHeader scan;
    scan._isFree = quantity != QUORRadarQuantity::Velocity && quantity != QUORRadarQuantity::Width;
    scan.wavelength = int(std::lround(std::clamp(data.wavelength, 0.0, 10.0) * 1e4));
    const double nyquist = data.highestNyquist();
    if (scan.wavelength == 0 || !(nyquist > 0.0)) {
        return scan;
    }
    const double frequency = nyquist * 40000.0 / scan.wavelength;
    int widened = 1;
    if (quantity == QUORRadarQuantity::Velocity && isOneByte) {
        // Two alternating frequencies widen the interval: the header has the higher one.
        if (const double prf = highestPrf(data); prf > 0.0) {
            widened = std::clamp(int(std::lround(frequency / prf)), 1, MOST_WIDENED);
        }
    }
    scan.prf = int(std::ceil(frequency / widened - 1e-6));
    if (quantity == QUORRadarQuantity::Velocity && isOneByte) {
        const double interval = scan.prf * scan.wavelength / 40000.0;
        const int needed = int(std::ceil(highestSpeed(data) / interval - 1e-3));
        widened = std::clamp(needed, widened, MOST_WIDENED);
    }
    scan.prfMode = widened - 1;
    return scan;
}
