// SPDX-License-Identifier: MIT
#include "QUORDataStore.h"

#include "QUORAssert.h"
#include "QUORDataStoreObserver.h"
#include "QUORDirectoryWatcher.h"
#include "QUORLandmarkList.h"
#include "QUORLog.h"
#include "QUORTerrainDir.h"

#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

namespace {

constexpr std::chrono::milliseconds SCOUT_PATIENCE(500);

QStringList takeAll(QString (QUORDirectoryWatcher::*take)(), QUORDirectoryWatcher& watcher,
                    const QString& logPrefix) {
    QStringList paths;
    for (QString path = (watcher.*take)(); !path.isEmpty(); path = (watcher.*take)()) {
        logDebug(logPrefix + path);
        paths.append(path);
    }
    return paths;
}

QStringList takeAdded(QUORDirectoryWatcher& watcher) {
    return takeAll(&QUORDirectoryWatcher::getAddedFile, watcher, QStringLiteral(" - added filename="));
}

QStringList takeRemoved(QUORDirectoryWatcher& watcher) {
    return takeAll(&QUORDirectoryWatcher::getRemovedFile, watcher, QStringLiteral(" - removed filename="));
}

} // namespace

/// Between the store and a thread that may hang on a remote file system longer than the store lives.
struct QUORDataStore::Scout {
    std::mutex mutex;
    QUORDataStore* store; ///< null when it has died
};

QUORDataStore::QUORDataStore(QUORDataStoreObserver* observer) : _observer(observer) {
    const QUORLogScope scope("QUORDataStore::QUORDataStore");
    _landmarks = std::make_shared<QUORLandmarkList>();
    _scout = std::make_shared<Scout>();
    _scout->store = this;
}

QUORDataStore::~QUORDataStore() {
    const QUORLogScope scope("QUORDataStore::~QUORDataStore");
    if (_scoutDone.valid()) {
        _scoutDone.wait_for(SCOUT_PATIENCE);
    }
    {
        const std::lock_guard lock(_scout->mutex);
        _scout->store = nullptr;
    }
    _dirWatch3d.reset();
    _dirWatch2d.reset();
}

void QUORDataStore::setDirectories(const QString& path3d, const QString& path2d, const QString& geoPath,
                                   const QString& geoCachePath) {
    const QUORLogScope scope("QUORDataStore::setDirectories");
    setWatcher(_dirWatch3d, _path3d, path3d, QUORDirectoryWatchData::Directory3d);
    setWatcher(_dirWatch2d, _path2d, path2d, QUORDirectoryWatchData::Directory2d);
    setTerrain(geoPath, geoCachePath);
}

void QUORDataStore::setWatcher(Watcher& watcher, QString& path, const QString& newPath,
                               QUORDirectoryWatchData::DirectoryType type) {
    if (watcher && path == newPath) {
        return;
    }
    const QString kind = QString::number(int(type)) + QLatin1Char('d');
    logDebug(QStringLiteral("Initializing ") + kind + QStringLiteral(" data directory.."));
    logDebug(QStringLiteral("new ") + kind + QStringLiteral(" data path=") + newPath);
    const auto slot = type == QUORDirectoryWatchData::Directory3d ? &QUORDataStore::dirChanged3d
                                                                  : &QUORDataStore::dirChanged2d;
    Watcher replacement = std::make_shared<QUORDirectoryWatcher>(newPath, type);
    connect(replacement.get(), &QUORDirectoryWatcher::newFiles, this, slot, Qt::QueuedConnection);
    // The new thread may have queued files before anybody listened to it.
    QMetaObject::invokeMethod(this, slot, Qt::QueuedConnection);
    const std::lock_guard lock(_mutex);
    watcher.swap(replacement);
    path = newPath;
}

void QUORDataStore::setTerrain(const QString& geoPath, const QString& geoCachePath) {
    if (getTerrainDir() && geoPath == _geoPath && geoCachePath == _geoCachePath) {
        return;
    }
    logDebug(QStringLiteral("Initializing geo data directory.."));
    logDebug(QStringLiteral("new geo data path=") + geoPath);
    logDebug(QStringLiteral("new geo cache path=") + geoCachePath);
    const auto terrain = std::make_shared<QUORTerrainDir>(geoPath, geoCachePath);
    terrain->scanFiles();
    const std::lock_guard lock(_mutex);
    _terrainDir = terrain;
    _geoPath = geoPath;
    _geoCachePath = geoCachePath;
}

