// SPDX-License-Identifier: MIT
#pragma once

#include "QUOR2DTop.h"
#include "QUOR3DTop.h"
#include "QUORDirectoryWatchData.h"

#include <QObject>
#include <QVector>

#include <future>
#include <mutex>

class QUORDataStoreObserver;
class QUORDirectoryWatcher;
class QUORLandmarkList;
class QUORTerrainDir;

/// The single entry to the data that the service renders: one watcher for the 3D and one for the 2D product
/// directory, the terrain directory and the landmarks.
///
/// The store lives in the thread that made it, which runs an event loop, sets the directories and destroys
/// it; the observer is called there. Queries and accessors may be called by any thread: they hand out
/// shared objects, taken under the store's lock, that stay usable when the directories are changed.
class QUORDataStore : public QObject {
    Q_OBJECT

public:
    using Ptr = std::shared_ptr<QUORDataStore>;
    using CPtr = std::shared_ptr<const QUORDataStore>;

    /// Reads the landmarks. The observer may be null and is not owned.
    explicit QUORDataStore(QUORDataStoreObserver* observer);
    /// Ends the watchers' threads.
    ~QUORDataStore() override;

    /// Replaces what differs from the paths last set, and leaves the rest alone.
    void setDirectories(const QString& path3d, const QString& path2d, const QString& geoPath,
                        const QString& geoCachePath);
    /// The terrain alone: a store without product directories serves who has files at hand.
    void setTerrain(const QString& geoPath, const QString& geoCachePath);
    /// Has the terrain directory scanned again when tiles have come or changed, by a thread of its own; one
    /// that has none any more, as under a mount that was lost, leaves those known in use. Returns at once.
    void refreshTerrain();

    /// The volume with the newest data time, of equal ones the first in key order; null when there is none.
    /// The arguments are patterns.
    QUORFileLeaf::Ptr getLatestData(const QString& site, const QString& product,
                                    const QString& configuration) const;
    /// Appends the matching volumes in key order.
    void getDataSequence(QVector<QUORFileLeaf::Ptr>& sequence, const QString& site, const QString& product,
                         const QString& configuration) const;

    /// Null until the directories have been set.
    QUOR3DTop::Ptr get3DTop() const;
    QUOR2DTop::Ptr get2DTop() const;
    std::shared_ptr<QUORTerrainDir> getTerrainDir() const;
    std::shared_ptr<QUORLandmarkList> getLandmarkList() const { return _landmarks; }
    QString getPath3d() const;
    QString getPath2d() const;

public Q_SLOTS:
    void dirChanged3d();
    void dirChanged2d();

private:
    struct Scout;
    using Watcher = std::shared_ptr<QUORDirectoryWatcher>;

    void setWatcher(Watcher& watcher, QString& path, const QString& newPath,
                    QUORDirectoryWatchData::DirectoryType type);
    static std::shared_ptr<QUORTerrainDir> findNewTerrain(QUORTerrainDir& known);
    void takeTerrain(const std::shared_ptr<QUORTerrainDir>& known,
                     const std::shared_ptr<QUORTerrainDir>& terrain);

    QUORDataStoreObserver* const _observer;
    mutable std::mutex _mutex;
    Watcher _dirWatch3d;
    Watcher _dirWatch2d;
    std::shared_ptr<QUORTerrainDir> _terrainDir;
    QString _path3d;
    QString _path2d;
    QString _geoPath;
    QString _geoCachePath;
    std::shared_ptr<QUORLandmarkList> _landmarks;
    /// The thread that looks for new terrain. It is left behind when it does not end soon.
    std::shared_ptr<Scout> _scout;
    std::future<void> _scoutDone;
};
