// SPDX-License-Identifier: MIT
#include "QUORTerrainDir.h"

#include "LogCapture.h"
#include "QUORAbortFlag.h"
#include "TerrainTiles.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <vtkAssembly.h>
#include <vtkCallbackCommand.h>
#include <vtkImageData.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>
#include <vtkProp3DCollection.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

class TerrainDir : public testing::Test {
protected:
    TerrainDir() {
        QDir(_dir.path()).mkdir(QStringLiteral("tiles"));
        _tiles = _dir.filePath(QStringLiteral("tiles"));
        _cache = _dir.filePath(QStringLiteral("cache/terrain"));
    }

    /// Tiles of a slope that rises to the north, so that neighbours meet.
    void addTiles(const QStringList& names) const {
        static const QByteArray bytes = TerrainTiles::srtm([](double n, double) { return int(100 * n); });
        for (const QString& name : names) {
            writeFile(_tiles + QLatin1Char('/') + name + QStringLiteral(".hgt"), bytes);
        }
    }
    QUORTerrainDir::Ptr open() const {
        auto directory = std::make_shared<QUORTerrainDir>(_tiles, _cache);
        directory->scanFiles();
        return directory;
    }
    static QStringList names(const QUORTerrainSet& set) {
        QStringList result;
        for (const QUORTerrainFile::Ptr& tile : set.getTiles()) {
            result.append(tile->getBlockName());
        }
        return result;
    }

    LogCapture _log;
    QTemporaryDir _dir;
    QString _tiles;
    QString _cache;
    QUORAbortFlag _noAbort;
    const QUORGeoProjection::CPtr _projection = TerrainTiles::projection(46.5, 7.5);
    const QUORCoordinate _corner1{46.3, 7.2};
    const QUORCoordinate _corner2{47.1, 8.9};
};

TEST_F(TerrainDir, namesPlacesAndCacheFiles) {
    EXPECT_EQ(QUORTerrainDir::getLocString({47.0, 8.0}), QStringLiteral("N47E8"));
    EXPECT_EQ(QUORTerrainDir::getFileKey({-7.5, -123.0625}), QStringLiteral("S7.5W123.063"));
    EXPECT_EQ(QUORTerrainDir::getLocString({-0.0, 0.0}), QStringLiteral("N0E0"));
    EXPECT_EQ(QUORTerrainDir::getCacheKey(TerrainTiles::projection(60.0, 25.0), {47.0, 8.0}, "SRTM3"),
              QStringLiteral("TC04_SRTM3_aeqd_N60E25_N47E8"));
    const QUORTerrainDir directory(QString(), QStringLiteral("~/.quor3d/cache/terrain"));
    EXPECT_EQ(directory.getCachePath(), QDir::homePath() + QStringLiteral("/.quor3d/cache/terrain"));
    EXPECT_TRUE(QFileInfo(directory.getCachePath()).isDir());
    EXPECT_EQ(directory.getCachedFilename(_projection, QUORTerrainFile(QUORCoordinate(-3.0, 9.0))),
              directory.getCachePath() + QStringLiteral("/TC04_EMPTY_aeqd_N46.5E7.5_S3E9.vtk"));
}

TEST_F(TerrainDir, scansWhatIsATileAndNamesTheRest) {
    addTiles({"N46E007", "N46E008", "nonsense"});
    writeFile(_tiles + "/N47E007.hgt", "short");
    writeFile(_tiles + "/readme.txt", "text");
    QDir(_tiles).mkdir("N48E007.hgt");
    EXPECT_EQ(open()->getTiles().keys(), QStringList({"N46E7", "N46E8"}));
    EXPECT_EQ(_log.count(QStringLiteral("E: Skipped terrain file: ")), 3);

    for (const QString& path : {QString(), _tiles + "/none", _tiles + "/readme.txt"}) {
        QUORTerrainDir directory(path, _cache);
        directory.scanFiles();
        EXPECT_EQ(_log.count(QStringLiteral("E: Terrain directory ") + path), path.isEmpty() ? 0 : 1);
        EXPECT_FALSE(directory.hasNews());
        EXPECT_TRUE(directory.getTiles().isEmpty()) << qPrintable(path);
        EXPECT_TRUE(directory.getTerrainSet(_projection, _corner1, _corner2)->getTiles().isEmpty());
    }
}

