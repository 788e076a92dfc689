// SPDX-License-Identifier: MIT
#include "QUORVolumeJoiner.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

constexpr double SAME_PLACE = 0.01; ///< degrees
constexpr double SAME_ELEVATION = 0.05;
constexpr qint64 SAME_TIME = 60;  ///< seconds between files of whole volumes
constexpr qint64 SPLIT_CUT = 120; ///< seconds between two turns that complete each other
constexpr qint64 PAUSE = 3;       ///< times the usual distance of two sweeps
constexpr std::size_t MOST_RADARS = 1000;
/// What needs no other sweep waits no longer for other quantities.
constexpr std::chrono::milliseconds QUIET_OF_WHOLE{10000};

bool isSameRadar(const QUORRadarSite& a, const QUORRadarSite& b) {
    return a.name.compare(b.name, Qt::CaseInsensitive) == 0 &&
           std::abs(a.latitude - b.latitude) < SAME_PLACE && std::abs(a.longitude - b.longitude) < SAME_PLACE;
}

bool hasAll(const QUORRadarSweep& a, const QUORRadarSweep& b) {
    return std::all_of(b.moments.begin(), b.moments.end(),
                       [&a](const QUORRadarMoment& moment) { return a.find(moment.quantity) != nullptr; });
}

bool hasAny(const QUORRadarSweep& a, const QUORRadarSweep& b) {
    return std::any_of(b.moments.begin(), b.moments.end(),
                       [&a](const QUORRadarMoment& moment) { return a.find(moment.quantity) != nullptr; });
}

} // namespace

bool QUORVolumeJoiner::mayJoin(const QUORRadarData& data) {
    const auto held = std::count_if(QUORRadarQuantities::ALL.begin(), QUORRadarQuantities::ALL.end(),
                                    [&data](QUORRadarQuantity quantity) { return data.has(quantity); });
    return !data.grid && (data.isPiece || held == 1);
}

bool QUORVolumeJoiner::isRepetition(const Piece& before, const Piece& after) {
    const bool isSoon = std::abs(before.secondsTo(after)) <= SPLIT_CUT;
    const auto repeats = [isSoon](const QUORRadarSweep& a, const QUORRadarSweep& b) {
        return std::abs(a.fixedAngle - b.fixedAngle) < SAME_ELEVATION && hasAny(a, b) &&
               !(isSoon && hasAll(a, b) != hasAll(b, a));
    };
    return std::any_of(
        before.data.sweeps.begin(), before.data.sweeps.end(), [&](const QUORRadarSweep& sweep) {
            return std::any_of(after.data.sweeps.begin(), after.data.sweeps.end(),
                               [&](const QUORRadarSweep& other) { return repeats(sweep, other); });
        });
}

/// Where the next volume begins after the one that is repeated and not after the last, which repeats it.
std::size_t QUORVolumeJoiner::findStart(const Pieces& pieces, std::size_t repeated) {
    const std::size_t last = pieces.size() - 1;
    const auto pauseBefore = [&](std::size_t i) { return pieces[i - 1].secondsTo(pieces[i]); };
    const auto turnBefore = [&](std::size_t i) {
        const double rise = pieces[i].elevation() - pieces[i - 1].elevation();
        return rise < 0.0 ? SAME_ELEVATION - rise : rise; // of two equal ones the way down
    };
    std::size_t longest = last;
    bool isLowest = true;
    for (std::size_t i = repeated + 1; i < last; ++i) {
        longest = pauseBefore(i) > pauseBefore(longest) ? i : longest;
        isLowest = isLowest && pieces[i].elevation() > pieces[last].elevation() - SAME_ELEVATION;
    }
    if (isLowest || pauseBefore(longest) > PAUSE * pauseBefore(last)) {
        return pauseBefore(longest) > PAUSE * pauseBefore(last) ? longest : last;
    }
    std::size_t start = last;
    for (std::size_t i = repeated + 1; i < last; ++i) {
        if (turnBefore(i) > turnBefore(start) && 2 * pauseBefore(i) >= pauseBefore(last) &&
            pauseBefore(i) > 0) {
            start = i;
        }
    }
    return start;
}

void QUORVolumeJoiner::append(Volume& volume, QUORRadarData piece, const QString& file) {
    QUORRadarData& data = volume.data;
    volume.files.append(file);
    data.hasValues = data.hasValues && piece.hasValues;
    std::move(piece.sweeps.begin(), piece.sweeps.end(), std::back_inserter(data.sweeps));
    data.wavelength = data.wavelength > 0.0 ? data.wavelength : piece.wavelength;
    data.beamWidth = data.beamWidth > 0.0 ? data.beamWidth : piece.beamWidth;
    data.leftOut += piece.leftOut;
    data.leftOut.removeDuplicates();
    data.warnings += piece.warnings;
    data.warnings.removeDuplicates();
}

QUORVolumeJoiner::Volume QUORVolumeJoiner::merge(Pieces pieces) {
    Volume volume{std::move(pieces.front().data), {pieces.front().file}};
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        append(volume, std::move(pieces[i].data), pieces[i].file);
    }
    return volume;
}

