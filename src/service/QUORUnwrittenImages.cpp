// SPDX-License-Identifier: MIT
#include "QUORUnwrittenImages.h"

#include "QUORLog.h"

#include <algorithm>

void QUORUnwrittenImages::add(const QUORArrival& image, Clock::time_point now) {
    Image& entry = _images[image.key];
    entry.arrival = image;
    entry.pause = std::clamp(2 * entry.pause, FIRST_PAUSE, LONGEST_PAUSE);
    entry.due = now + entry.pause;
    if (_images.size() <= MOST) {
        return;
    }
    _images.erase(std::min_element(_images.begin(), _images.end(), [](const Image& a, const Image& b) {
        return a.arrival.time < b.arrival.time;
    }));
    if (!_overflowed) {
        _overflowed = true;
        QUORLog::Instance().logError(QStringLiteral("More than ") + QString::number(MOST) +
                                     QStringLiteral(" images could not be written: the oldest are given up"));
    }
}

void QUORUnwrittenImages::remove(const QString& key) {
    _images.remove(key);
    _overflowed = _overflowed && !_images.isEmpty();
}

std::optional<QUORArrival> QUORUnwrittenImages::findDue(Clock::time_point now) const {
    const Image* newest = nullptr;
    for (const Image& image : _images) {
        if (now >= _notBefore && now >= image.due &&
            (newest == nullptr || image.arrival.time > newest->arrival.time)) {
            newest = &image;
        }
    }
    return newest == nullptr ? std::nullopt : std::optional(newest->arrival);
}

QUORUnwrittenImages::Clock::time_point QUORUnwrittenImages::getNextTime() const {
    Clock::time_point next = Clock::time_point::max();
    for (const Image& image : _images) {
        next = std::min(next, std::max(image.due, _notBefore));
    }
    return next;
}
