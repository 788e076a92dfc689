// SPDX-License-Identifier: MIT
#pragma once

#include "QUORArrivalQueue.h"

#include <QMap>

/// The products whose image could not be written, until the output takes it: the newest data first, and at
/// most so many. Used by one thread.
class QUORUnwrittenImages {
public:
    using Clock = QUORArrival::Clock;

    static constexpr int MOST = 1000;
    /// So long after the first failure an image is tried again; after each further one twice as long.
    static constexpr std::chrono::seconds FIRST_PAUSE{5};
    static constexpr std::chrono::seconds LONGEST_PAUSE{300};

    /// Of too many the oldest data is given up, which is an error line once until all are written.
    void add(const QUORArrival& image, Clock::time_point now = Clock::now());
    /// Written, or its product has gone.
    void remove(const QString& key);
    int getCount() const { return int(_images.size()); }
    /// The newest one that is due.
    std::optional<QUORArrival> findDue(Clock::time_point now = Clock::now()) const;
    /// The output takes nothing: none is due before the shortest pause.
    void postpone(Clock::time_point now = Clock::now()) { _notBefore = now + FIRST_PAUSE; }
    /// When the next one is due; the end of time without any.
    Clock::time_point getNextTime() const;

private:
    struct Image {
        QUORArrival arrival;
        std::chrono::seconds pause{0};
        Clock::time_point due;
    };

    QMap<QString, Image> _images; ///< by product key
    Clock::time_point _notBefore = Clock::time_point::min();
    bool _overflowed = false;
};
