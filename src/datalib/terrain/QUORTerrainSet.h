// SPDX-License-Identifier: MIT
#pragma once

#include "QUORCoordinate.h"
#include "QUORGeoProjection.h"
#include "QUORTerrainFile.h"

#include <QMutex>
#include <QStringList>
#include <QVector>

#include <atomic>
#include <memory>
#include <vector>

class QUORAbortFlag;
class vtkActor;
class vtkAssembly;
class vtkProp3D;

/// The terrain of one area in one projection: its tiles with the names of their cached blocks. The area is
/// fixed once the terrain directory has filled the set; the loaded geometry is filled in on demand and then
/// kept, so that every image of the area shows the same prop. Any thread may load or ask; one mutex per set.
///
/// The prop may own graphics resources, and shares its meshes: wherever the last reference to the set goes,
/// prop and tiles die on the application's main thread.
class QUORTerrainSet {
public:
    using Ptr = std::shared_ptr<QUORTerrainSet>;
    using CPtr = std::shared_ptr<const QUORTerrainSet>;

    QUORTerrainSet(QUORGeoProjection::CPtr projection, const QUORCoordinate& southWest,
                   const QUORCoordinate& northEast);
    virtual ~QUORTerrainSet();
    QUORTerrainSet(const QUORTerrainSet&) = delete;
    QUORTerrainSet& operator=(const QUORTerrainSet&) = delete;

    /// Before the set is shared. The tile belongs to this set alone.
    void addBlock(const QUORTerrainFile::Ptr& tile, const QString& cacheFileName);

    /// Converts the blocks that the cache lacks and loads all of them on all cores. False when aborted: the
    /// set then has no prop, keeps the blocks it has, and a later call goes on from there. True at once
    /// when the set is loaded.
    bool loadFiles(const QUORAbortFlag& abort) const;

    /// Null until loaded. The same object for the life of the set.
    vtkSmartPointer<vtkProp3D> getProp() const;
    /// Whether the tiles without data, flat at height 0, are drawn; they are until this says otherwise. Not
    /// while the prop is being drawn.
    void showMissing(bool shown) const;
    /// True a while after blocks could not be made: a new set may have more luck with the same tiles.
    bool hasExpired() const;
    /// Metres above the sea; 0 outside the loaded blocks.
    double getElevationAtLocation(const QUORCoordinate& location) const;

    QUORGeoProjection::CPtr getProjection() const { return _projection; }
    /// Corners in whole degrees. East below west where the area crosses the date line.
    QUORCoordinate getSouthWest() const { return _southWest; }
    QUORCoordinate getNorthEast() const { return _northEast; }
    QVector<QUORTerrainFile::Ptr> getTiles() const { return _tiles; }
    /// In the order of the tiles.
    QStringList getCacheFileNames() const { return _cacheFileNames; }

private:
    struct Run;

    void loadBlock(qsizetype index, Run& run) const;
    void loadBlocks(Run& run) const;
    void joinBlocks() const;
    void makeProp() const;

    QUORGeoProjection::CPtr _projection;
    QUORCoordinate _southWest;
    QUORCoordinate _northEast;
    QVector<QUORTerrainFile::Ptr> _tiles;
    QStringList _cacheFileNames;
    mutable QMutex _mutex;
    mutable vtkSmartPointer<vtkAssembly> _prop;
    /// Its parts that stand for tiles without data.
    mutable std::vector<vtkSmartPointer<vtkActor>> _missing;
    /// When blocks were found missing after loading, on the monotonic clock; 0 while none was.
    mutable std::atomic<qint64> _incompleteSinceMs{0};
};
