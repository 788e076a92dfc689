// SPDX-License-Identifier: MIT
#include "LoopTimeline.h"

#include <QDateTime>

#include <algorithm>

namespace {

/// A picture is held for at most so many steps: a night without products is no part of a loop.
constexpr qint64 LONGEST_HOLD = 12;

qint64 toSeconds(const QString& time) {
    QDateTime moment = QDateTime::fromString(QStringLiteral("20") + time, QStringLiteral("yyyyMMddHHmmss"));
    moment.setTimeSpec(Qt::UTC);
    return moment.toSecsSinceEpoch();
}

int findStep(const std::vector<qint64>& times) {
    std::vector<qint64> distances;
    for (std::size_t i = 1; i < times.size(); ++i) {
        distances.push_back(times[i] - times[i - 1]);
    }
    if (distances.empty()) {
        return 1;
    }
    std::ranges::nth_element(distances, distances.begin() + std::ptrdiff_t(distances.size() / 2));
    return int(std::max<qint64>(1, distances[distances.size() / 2]));
}

} // namespace

LoopTimeline::LoopTimeline(const std::vector<CataloguedPicture>& pictures, int stepSeconds)
    : _step(stepSeconds) {
    std::vector<qint64> times;
    for (const CataloguedPicture& picture : pictures) {
        times.push_back(toSeconds(picture.time));
    }
    if (_step <= 0) {
        _step = findStep(times);
    }
    // The step of a picture is the nearest one to its time, and never one that is taken.
    qint64 last = -1;
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        const qint64 steps = (times[i] - times.front() + _step / 2) / _step;
        if (steps <= last) {
            _frames.back() = pictures[i].fileName;
            continue;
        }
        const qint64 missing = steps - last - 1;
        const qint64 held = std::min(missing, LONGEST_HOLD);
        for (qint64 k = 0; k < held; ++k) {
            _frames.append(_frames.back());
        }
        _held += int(held);
        _leftOut += int(missing - held);
        _frames.append(pictures[i].fileName);
        last = steps;
    }
}
