// SPDX-License-Identifier: MIT
#pragma once

#include "QUORVolumeJoiner.h"

#include <QHash>

#include <functional>

/// Imports files given in any order, however many, and holds the values of one volume at a time: each file is
/// looked at first, and what stands alone is made at once; when all pieces are known, the files of one volume
/// after the other are read, in the order of time.
class QUORImportBatch {
public:
    /// Throws a QUORImportError. What is asked for as an outline may come whole.
    using Read = std::function<QUORRadarData(const QString& file, QUORReadExtent extent)>;
    /// Makes products; throws a QUORImportError.
    using Make = std::function<void(const QUORRadarData& data, const QStringList& files)>;
    using Fail = std::function<void(const QStringList& files, const QString& reason)>;
    using Progress = std::function<void(int filesDone)>;

    QUORImportBatch(int joinSeconds, Read read, Make make, Fail fail, Progress progress);

    /// Once.
    void run(const QStringList& files);

private:
    /// By what a file is known again.
    struct Piece {
        QDateTime time;
        QString site;
        std::size_t sweeps = 0;
        bool operator==(const Piece&) const = default;
    };

    static Piece pieceOf(const QUORRadarData& data);
    void look(const QString& file);
    void keepOutline(QUORRadarData data, const QString& file);
    QUORRadarData readPiece(const QString& file) const;
    void makeJoined(const QStringList& files);
    void make(const QUORRadarData& data, const QStringList& files);
    void step(int steps);

    QUORVolumeJoiner _joiner;
    Read _read;
    Make _make;
    Fail _fail;
    Progress _progress;
    QHash<QString, Piece> _pieces;
    int _steps = 0; ///< a file is looked at, then done
};
