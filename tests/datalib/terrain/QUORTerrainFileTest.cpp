// SPDX-License-Identifier: MIT
#include "QUORTerrainFile.h"

#include "LogCapture.h"
#include "QUORTerrainColors.h"
#include "TerrainTiles.h"

#include <QDir>
#include <QImage>
#include <QTemporaryDir>

#include <vtkImageData.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>

#include <cmath>

namespace {

constexpr int SRTM3_BYTES = 2884802;
constexpr int SRTM1_BYTES = 25934402;

class TerrainFile : public testing::Test {
protected:
    QString path(const QString& name) const { return _dir.filePath(name); }
    QUORTerrainFile writeTile(const QString& name, const QByteArray& bytes) const {
        writeFile(path(name), bytes);
        QUORTerrainFile tile(path(name));
        tile.loadFileInfo();
        return tile;
    }

    LogCapture _log;
    QTemporaryDir _dir;
};

TEST_F(TerrainFile, readsHeadersAndRefusesTheRest) {
    const QByteArray dted = TerrainTiles::dted("0070000E0430000N", [](double, double) { return 5; });
    const auto edited = [&](int at, const QByteArray& text) {
        return QByteArray(dted).replace(at, text.size(), text);
    };
    const QByteArray srtm3(SRTM3_BYTES, '\0');
    struct Row {
        QString name;
        QByteArray bytes;
        QUORTerrainFile::Type type;
        QUORCoordinate origin;
        QString block;
        QString error;
    };
    const QString size = QStringLiteral("file not correct size: ");
    const QString parse = QStringLiteral("Parsing location from filename failed: ");
    const QString label = QStringLiteral("DTED1 file headers not recognized: ");
    const Row rows[] = {
        {"N47E008.hgt", srtm3, QUORTerrainFile::Srtm3, {47.0, 8.0}, "SRTM3_N47E8", {}},
        {"N47E009.HGT",
         QByteArray(SRTM1_BYTES, '\0'),
         QUORTerrainFile::Srtm1,
         {47.0, 9.0},
         "SRTM1_N47E9",
         {}},
        {"s05w003.Hgt", srtm3, QUORTerrainFile::Srtm3, {-5.0, -3.0}, "SRTM3_S5W3", {}},
        {"a.dT1", dted, QUORTerrainFile::Dted1, {43.0, 7.0}, "DTED1_N43E7", {}},
        {"b.Dt1", edited(11, "W0430000S"), QUORTerrainFile::Dted1, {-43.0, -7.0}, "DTED1_S43W7", {}},
        {"a.DT1", dted, QUORTerrainFile::Unknown, {0.0, 0.0}, {}, {}},
        {"x.hgt", srtm3, QUORTerrainFile::Unknown, {}, {}, parse},
        {"N470E008.hgt", srtm3, QUORTerrainFile::Unknown, {}, {}, parse},
        {"N99999999999E008.hgt", srtm3, QUORTerrainFile::Unknown, {}, {}, parse},
        {"N47E008s.hgt", srtm3.chopped(1), QUORTerrainFile::Unknown, {}, {}, size},
        {"N47E008l.hgt", srtm3 + 'x', QUORTerrainFile::Unknown, {}, {}, size},
        {"short.dt1", dted.chopped(1), QUORTerrainFile::Unknown, {}, {}, size},
        {"uhl.dt1", edited(0, "XHL"), QUORTerrainFile::Unknown, {}, {}, label},
        {"dsi.dt1", edited(80, "ISD"), QUORTerrainFile::Unknown, {}, {}, label},
        {"letters.dt1", edited(4, "abc"), QUORTerrainFile::Unknown, {}, {}, label},
        {"far.dt1", edited(4, "999"), QUORTerrainFile::Unknown, {}, {}, label},
        {"lines.dt1", edited(47, "0601"), QUORTerrainFile::Unknown, {}, {}, label},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(qPrintable(row.name));
        _log.clear();
        const QUORTerrainFile tile = writeTile(row.name, row.bytes);
        EXPECT_EQ(tile.getType(), row.type);
        EXPECT_EQ(tile.isValid(), row.type != QUORTerrainFile::Unknown);
        EXPECT_EQ(_log.count(QStringLiteral("E: ")), row.error.isEmpty()        ? 0
                                                     : row.name.endsWith("dt1") ? 2
                                                                                : 1);
        EXPECT_TRUE(row.error.isEmpty() || _log.contains(row.error + tile.getFileName()));
        if (tile.isValid()) {
            EXPECT_EQ(tile.getOrigin(), row.origin);
            EXPECT_EQ(tile.getBlockName(), row.block);
            EXPECT_NEAR(tile.getLatInterval(), row.type == QUORTerrainFile::Srtm1 ? 1 / 3600.0 : 1 / 1200.0,
                        1e-12);
        }
        QFile::remove(tile.getFileName());
    }
}

TEST_F(TerrainFile, namesAMissingFile) {
    QUORTerrainFile missing(path("N01E001.dt1"));
    EXPECT_FALSE(missing.loadFileInfo());
    EXPECT_TRUE(_log.contains(QStringLiteral("QUORTerrainFile::loadHeadersDTED1(): file not available: ")));
}

TEST_F(TerrainFile, keepsNorthUpAndEastRight) {
    // A height that tells every corner and the directions apart.
    const TerrainTiles::Land land = [](double north, double east) {
        return int(100 + 1000 * north + 300 * east);
    };
    QUORTerrainFile tiles[] = {writeTile("N42E001.hgt", TerrainTiles::srtm(land)),
                               writeTile("N42E001h.hgt", TerrainTiles::srtm(land, 3601)),
                               writeTile("t.dt1", TerrainTiles::dted("0010000E0420000N", land))};
    for (QUORTerrainFile& tile : tiles) {
        SCOPED_TRACE(qPrintable(tile.getBlockName()));
        ASSERT_TRUE(tile.convertData(TerrainTiles::projection(42.0, 1.0), {}));
        vtkPolyData& mesh = *tile.getBlock().mesh;
        ASSERT_EQ(mesh.GetNumberOfPoints(), 3721);
        for (const int row : {0, 30, 60}) {
            for (const int column : {0, 30, 60}) {
                double point[3];
                mesh.GetPoint(row * 61 + column, point);
                EXPECT_NEAR(point[2], land(row / 60.0, column / 60.0), 3.0);
                EXPECT_NEAR(point[0], column / 60.0 * 82600.0, 2000.0); // 82.6 km a degree at 42 N
                EXPECT_NEAR(point[1], row / 60.0 * 111100.0, 600.0);
                const double* texture = mesh.GetPointData()->GetTCoords()->GetTuple2(row * 61 + column);
                EXPECT_NEAR(texture[0], column / 60.0, 1e-6);
                EXPECT_NEAR(texture[1], row / 60.0, 1e-6);
            }
        }
        EXPECT_NEAR(mesh.GetPoint(0)[2], 100.0, 0.01); // edges are single posts, not averages
        EXPECT_NEAR(mesh.GetPoint(3720)[2], 1400.0, 0.01);
        EXPECT_GT(mesh.GetPointData()->GetNormals()->GetTuple3(1800)[2], 0.9);

        EXPECT_NEAR(tile.getElevationAtLocation({42.25, 1.75}), land(0.25, 0.75), 20.0);
        for (const QUORCoordinate& outside : {QUORCoordinate(43.0, 1.5), QUORCoordinate(42.5, 2.0),
                                              QUORCoordinate(41.999, 1.5), QUORCoordinate(42.5, 0.999)}) {
            EXPECT_EQ(tile.getElevationAtLocation(outside), 0.0);
        }
    }
}

TEST_F(TerrainFile, fillsVoidsAndKeepsTheSeaFlat) {
    struct Row {
        const char* name;
        TerrainTiles::Land land;
        double height; // in the middle of the tile
        double start;  // at the first post of the file: north-west of SRTM
    };
    const auto inPatch = [](double n, double e) {
        return std::abs(n - 0.5) < 0.2 && std::abs(e - 0.5) < 0.2;
    };
    const Row rows[] = {
        {"a void does not lower its block",
         [](double n, double e) { return int(std::lround((n + e) * 1200)) % 2 ? -32768 : 700; }, 700.0,
         700.0},
        {"below the sea is sea", [](double, double) { return -5; }, 0.0, 0.0},
        {"a patch repeats what lies west of it",
         [&](double n, double e) { return inPatch(n, e) ? -32768 : 40; }, 40.0, 40.0},
        {"a void corner is no spike", [](double n, double e) { return n - e > 0.5 ? -32768 : 300; }, 300.0,
         300.0},
        {"nothing but voids", [](double, double) { return -32768; }, 0.0, 0.0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        QUORTerrainFile tile = writeTile("S08W008.hgt", TerrainTiles::srtm(row.land));
        ASSERT_TRUE(tile.convertData(TerrainTiles::projection(-7.0, -7.0), {}));
        EXPECT_NEAR(tile.getElevationAtLocation({-7.5, -7.5}), row.height, 1.0);
        EXPECT_NEAR(tile.getBlock().mesh->GetPoint(60 * 61)[2], row.start, 1.0);
    }
    // DTED writers differ in how they write a void; a void repeats what lies south of it.
    const std::pair<int, double> voids[] = {{-32768, 1800.0}, {-32767, 1800.0}, {-1, 1800.0}, {-2, 0.0}};
    for (const auto& [post, height] : voids) {
        SCOPED_TRACE(post);
        const auto land = [&, raw = post](double n, double e) { return inPatch(n, e) ? raw : 1800; };
        QUORTerrainFile dted = writeTile("v.dt1", TerrainTiles::dted("0010000E0420000N", land));
        ASSERT_TRUE(dted.convertData(TerrainTiles::projection(42.0, 1.0), {}));
        EXPECT_EQ(dted.getElevationAtLocation({42.5, 1.5}), height);
        EXPECT_EQ(dted.getElevationAtLocation({42.5, 1.8}), 1800.0);
    }
    QUORTerrainFile dted = writeTile("v.dt1", TerrainTiles::dted("0010000E0420000N", [&](double, double e) {
                                         return e < 0.5 ? -32768 : 9;
                                     }));
    ASSERT_TRUE(dted.convertData(TerrainTiles::projection(42.0, 1.0), {}));
    EXPECT_EQ(dted.getElevationAtLocation({42.5, 1.2}), 0.0);
    EXPECT_EQ(dted.getElevationAtLocation({42.5, 1.8}), 9.0);
}

TEST_F(TerrainFile, coloursHeightsAndSlopes) {
    EXPECT_EQ(QUORTerrainColors::heightToColor(1500.0, 1.0), (QUORTerrainColors::Rgb{229, 218, 200}));
    EXPECT_EQ(QUORTerrainColors::heightToColor(9000.0, 0.1), (QUORTerrainColors::Rgb{227, 227, 227}));
    // Sea in the south-west quarter only: the picture's rows and columns are where the ground is.
    QUORTerrainFile tile = writeTile(
        "N42E001.hgt", TerrainTiles::srtm([](double n, double e) { return n < 0.5 && e < 0.5 ? 0 : 4000; }));
    ASSERT_TRUE(tile.convertData(TerrainTiles::projection(42.0, 1.0), path("block.vtk")));
    const QImage image(path("block.vtk.png"));
    ASSERT_EQ(image.size(), QSize(256, 256));
    EXPECT_EQ(image.pixelColor(60, 200).red(), 191);
    EXPECT_EQ(image.pixelColor(60, 60).red(), 255);
    EXPECT_EQ(image.pixelColor(200, 200).red(), 255);
    EXPECT_EQ(tile.getBlock().texture->GetScalarComponentAsDouble(60, 55, 0, 0), 191.0);
    EXPECT_EQ(tile.getBlock().texture->GetScalarComponentAsDouble(60, 200, 0, 0), 255.0);
}

TEST_F(TerrainFile, makesTheColoursOfTheSeaOnce) {
    QUORTerrainFile measured = writeTile("N42E001.hgt", TerrainTiles::srtm([](double, double) { return 0; }));
    QUORTerrainFile missing[] = {QUORTerrainFile(QUORCoordinate(42.0, 1.0)),
                                 QUORTerrainFile(QUORCoordinate(42.0, 2.0))};
    for (QUORTerrainFile* tile : {&measured, &missing[0], &missing[1]}) {
        ASSERT_TRUE(tile->convertData(TerrainTiles::projection(42.0, 1.0), path("block.vtk")));
    }
    const auto pixels = [](const QUORTerrainFile& tile) {
        return QByteArray(static_cast<const char*>(tile.getBlock().texture->GetScalarPointer()), 3 << 16);
    };
    EXPECT_EQ(pixels(missing[0]), pixels(measured));
    EXPECT_EQ(missing[0].getBlock().texture->GetScalarPointer(),
              missing[1].getBlock().texture->GetScalarPointer());
    // Each is its tile's own to give away.
    EXPECT_NE(missing[0].takeTexture(), missing[1].takeTexture());
    for (vtkIdType i = 0; i < 3721; ++i) {
        ASSERT_EQ(missing[0].getBlock().mesh->GetPoint(i)[2], 0.0);
        ASSERT_EQ(missing[0].getBlock().mesh->GetPoint(i)[0], measured.getBlock().mesh->GetPoint(i)[0]);
    }
}

TEST_F(TerrainFile, refusesWhatChangedSinceTheScanOrCannotBePlaced) {
    const QByteArray whole(SRTM3_BYTES, '\0');
    QUORTerrainFile tile = writeTile("N42E001.hgt", whole);
    const auto here = TerrainTiles::projection(42.0, 1.0);
    for (const QByteArray& bytes : {whole.chopped(2), whole + "more", QByteArray()}) {
        writeFile(tile.getFileName(), bytes);
        EXPECT_FALSE(tile.convertData(here, path("block.vtk")));
    }
    QFile::remove(tile.getFileName());
    EXPECT_FALSE(tile.convertData(here, path("block.vtk")));
    EXPECT_EQ(_log.count(QStringLiteral("QUORTerrainFile::loadOriginalDataSRTM(): Accessing file failed.")),
              1);
    EXPECT_EQ(_log.count(QStringLiteral("filename: ")), 1);

    QUORTerrainFile polar(QUORCoordinate(89.0, 10.0));
    EXPECT_FALSE(polar.convertData(TerrainTiles::projection(88.5, 10.0, QStringLiteral("merc")), {}));
    EXPECT_TRUE(polar.convertData(TerrainTiles::projection(88.5, 10.0), {}));
    EXPECT_FALSE(polar.convertData(TerrainTiles::projection(88.5, 10.0, QStringLiteral("none")), {}));
    EXPECT_FALSE(
        QUORTerrainFile(QUORCoordinate(-42.0, -179.0)).convertData(here, {})); // behind the map's edge
    EXPECT_TRUE(QDir(_dir.path()).entryList({QStringLiteral("block*")}).isEmpty());

    for (const double lon : {179.0, -180.0}) { // either side of the date line
        QUORTerrainFile edge(QUORCoordinate(10.0, lon));
        ASSERT_TRUE(edge.convertData(TerrainTiles::projection(10.5, 179.5), {}));
        EXPECT_NEAR(edge.getBlock().mesh->GetCenter()[0], lon > 0.0 ? 0.0 : 109600.0, 3000.0);
        EXPECT_LT(edge.getBlock().mesh->GetLength(), 170000.0);
    }
}

TEST_F(TerrainFile, takesOnlyWholeBlocksOfItsProjectionFromTheCache) {
    const auto here = TerrainTiles::projection(42.0, 1.5);
    const TerrainTiles::Land slope = [](double n, double e) { return int(200 * n + 900 * e); };
    QUORTerrainFile tile = writeTile("N42E001.hgt", TerrainTiles::srtm(slope));
    const QString mesh = path("block.vtk");
    const QString texture = mesh + QStringLiteral(".png");
    const auto write = [&] { ASSERT_TRUE(tile.convertData(here, mesh) && tile.getCacheError().isEmpty()); };
    write();
    const QByteArray meshBytes = readFile(mesh);
    const QByteArray textureBytes = readFile(texture);

    QUORTerrainFile reader(QUORCoordinate(42.0, 1.0));
    ASSERT_TRUE(reader.loadCachedData(here, mesh));
    for (vtkIdType i = 0; i < 3721; ++i) {
        ASSERT_NEAR(reader.getBlock().mesh->GetPoint(i)[2], tile.getBlock().mesh->GetPoint(i)[2], 1e-3);
    }
    EXPECT_EQ(reader.getBlock().texture->GetScalarComponentAsDouble(9, 70, 0, 1),
              tile.getBlock().texture->GetScalarComponentAsDouble(9, 70, 0, 1));

    QByteArray flipped = meshBytes;
    flipped[meshBytes.size() / 2] = char(flipped[meshBytes.size() / 2] ^ 0x10);
    QByteArray version = meshBytes; // makes the reader expect other cells than there are
    version.replace("Version 5", "Version 4");
    QByteArray counts = meshBytes;
    counts.replace("POINTS 3721", "POINTS -721");
    QImage other(256, 256, QImage::Format_RGB888);
    other.fill(Qt::red);
    QUORTerrainFile elsewhere = writeTile("N43E001.hgt", TerrainTiles::srtm(slope));
    ASSERT_TRUE(elsewhere.convertData(TerrainTiles::projection(42.0, 1.5, "aeqd", 6371000.0), path("o.vtk")));
    ASSERT_TRUE(elsewhere.convertData(here, path("n.vtk")));
    const std::pair<const char*, std::function<void()>> damages[] = {
        {"cut mesh", [&] { writeFile(mesh, meshBytes.left(meshBytes.size() / 2)); }},
        {"one flipped bit", [&] { writeFile(mesh, flipped); }},
        {"another version", [&] { writeFile(mesh, version); }},
        {"negative count", [&] { writeFile(mesh, counts); }},
        {"empty mesh", [&] { writeFile(mesh, {}); }},
        {"no mesh at all", [&] { QFile::remove(mesh); }},
        {"a text", [&] { writeFile(mesh, "hello\nworld\n"); }},
        {"another earth", [&] { writeFile(mesh, readFile(path("o.vtk"))); }},
        {"another tile",
         [&] {
             writeFile(mesh, readFile(path("n.vtk")));
             writeFile(texture, readFile(path("n.vtk.png")));
         }},
        {"cut texture", [&] { writeFile(texture, textureBytes.left(textureBytes.size() / 2)); }},
        {"no texture", [&] { QFile::remove(texture); }},
        {"another picture", [&] { other.save(texture); }},
        {"a folder", [&] { QFile::remove(texture), QDir().mkdir(texture); }},
    };
    for (const auto& [name, damage] : damages) {
        SCOPED_TRACE(name);
        QDir(texture).removeRecursively();
        write();
        damage();
        EXPECT_FALSE(reader.loadCachedData(here, mesh));
        EXPECT_FALSE(reader.getCacheError().isEmpty());
        EXPECT_NE(reader.getBlock().mesh, nullptr); // what was loaded stays
    }
}

TEST_F(TerrainFile, placesRealTiles) {
    if (TerrainTiles::realTiles().isEmpty()) {
        GTEST_SKIP() << "no real tiles beside the source tree";
    }
    struct Row {
        const char* file;
        QUORCoordinate place;
        double lowest;
        double highest;
    };
    // Known places: the sea off Tarragona, the plain of Lleida, high Pyrenees, the sea off Nice, the Alps.
    for (const Row& row :
         {Row{"N41E001.hgt", {41.03, 1.6}, 0.0, 0.0}, Row{"N41E001.hgt", {41.65, 1.15}, 250, 500},
          Row{"N42E001.hgt", {42.667, 1.398}, 2200, 3150}, Row{"N43E007.dt1", {43.2, 7.5}, 0.0, 0.0},
          Row{"N43E007.dt1", {43.95, 7.4}, 300, 2900}}) {
        QUORTerrainFile tile(TerrainTiles::realTiles() + QLatin1Char('/') + QLatin1String(row.file));
        ASSERT_TRUE(tile.loadFileInfo());
        ASSERT_TRUE(tile.convertData(TerrainTiles::projection(42.0, 1.5), {}));
        EXPECT_GE(tile.getElevationAtLocation(row.place), row.lowest) << row.file;
        EXPECT_LE(tile.getElevationAtLocation(row.place), row.highest) << row.file;
    }
}

} // namespace
