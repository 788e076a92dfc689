// SPDX-License-Identifier: MIT
#include "QUORLevel2Reader.h"

#include "QUORLevel2Records.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double SPEED_OF_LIGHT = 299792458.0;
constexpr double BEAM_WIDTH = 0.95;
/// Of the radars of this kind, metres; what is computed outside it is none.
constexpr double SHORTEST_WAVE = 0.09;
constexpr double LONGEST_WAVE = 0.12;

using Radials = std::vector<QUORLevel2Radial>;

QString titleOf(const QUORLevel2Radial::Moment& moment) {
    return moment.name;
}

/// Gathers one quantity of the rays of a sweep. A ray without it, or with gates that do not fit, has no data.
QUORRadarMoment gather(const QUORLevel2Radial* first, const QUORLevel2Radial* last,
                       const QUORLevel2Radial::Moment& model) {
    const auto fits = [&model](const QUORLevel2Radial::Moment& other) {
        return other.quantity == model.quantity && other.firstGate == model.firstGate &&
               other.gateSpacing == model.gateSpacing && other.scale == model.scale &&
               other.offset == model.offset;
    };
    const auto find = [&](const QUORLevel2Radial& radial) {
        const auto found = std::find_if(radial.moments.begin(), radial.moments.end(), fits);
        return found == radial.moments.end() ? nullptr : &*found;
    };
    std::size_t gates = 0;
    for (const auto* radial = first; radial != last; ++radial) {
        if (const auto* found = find(*radial)) {
            gates = std::max(gates, found->codes.size());
        }
    }
    QUORRadarMoment moment;
    moment.quantity = model.quantity;
    moment.name = titleOf(model);
    moment.gates = int(gates);
    moment.firstGate = model.firstGate;
    moment.gateSpacing = model.gateSpacing;
    moment.scale = float(1.0 / model.scale);
    moment.offset = float(-model.offset / model.scale);
    moment.codes.assign(gates * std::size_t(last - first), QUORRadarMoment::NO_DATA);
    auto out = moment.codes.begin();
    for (const auto* radial = first; radial != last; ++radial, out += std::ptrdiff_t(gates)) {
        if (const auto* found = find(*radial)) {
            std::copy(found->codes.begin(), found->codes.end(), out);
        }
    }
    return moment;
}

QUORRadarSweep sweepOf(const QUORLevel2Radial* first, const QUORLevel2Radial* last) {
    QUORRadarSweep sweep;
    sweep.time = first->time;
    for (const auto* radial = first; radial != last; ++radial) {
        sweep.azimuths.push_back(float(radial->azimuth));
        sweep.elevations.push_back(float(radial->elevation));
        sweep.nyquist = std::max(sweep.nyquist, radial->nyquist);
        for (const QUORLevel2Radial::Moment& moment : radial->moments) {
            if (sweep.find(moment.quantity) == nullptr) {
                sweep.moments.push_back(gather(first, last, moment));
            }
        }
    }
    // The antenna still moves from the elevation before while the first rays are taken.
    std::vector<float> elevations = sweep.elevations;
    const auto middle = elevations.begin() + std::ptrdiff_t(elevations.size() / 2);
    std::nth_element(elevations.begin(), middle, elevations.end());
    sweep.fixedAngle = double(*middle);
    return sweep;
}

/// The Nyquist velocity is a quarter of the wave times the pulse frequency, of which the unambiguous range
/// tells.
double wavelengthOf(const Radials& radials) {
    std::vector<double> found;
    for (const QUORLevel2Radial& radial : radials) {
        const double wave = 8.0 * radial.nyquist * radial.unambiguousRange / SPEED_OF_LIGHT;
        if (wave > SHORTEST_WAVE && wave < LONGEST_WAVE) {
            found.push_back(wave);
        }
    }
    if (found.empty()) {
        return 0.0;
    }
    const auto middle = found.begin() + std::ptrdiff_t(found.size() / 2);
    std::nth_element(found.begin(), middle, found.end());
    return *middle;
}

} // namespace

QUORRadarData QUORLevel2Reader::read(QByteArrayView content) {
    const QUORByteCursor file(content);
    QUORRadarData data;
    data.format = QStringLiteral("NEXRAD Level II ") + QString::fromLatin1(file.bytes(0, 8));
    data.time = QUORLevel2Radial::toTime(file.number<quint32>(12), file.number<quint32>(16));
    data.site.name = QString::fromLatin1(file.bytes(20, 4));
    data.beamWidth = BEAM_WIDTH;
    Radials radials = QUORLevel2Records(content).readRadials();
    if (radials.empty()) {
        throw QUORImportError(QStringLiteral("no rays in it"));
    }
    if (radials.back().status != QUORLevel2Radial::EndsVolume) {
        throw QUORImportError(QStringLiteral("cut off: the volume has no end"));
    }
    data.wavelength = wavelengthOf(radials);
    const auto placed = std::find_if(radials.begin(), radials.end(), [](const QUORLevel2Radial& radial) {
        return radial.volume.has_value();
    });
    if (placed == radials.end()) {
        throw QUORImportError(QStringLiteral("no position of the radar in it"));
    }
    data.site.latitude = placed->volume->latitude;
    data.site.longitude = placed->volume->longitude;
    data.site.altitude = placed->volume->groundElevation + placed->volume->antennaHeight;
    data.site.heightOfAntenna = placed->volume->antennaHeight;
    for (auto first = radials.begin(); first != radials.end();) {
        const auto last = std::find_if(first + 1, radials.end(), [&first](const QUORLevel2Radial& radial) {
            return radial.elevationNumber != first->elevationNumber || radial.begins();
        });
        data.sweeps.push_back(sweepOf(&*first, &*first + (last - first)));
        for (auto radial = first; radial != last; ++radial) {
            data.leftOut += radial->leftOut;
            *radial = {}; // its gates are in the sweep now
        }
        data.leftOut.removeDuplicates();
        first = last;
    }
    return data;
}
