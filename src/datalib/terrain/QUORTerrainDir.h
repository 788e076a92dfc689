// SPDX-License-Identifier: MIT
#pragma once

#include "QUORTerrainSet.h"

#include <QFileInfo>
#include <QMap>
#include <QMutex>

/// The terrain tiles of the geo data directory by their location, and the cache directory of converted
/// blocks. Scanned by the data store's thread, asked for sets by the jobs; one mutex serialises both.
class QUORTerrainDir {
public:
    using Ptr = std::shared_ptr<QUORTerrainDir>;
    using CPtr = std::shared_ptr<const QUORTerrainDir>;

    /// A leading "~" of the cache path stands for the home directory.
    QUORTerrainDir(const QString& sourcePath, const QString& cachePath);
    virtual ~QUORTerrainDir();
    QUORTerrainDir(const QUORTerrainDir&) = delete;
    QUORTerrainDir& operator=(const QUORTerrainDir&) = delete;

    void setPath(const QString& sourcePath, const QString& cachePath);
    /// Makes the cache directory with its parents where it is missing.
    void createCache() const;
    /// Removes every file of the cache directory.
    void clearCache() const;

    /// Reads the headers of the tiles in the source directory; what is no usable tile is skipped with an
    /// error line.
    void scanFiles();
    void resetFiles();
    /// Whether the names in the source directory, or something in it that was no usable tile, have changed
    /// since the scan. A directory that is gone or cannot be read is no news.
    bool hasNews() const;
    /// Whether both scans found the same tiles.
    bool hasTilesOf(const QUORTerrainDir& other) const;
    /// Counts the other one's scan, which found the same tiles, as its own.
    void takeScanOf(const QUORTerrainDir& other);

    /// The tiles of the whole degrees that cover the area, with flat ones where the directory has none; no
    /// tiles at all where it has none for the whole area. The same request gives the same set as long as it
    /// is among the last ones. Never null.
    QUORTerrainSet::Ptr getTerrainSet(const QUORGeoProjection::CPtr& projection,
                                      const QUORCoordinate& corner1, const QUORCoordinate& corner2);

    /// Such as N47E8, and N7.5W3.25.
    static QString getLocString(const QUORCoordinate& coordinate);
    static QString getFileKey(const QUORCoordinate& coordinate);
    static QString getCacheKey(const QUORGeoProjection::CPtr& projection, const QUORCoordinate& coordinate,
                               const QString& typeText);
    /// Absolute; empty when there is no cache path.
    QString getCachedFilename(const QUORGeoProjection::CPtr& projection, const QUORTerrainFile& tile) const;

    QString getSourcePath() const { return _sourcePath; }
    QString getCachePath() const { return _cachePath; }
    /// By location key.
    QMap<QString, QUORTerrainFile::CPtr> getTiles() const;
    void printDebug() const;

private:
    QFileInfoList listSource() const;
    QByteArray makeStamp(const QStringList& skipped) const;
    QUORTerrainSet::Ptr findSet(const QUORGeoProjection& projection, const QUORCoordinate& southWest,
                                const QUORCoordinate& northEast) const;
    void fillSet(QUORTerrainSet& set) const;
    void keepSet(const QUORTerrainSet::Ptr& set);

    QString _sourcePath;
    QString _cachePath;
    mutable QMutex _mutex;
    QMap<QString, QUORTerrainFile::CPtr> _tiles;
    /// What the last scan passed over, and how all that it depends on looked then.
    QStringList _skipped;
    QByteArray _stamp;
    /// The last requests' sets, the latest first.
    QVector<QUORTerrainSet::Ptr> _sets;
};