TEST_F(TerrainDir, seesWhatHasComeSinceTheScan) {
    const QString late = _tiles + "/late";
    QUORTerrainDir directory(late, _cache);
    const auto sees = [&](const char* what, bool news) {
        EXPECT_EQ(directory.hasNews(), news) << what;
        directory.scanFiles();
        EXPECT_FALSE(directory.hasNews()) << what;
    };
    sees("no directory yet", false);
    QDir().mkdir(late);
    sees("a directory", false);
    writeFile(late + "/N46E007.hgt", "a copy that has just begun");
    sees("a new file", true);
    writeFile(late + "/lock", "no tile");
    sees("another file", false);
    writeFile(late + "/N46E007.hgt", TerrainTiles::srtm([](double, double) { return 1; }));
    sees("a file that has grown into a tile", true);
    EXPECT_EQ(directory.getTiles().size(), 1);
    QDir(late).rename(late, late + "2");
    EXPECT_FALSE(directory.hasNews()) << "a lost mount";
}

TEST_F(TerrainDir, coversAnAreaWithTilesAndFillsTheGaps) {
    struct Row {
        QStringList files;
        QUORCoordinate corner1;
        QUORCoordinate corner2;
        QStringList blocks;
    };
    const Row rows[] = {
        {{"N46E007", "N46E008", "N47E007", "N47E008", "N48E008"},
         _corner1,
         _corner2,
         {"SRTM3_N46E7", "SRTM3_N46E8", "SRTM3_N47E7", "SRTM3_N47E8"}},
        {{"N46E007", "N46E008"}, {46.0, 7.0}, {47.0, 8.0}, {"SRTM3_N46E7"}},
        {{"N46E007"}, _corner1, _corner2, {"SRTM3_N46E7", "EMPTY_N46E8", "EMPTY_N47E7", "EMPTY_N47E8"}},
        {{"N10E010"}, _corner1, _corner2, {}},
        {{"S01E179", "N00W180"},
         {-1.0, 179.0},
         {1.0, -179.0},
         {"SRTM3_S1E179", "SRTM3_N0W180", "EMPTY_S1W180", "EMPTY_N0E179"}},
        {{"S01E179"}, {-1.0, 179.0}, {0.0, 180.0}, {"SRTM3_S1E179"}},
        {{"N46E007"}, {47.0, 8.0}, {46.0, 7.0}, {}},
    };
    for (const Row& row : rows) {
        QDir(_tiles).removeRecursively();
        QDir().mkdir(_tiles);
        addTiles(row.files);
        EXPECT_EQ(names(*open()->getTerrainSet(_projection, row.corner1, row.corner2)), row.blocks);
    }
    addTiles({"N46E007"});
    const QUORTerrainDir::Ptr directory = open();
    _log.clear();
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(
            directory->getTerrainSet(_projection, {-80.0, -180.0}, {80.0, 180.0})->getTiles().isEmpty());
    }
    EXPECT_EQ(_log.count(QStringLiteral("W: ")), 1);
}

TEST_F(TerrainDir, givesTheSameSetForTheSameRequestAmongTheLastOnes) {
    addTiles({"N46E007"});
    const QUORTerrainDir::Ptr directory = open();
    const auto request = [&](const QUORGeoProjection::CPtr& projection) {
        return directory->getTerrainSet(projection, _corner1, _corner2);
    };
    const QUORTerrainSet::Ptr first = request(_projection);
    EXPECT_EQ(request(TerrainTiles::projection(46.5, 7.5)), first);
    EXPECT_EQ(directory->getTerrainSet(_projection, {46.9, 7.9}, {48.0, 8.1}),
              first); // the same whole degrees
    EXPECT_NE(directory->getTerrainSet(_projection, _corner1, {48.1, 8.9}), first);
    const QUORTerrainSet::Ptr others[] = {
        request(TerrainTiles::projection(46.5, 7.25)), request(TerrainTiles::projection(46.5, 7.5, "merc")),
        request(TerrainTiles::projection(46.5, 7.5, "aeqd", 6371000.0)),
        request(TerrainTiles::projection(46.5, 7.5, "aeqd", 6378137.0, 297.0))};
    for (const QUORTerrainSet::Ptr& other : others) {
        EXPECT_NE(other, first);
    }
    EXPECT_EQ(request(_projection), first); // several sites take turns

    const std::weak_ptr<QUORTerrainSet> oldest = request(TerrainTiles::projection(46.5, 7.75));
    for (int i = 0; i < 20; ++i) {
        request(TerrainTiles::projection(40.0 + i, 7.0));
    }
    EXPECT_TRUE(oldest.expired());
}

