// SPDX-License-Identifier: MIT
#pragma once

#include "QUORRadarData.h"

#include <chrono>
#include <list>
#include <vector>

/// Puts volumes together whose sweeps or quantities came in files of their own.
///
/// A piece belongs to a volume of the same radar that began no longer than the window before, and that does
/// not hold the same quantity at the same elevation already: with that the next volume begins. Whole volumes
/// and grids stay alone.
class QUORVolumeJoiner {
public:
    struct Volume {
        QUORRadarData data;
        QStringList files;
        /// When its last piece was added, for those who wait for more.
        std::chrono::steady_clock::time_point touched;
    };

    explicit QUORVolumeJoiner(int windowSeconds) : _window(windowSeconds) {}

    /// Pieces may come in any order; those that are earlier in time should come first.
    void add(QUORRadarData data, const QString& file);
    /// Volumes to which no piece can be added any more, and those that got none for so long; in the order of
    /// their times.
    std::vector<Volume> takeComplete(std::chrono::milliseconds quiet);
    /// All that are left.
    std::vector<Volume> takeAll();
    bool isEmpty() const { return _open.empty(); }

private:
    struct Open {
        Volume volume;
        bool isClosed;
    };
    bool accepts(const Open& open, const QUORRadarData& piece) const;

    int _window;
    std::list<Open> _open;
};
