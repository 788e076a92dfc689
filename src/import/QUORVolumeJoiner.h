// SPDX-License-Identifier: MIT
#pragma once

#include "QUORRadarData.h"

#include <chrono>
#include <vector>

/// Puts volumes together whose sweeps or quantities came in files of their own.
///
/// Pieces of one radar, in the order of their times, are one volume until the window is over or a sweep comes
/// again. The next volume begins there, or before that where a sweep was lost: at the pause between two
/// volumes, or where the order of the elevations starts anew. Two turns at one elevation whose quantities
/// differ and that follow each other at once are no repetition. A file with several sweeps of one quantity
/// joins what has the same time; other volumes, and grids, stay alone.
class QUORVolumeJoiner {
public:
    struct Volume {
        QUORRadarData data;
        QStringList files;
    };

    explicit QUORVolumeJoiner(int windowSeconds) : _window(windowSeconds) {}

    /// Whether other files may belong to the same volume.
    static bool mayJoin(const QUORRadarData& data);
    /// Adds a piece to a volume that has one already; it has values when all its pieces have.
    static void append(Volume& volume, QUORRadarData piece, const QString& file);

    /// What may join, with or without its values, in any order.
    void add(QUORRadarData data, const QString& file);
    /// Volumes that got no other piece for so long, in the order of their times.
    std::vector<Volume> takeComplete(std::chrono::milliseconds quiet);
    /// All that are left.
    std::vector<Volume> takeAll();
    bool isEmpty() const { return _pieces.empty(); }
    /// Bytes of the values of what waits.
    std::size_t getSize() const;

private:
    struct Piece {
        QUORRadarData data;
        QString file;
        std::chrono::steady_clock::time_point added;

        qint64 secondsTo(const Piece& other) const { return data.time.secsTo(other.data.time); }
        double elevation() const { return data.sweeps.empty() ? 0.0 : data.sweeps.front().fixedAngle; }
    };
    using Pieces = std::vector<Piece>;
    /// Up to when the volumes of a radar have been taken.
    struct Taken {
        QUORRadarSite site;
        QDateTime end;
    };

    static bool isRepetition(const Piece& before, const Piece& after);
    static std::size_t findStart(const Pieces& pieces, std::size_t repeated);
    static Volume merge(Pieces pieces);
    std::vector<Pieces> takeByRadar();
    std::vector<Pieces> divide(Pieces pieces) const;
    bool isApart(const Piece& first, const Piece& piece) const;
    Taken* findTaken(const QUORRadarSite& site);
    void remember(const Pieces& pieces);

    int _window;
    Pieces _pieces;
    std::vector<Taken> _taken;
};
