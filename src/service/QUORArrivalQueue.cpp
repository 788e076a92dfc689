// SPDX-License-Identifier: MIT
#include "QUORArrivalQueue.h"

#include <algorithm>
#include <limits>

namespace {

constexpr qint64 MOST_AHEAD_MS = 60LL * 60 * 1000;

} // namespace

bool QUORArrivalQueue::mayBeLive(const QString& series, const QDateTime& time) {
    return !series.isEmpty() && time.isValid() &&
           time.toMSecsSinceEpoch() <= QDateTime::currentMSecsSinceEpoch() + MOST_AHEAD_MS;
}

QUORArrivalQueue::Rank QUORArrivalQueue::rankOf(const Entry& entry) {
    return {-entry.arrival.time.toMSecsSinceEpoch(), entry.number};
}

void QUORArrivalQueue::append(const QUORArrival& arrival) {
    const auto entry = _arrivals.insert(_arrivals.end(), {arrival, _number++});
    if (mayBeLive(arrival.series, arrival.time)) {
        _byTime.emplace(rankOf(*entry), entry);
    }
}

void QUORArrivalQueue::noteDrawn(const QString& series, const QDateTime& time) {
    if (mayBeLive(series, time)) {
        const auto drawn = _drawn.find(series);
        const qint64 known = drawn == _drawn.end() ? std::numeric_limits<qint64>::min() : *drawn;
        _drawn.insert(series, std::max(known, time.toMSecsSinceEpoch()));
    }
}

std::optional<QUORArrival> QUORArrivalQueue::takeLive() {
    while (!_byTime.empty()) {
        const Entries::iterator entry = _byTime.begin()->second;
        const auto drawn = _drawn.constFind(entry->arrival.series);
        if (drawn == _drawn.constEnd() || entry->arrival.time.toMSecsSinceEpoch() > *drawn) {
            return take(entry);
        }
        _byTime.erase(_byTime.begin());
    }
    return std::nullopt;
}

std::optional<QUORArrival> QUORArrivalQueue::takeFirst() {
    return _arrivals.empty() ? std::nullopt : std::optional(take(_arrivals.begin()));
}

QUORArrival QUORArrivalQueue::take(Entries::iterator entry) {
    _byTime.erase(rankOf(*entry));
    QUORArrival arrival = std::move(entry->arrival);
    _arrivals.erase(entry);
    return arrival;
}
