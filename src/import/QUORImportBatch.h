// SPDX-License-Identifier: MIT
#pragma once

#include "QUORVolumeJoiner.h"

#include <QHash>

#include <functional>

/// Imports files given in any order, however many, in bounded memory: what stands alone is made as soon as it
/// is read; pieces wait until all are known, and those whose values memory has no room for are read again,
/// one volume after the other, in the order of time.
class QUORImportBatch {
public:
    /// Throws a QUORImportError.
    using Read = std::function<QUORRadarData(const QString& file)>;
    /// Makes products; throws a QUORImportError.
    using Make = std::function<void(const QUORRadarData& data, const QStringList& files)>;
    using Fail = std::function<void(const QStringList& files, const QString& reason)>;
    using Progress = std::function<void(int filesDone)>;

    /// `memory` is what the values of waiting pieces may take, bytes.
    QUORImportBatch(int joinSeconds, std::size_t memory, Read read, Make make, Fail fail, Progress progress);

    /// Once.
    void run(const QStringList& files);

private:
    /// By what a file is known again.
    struct Piece {
        QDateTime time;
        QString site;
        std::vector<std::pair<double, std::vector<QUORRadarQuantity>>> sweeps; ///< elevation, quantities
        bool operator==(const Piece&) const = default;
    };

    static Piece pieceOf(const QUORRadarData& data);
    void take(const QString& file);
    QUORRadarData readAgain(const QString& file) const;
    void makeJoined(QUORVolumeJoiner::Volume volume);
    void make(const QUORRadarData& data, const QStringList& files);
    void step(int steps);

    QUORVolumeJoiner _joiner;
    std::size_t _memory;
    Read _read;
    Make _make;
    Fail _fail;
    Progress _progress;
    QHash<QString, Piece> _pieces;
    int _steps = 0; ///< a file is read, then done
};