bool QUORVolumeJoiner::isApart(const Piece& first, const Piece& piece) const {
    const bool isWhole = !first.data.isPiece || !piece.data.isPiece;
    return first.secondsTo(piece) > (isWhole ? std::min<qint64>(_window, SAME_TIME) : _window);
}

/// The pieces of one radar, in the order of their times, as volumes.
std::vector<QUORVolumeJoiner::Pieces> QUORVolumeJoiner::divide(Pieces pieces) const {
    std::vector<Pieces> volumes;
    Pieces current;
    Pieces again; // sweeps of which there are two of the same time
    for (Piece& piece : pieces) {
        const auto repeated = std::find_if(current.rbegin(), current.rend(),
                                           [&](const Piece& before) { return isRepetition(before, piece); });
        const bool isRepeated = repeated != current.rend();
        if (isRepeated && repeated->data.time == piece.data.time) {
            again.push_back(std::move(piece));
            continue;
        }
        const bool isNext = isRepeated || (!current.empty() && isApart(current.front(), piece));
        const auto place = isRepeated ? std::size_t(current.rend() - repeated) - 1 : 0;
        current.push_back(std::move(piece));
        if (isNext) {
            const auto start =
                current.begin() + std::ptrdiff_t(isRepeated ? findStart(current, place) : current.size() - 1);
            Pieces next(std::make_move_iterator(start), std::make_move_iterator(current.end()));
            current.erase(start, current.end());
            volumes.push_back(std::move(current));
            current = std::move(next);
        }
    }
    if (!current.empty()) {
        volumes.push_back(std::move(current));
    }
    if (!again.empty()) {
        for (Pieces& volume : divide(std::move(again))) {
            volumes.push_back(std::move(volume));
        }
    }
    return volumes;
}

QUORVolumeJoiner::Taken* QUORVolumeJoiner::findTaken(const QUORRadarSite& site) {
    const auto found = std::find_if(_taken.begin(), _taken.end(),
                                    [&](const Taken& taken) { return isSameRadar(taken.site, site); });
    return found != _taken.end() ? &*found : nullptr;
}

void QUORVolumeJoiner::remember(const Pieces& pieces) {
    const QUORRadarData& last = pieces.back().data;
    if (Taken* const taken = findTaken(last.site)) {
        taken->end = std::max(taken->end, last.time);
        return;
    }
    if (_taken.size() >= MOST_RADARS) {
        _taken.erase(_taken.begin());
    }
    _taken.push_back({last.site, last.time});
}

/// Each radar's, in the order of their times; what came too late for a volume that has been taken is apart.
std::vector<QUORVolumeJoiner::Pieces> QUORVolumeJoiner::takeByRadar() {
    std::stable_sort(_pieces.begin(), _pieces.end(),
                     [](const Piece& a, const Piece& b) { return a.data.time < b.data.time; });
    std::vector<Pieces> radars;
    for (Piece& piece : _pieces) {
        const Taken* const taken = findTaken(piece.data.site);
        const auto isLate = [taken](const Piece& p) { return taken != nullptr && p.data.time <= taken->end; };
        const auto found = std::find_if(radars.begin(), radars.end(), [&](const Pieces& known) {
            return isSameRadar(known.front().data.site, piece.data.site) &&
                   isLate(known.front()) == isLate(piece);
        });
        (found != radars.end() ? *found : radars.emplace_back()).push_back(std::move(piece));
    }
    _pieces.clear();
    return radars;
}

void QUORVolumeJoiner::add(QUORRadarData data, const QString& file) {
    _pieces.push_back({std::move(data), file, std::chrono::steady_clock::now()});
}

std::size_t QUORVolumeJoiner::getSize() const {
    return std::accumulate(_pieces.begin(), _pieces.end(), std::size_t(0),
                           [](std::size_t bytes, const Piece& piece) { return bytes + piece.data.size(); });
}

std::vector<QUORVolumeJoiner::Volume> QUORVolumeJoiner::takeComplete(std::chrono::milliseconds quiet) {
    const auto now = std::chrono::steady_clock::now();
    const auto isReady = [&](const Pieces& pieces) {
        const bool isWhole =
            std::none_of(pieces.begin(), pieces.end(), [](const Piece& piece) { return piece.data.isPiece; });
        const auto wait = isWhole ? std::min(quiet, QUIET_OF_WHOLE) : quiet;
        return std::all_of(pieces.begin(), pieces.end(),
                           [&](const Piece& piece) { return now - piece.added >= wait; });
    };
    std::vector<Volume> complete;
    for (Pieces& radar : takeByRadar()) {
        for (Pieces& volume : divide(std::move(radar))) {
            if (isReady(volume)) {
                remember(volume);
                complete.push_back(merge(std::move(volume)));
            } else {
                std::move(volume.begin(), volume.end(), std::back_inserter(_pieces));
            }
        }
    }
    std::stable_sort(complete.begin(), complete.end(),
                     [](const Volume& a, const Volume& b) { return a.data.time < b.data.time; });
    return complete;
}

std::vector<QUORVolumeJoiner::Volume> QUORVolumeJoiner::takeAll() {
    return takeComplete(std::chrono::milliseconds::zero());
}