void QUORDataStore::refreshTerrain() {
    const auto known = getTerrainDir();
    const bool busy =
        _scoutDone.valid() && _scoutDone.wait_for(std::chrono::seconds(0)) != std::future_status::ready;
    if (!known || busy) {
        return;
    }
    std::promise<void> done;
    _scoutDone = done.get_future();
    const auto look = [scout = _scout, known](std::promise<void> end) {
        if (const auto terrain = findNewTerrain(*known)) {
            const std::lock_guard lock(scout->mutex);
            if (scout->store != nullptr) {
                scout->store->takeTerrain(known, terrain);
            }
        }
        end.set_value();
    };
    try {
        std::thread(look, std::move(done)).detach();
    } catch (const std::system_error&) {
        // No thread to be had: the next call tries again.
    }
}

std::shared_ptr<QUORTerrainDir> QUORDataStore::findNewTerrain(QUORTerrainDir& known) {
    if (!known.hasNews()) {
        return nullptr;
    }
    // Another object: a job must never meet one that is half filled.
    auto terrain = std::make_shared<QUORTerrainDir>(known.getSourcePath(), known.getCachePath());
    terrain->scanFiles();
    if (terrain->getTiles().isEmpty() || terrain->hasTilesOf(known)) {
        known.takeScanOf(*terrain); // with the sets that it has loaded
        return nullptr;
    }
    return terrain;
}

void QUORDataStore::takeTerrain(const std::shared_ptr<QUORTerrainDir>& known,
                                const std::shared_ptr<QUORTerrainDir>& terrain) {
    const std::lock_guard lock(_mutex);
    if (_terrainDir == known) {
        _terrainDir = terrain;
    }
}

QUORFileLeaf::Ptr QUORDataStore::getLatestData(const QString& site, const QString& product,
                                               const QString& configuration) const {
    const QUORLogScope scope("QUORDataStore::getLatestData");
    const QUOR3DTop::Ptr top = get3DTop();
    if (!top) {
        return nullptr;
    }
    QUORFileLeaf::Ptr latest;
    QDateTime latestTime;
    for (const QUORFileLeaf::Ptr& leaf : top->findLatestLeaves(site, product, configuration, 0)) {
        const QDateTime time = leaf->getFile()->getDataTime();
        if (time.isValid() && (!latest || time > latestTime)) {
            latest = leaf;
            latestTime = time;
        }
    }
    return latest;
}

void QUORDataStore::getDataSequence(QVector<QUORFileLeaf::Ptr>& sequence, const QString& site,
                                    const QString& product, const QString& configuration) const {
    const QUORLogScope scope("QUORDataStore::getDataSequence");
    const QUOR3DTop::Ptr top = get3DTop();
    if (!top) {
        return;
    }
    const QUORDirTop::Leaves leaves = top->findLeaves(site, product, configuration, QStringLiteral("*"));
    logDebug(QStringLiteral("number of leaves found: ") + QString::number(leaves.size()));
    for (const QUORFileLeaf::Ptr& leaf : leaves) {
        logDebug(QStringLiteral("-testing: ") + leaf->getName());
        sequence.append(leaf);
    }
}

QUOR3DTop::Ptr QUORDataStore::get3DTop() const {
    const std::lock_guard lock(_mutex);
    return _dirWatch3d ? std::dynamic_pointer_cast<QUOR3DTop>(_dirWatch3d->getTree()) : nullptr;
}

QUOR2DTop::Ptr QUORDataStore::get2DTop() const {
    const std::lock_guard lock(_mutex);
    return _dirWatch2d ? std::dynamic_pointer_cast<QUOR2DTop>(_dirWatch2d->getTree()) : nullptr;
}

std::shared_ptr<QUORTerrainDir> QUORDataStore::getTerrainDir() const {
    const std::lock_guard lock(_mutex);
    return _terrainDir;
}

QString QUORDataStore::getPath3d() const {
    const std::lock_guard lock(_mutex);
    return _path3d;
}

QString QUORDataStore::getPath2d() const {
    const std::lock_guard lock(_mutex);
    return _path2d;
}

void QUORDataStore::dirChanged3d() {
    const QUORLogScope scope("QUORDataStore::dirChanged3d");
    if (!QUOR_VERIFY(_dirWatch3d)) {
        return;
    }
    const QStringList added = takeAdded(*_dirWatch3d);
    const QStringList removed = takeRemoved(*_dirWatch3d);
    if (_observer != nullptr && !(added.isEmpty() && removed.isEmpty())) {
        _observer->dataStoreNewDataAvailable3d(this, added, removed);
    }
}

void QUORDataStore::dirChanged2d() {
    const QUORLogScope scope("QUORDataStore::dirChanged2d");
    if (!QUOR_VERIFY(_dirWatch2d)) {
        return;
    }
    const QStringList added = takeAdded(*_dirWatch2d);
    const QStringList removed = takeRemoved(*_dirWatch2d);
    if (_observer != nullptr && !(added.isEmpty() && removed.isEmpty())) {
        _observer->dataStoreNewDataAvailable2d(this, added, removed);
    }
}