TEST_F(TerrainDir, convertsOnceAndShowsOneSeamlessProp) {
    addTiles({"N46E007", "N47E007", "N46E008"});
    const QUORTerrainSet::Ptr set = open()->getTerrainSet(_projection, _corner1, _corner2);
    EXPECT_EQ(set->getProp(), nullptr);
    ASSERT_TRUE(set->loadFiles(_noAbort));
    EXPECT_EQ(_log.count(QStringLiteral("filesConverted=4")), 1);
    const auto prop = set->getProp();
    auto* assembly = vtkAssembly::SafeDownCast(prop);
    ASSERT_NE(assembly, nullptr);
    EXPECT_EQ(assembly->GetParts()->GetNumberOfItems(), 4);
    EXPECT_TRUE(set->loadFiles(_noAbort));
    EXPECT_EQ(set->getProp(), prop);
    EXPECT_EQ(_log.count(QStringLiteral("QUORTerrainSet::loadFiles() called.")), 1);
    EXPECT_NEAR(set->getElevationAtLocation({47.5, 7.5}), 50.0, 2.0);
    EXPECT_EQ(set->getElevationAtLocation({48.5, 7.5}), 0.0);

    const auto blockAt = [&](double lat, double lon) {
        const auto tiles = set->getTiles();
        return (*std::find_if(tiles.begin(), tiles.end(),
                              [&](const QUORTerrainFile::Ptr& tile) {
                                  return tile->contains({lat, lon});
                              }))
            ->getBlock();
    };
    vtkPolyData& south = *blockAt(46.5, 7.5).mesh;
    vtkPolyData& east = *blockAt(46.5, 8.5).mesh;
    vtkPolyData& corner = *blockAt(47.5, 8.5).mesh;
    for (int i = 0; i < 61; ++i) {
        for (int axis = 0; axis < 3; ++axis) {
            EXPECT_EQ(south.GetPoint(i * 61 + 60)[axis], east.GetPoint(i * 61)[axis]);
            EXPECT_EQ(south.GetPointData()->GetNormals()->GetTuple3(i * 61 + 60)[axis],
                      east.GetPointData()->GetNormals()->GetTuple3(i * 61)[axis]);
            EXPECT_EQ(south.GetPointData()->GetNormals()->GetTuple3(3720)[axis],
                      corner.GetPointData()->GetNormals()->GetTuple3(0)[axis]);
        }
    }

    _log.clear();
    const QUORTerrainSet::Ptr later = open()->getTerrainSet(_projection, _corner1, _corner2);
    ASSERT_TRUE(later->loadFiles(_noAbort));
    EXPECT_TRUE(_log.contains(QStringLiteral("filesConverted=0")));
    EXPECT_EQ(_log.count(QStringLiteral("Loading cached block: ")), 4);
    EXPECT_EQ(_log.count(QStringLiteral("W: ")), 0);
    EXPECT_NEAR(later->getElevationAtLocation({47.5, 7.5}), 50.0, 2.0);
}

TEST_F(TerrainDir, makesADamagedBlockAgainOnce) {
    addTiles({"N46E007"});
    ASSERT_TRUE(open()->getTerrainSet(_projection, _corner1, _corner2)->loadFiles(_noAbort));
    const QString victim = _cache + "/TC04_SRTM3_aeqd_N46.5E7.5_N46E7.vtk";
    writeFile(victim, "# vtk DataFile Version 5.1\nforeign\n");
    for (const int repairs : {1, 0}) {
        _log.clear();
        const QUORTerrainSet::Ptr set = open()->getTerrainSet(_projection, _corner1, _corner2);
        ASSERT_TRUE(set->loadFiles(_noAbort));
        EXPECT_EQ(_log.count(QStringLiteral("W: ")), repairs);
        EXPECT_EQ(_log.count(victim + QStringLiteral(": damaged")), repairs);
        EXPECT_TRUE(_log.contains(QStringLiteral("filesConverted=%1").arg(repairs)));
        EXPECT_NEAR(set->getElevationAtLocation({46.5, 7.5}), 50.0, 2.0);
    }
    const QDir cache(_cache);
    EXPECT_EQ(cache.entryList(QDir::Files | QDir::Hidden).size(), 8);
    open()->clearCache();
    EXPECT_TRUE(cache.entryList(QDir::Files | QDir::Hidden).isEmpty());
}

