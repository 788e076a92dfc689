// SPDX-License-Identifier: MIT
#include "QUORVolumeJoiner.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double SAME_PLACE = 0.01; ///< degrees
constexpr double SAME_ELEVATION = 0.05;

bool isSameRadar(const QUORRadarSite& a, const QUORRadarSite& b) {
    return a.name.compare(b.name, Qt::CaseInsensitive) == 0 &&
           std::abs(a.latitude - b.latitude) < SAME_PLACE && std::abs(a.longitude - b.longitude) < SAME_PLACE;
}

bool holdSame(const QUORRadarSweep& a, const QUORRadarSweep& b) {
    return std::abs(a.fixedAngle - b.fixedAngle) < SAME_ELEVATION &&
           std::any_of(a.moments.begin(), a.moments.end(),
                       [&b](const QUORRadarMoment& moment) { return b.find(moment.quantity) != nullptr; });
}

bool isClash(const QUORRadarData& a, const QUORRadarData& b) {
    return std::any_of(a.sweeps.begin(), a.sweeps.end(), [&b](const QUORRadarSweep& sweep) {
        return std::any_of(b.sweeps.begin(), b.sweeps.end(),
                           [&sweep](const QUORRadarSweep& other) { return holdSame(sweep, other); });
    });
}

void merge(QUORRadarData& volume, QUORRadarData piece) {
    volume.time = std::min(volume.time, piece.time);
    std::move(piece.sweeps.begin(), piece.sweeps.end(), std::back_inserter(volume.sweeps));
    if (!(volume.wavelength > 0.0)) {
        volume.wavelength = piece.wavelength;
    }
    if (!(volume.beamWidth > 0.0)) {
        volume.beamWidth = piece.beamWidth;
    }
    volume.leftOut += piece.leftOut;
    volume.leftOut.removeDuplicates();
    volume.warnings += piece.warnings;
    volume.warnings.removeDuplicates();
}

} // namespace

bool QUORVolumeJoiner::accepts(const Open& open, const QUORRadarData& piece) const {
    const QUORRadarData& data = open.volume.data;
    return !open.isClosed && isSameRadar(data.site, piece.site) &&
           std::abs(data.time.secsTo(piece.time)) <= _window && !isClash(data, piece);
}

void QUORVolumeJoiner::add(QUORRadarData data, const QString& file) {
    const auto now = std::chrono::steady_clock::now();
    if (data.isPiece && !data.grid) {
        // The latest first: a late piece of an earlier volume still finds it.
        const auto found =
            std::find_if(_open.rbegin(), _open.rend(), [&](const Open& open) { return accepts(open, data); });
        if (found != _open.rend()) {
            merge(found->volume.data, std::move(data));
            found->volume.files.append(file);
            found->volume.touched = now;
            return;
        }
    }
    const bool isWhole = !data.isPiece || data.grid;
    _open.push_back({{std::move(data), {file}, now}, isWhole});
}

std::vector<QUORVolumeJoiner::Volume> QUORVolumeJoiner::takeComplete(std::chrono::milliseconds quiet) {
    const auto now = std::chrono::steady_clock::now();
    std::vector<Volume> complete;
    for (auto open = _open.begin(); open != _open.end();) {
        if (open->isClosed || now - open->volume.touched >= quiet) {
            complete.push_back(std::move(open->volume));
            open = _open.erase(open);
        } else {
            ++open;
        }
    }
    std::stable_sort(complete.begin(), complete.end(),
                     [](const Volume& a, const Volume& b) { return a.data.time < b.data.time; });
    return complete;
}

std::vector<QUORVolumeJoiner::Volume> QUORVolumeJoiner::takeAll() {
    return takeComplete(std::chrono::milliseconds::zero());
}