TEST_F(TerrainDir, showsTerrainThatCannotBeCached) {
    addTiles({"N46E007"});
    writeFile(_dir.filePath(QStringLiteral("file")), "in the way");
    for (const QString& cache : {QString(), _dir.filePath(QStringLiteral("file/cache"))}) {
        QUORTerrainDir directory(_tiles, cache);
        directory.scanFiles();
        const QUORTerrainSet::Ptr set = directory.getTerrainSet(_projection, _corner1, _corner2);
        EXPECT_TRUE(set->loadFiles(_noAbort));
        EXPECT_NEAR(set->getElevationAtLocation({46.5, 7.5}), 50.0, 2.0) << qPrintable(cache);
    }
    EXPECT_EQ(_log.count(QStringLiteral("W: QUORTerrainSet::loadFiles(): terrain is shown but not cached: ")),
              1);

    // A disk that fills in the middle of a block.
    const QUORTerrainSet::Ptr set = open()->getTerrainSet(_projection, {46.0, 7.0}, {47.0, 8.0});
    {
        const ResourceLimit small(RLIMIT_FSIZE, 40000);
        EXPECT_TRUE(set->loadFiles(_noAbort));
    }
    EXPECT_NEAR(set->getElevationAtLocation({46.5, 7.5}), 50.0, 2.0);
    EXPECT_TRUE(QDir(_cache)
                    .entryList({QStringLiteral("*.vtk"), QStringLiteral("*.tmp")}, QDir::Files | QDir::Hidden)
                    .isEmpty());
}

TEST_F(TerrainDir, stopsBeforeTheNextBlockAndGoesOnLater) {
    addTiles({"N46E007"});
    const QUORTerrainSet::Ptr set = open()->getTerrainSet(_projection, _corner1, _corner2);
    QUORAbortFlag abort;
    abort.set();
    EXPECT_FALSE(set->loadFiles(abort));
    EXPECT_FALSE(_log.contains(QStringLiteral("Converting terrain block data: ")));
    EXPECT_EQ(set->getProp(), nullptr);
    EXPECT_TRUE(set->loadFiles(_noAbort));
    EXPECT_NE(set->getProp(), nullptr);
}

TEST_F(TerrainDir, goesOnWhenTilesVanishAndServicesShareTheCache) {
    addTiles({"N46E007", "N46E008", "N47E007", "N47E008"});
    const QUORTerrainSet::Ptr ours = open()->getTerrainSet(_projection, _corner1, _corner2);
    const QUORTerrainSet::Ptr theirs = open()->getTerrainSet(_projection, _corner1, _corner2);
    std::thread other([&] { EXPECT_TRUE(theirs->loadFiles(_noAbort)); });
    EXPECT_TRUE(ours->loadFiles(_noAbort));
    other.join();
    for (const QUORTerrainSet::Ptr& set : {ours, theirs}) {
        EXPECT_NEAR(set->getElevationAtLocation({47.5, 8.5}), 50.0, 2.0);
    }
    EXPECT_FALSE(_log.contains(QStringLiteral("W: ")));

    const QUORTerrainDir::Ptr directory = open();
    directory->clearCache();
    const QUORTerrainSet::Ptr set = directory->getTerrainSet(_projection, _corner1, _corner2);
    QFile::remove(_tiles + "/N46E008.hgt");
    EXPECT_TRUE(set->loadFiles(_noAbort));
    EXPECT_EQ(vtkAssembly::SafeDownCast(set->getProp())->GetParts()->GetNumberOfItems(), 3);
    EXPECT_FALSE(set->hasExpired());
}

// The main thread may handle the farewell before the other one has finished it.
TEST_F(TerrainDir, letsThePropDieOnTheMainThread) {
    addTiles({"N46E007"});
    struct Graves {
        std::thread::id main = std::this_thread::get_id();
        std::atomic<int> here = 0;
        std::atomic<int> elsewhere = 0;
    } graves;
    vtkNew<vtkCallbackCommand> onDelete;
    onDelete->SetClientData(&graves);
    onDelete->SetCallback([](vtkObject*, unsigned long, void* data, void*) {
        auto& counts = *static_cast<Graves*>(data);
        ++(std::this_thread::get_id() == counts.main ? counts.here : counts.elsewhere);
    });
    constexpr int SETS = 200;
    std::vector<QUORTerrainSet::Ptr> sets;
    for (int i = 0; i < SETS; ++i) {
        const double lat = 46.5 + i * 1e-9;
        sets.push_back(open()->getTerrainSet(TerrainTiles::projection(lat, 7.5), {46.0, 7.0}, {47.0, 8.0}));
        ASSERT_TRUE(sets.back()->loadFiles(_noAbort));
        sets.back()->getProp()->AddObserver(vtkCommand::DeleteEvent, onDelete);
    }
    std::atomic<bool> done{false};
    std::thread other([&] {
        sets.clear();
        done = true;
    });
    while (!done) {
        QCoreApplication::processEvents();
    }
    other.join();
    QCoreApplication::processEvents();
    EXPECT_EQ(graves.here, SETS);
    EXPECT_EQ(graves.elsewhere, 0);
}

} // namespace
