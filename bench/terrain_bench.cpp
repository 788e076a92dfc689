// SPDX-License-Identifier: MIT
// Prints what terrain costs: scanning, converting, reading the cache back.
#include "QUORAbortFlag.h"
#include "QUORTerrainDir.h"
#include "TerrainWriter.h"

#include <vtkProp3D.h>

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <filesystem>

namespace {

constexpr int SITE_LAT = 60;
constexpr int SITE_LON = 24;
constexpr int ROWS = 8;
constexpr int COLUMNS = 16;
constexpr int SRTM1_POSTS = 3601;
constexpr int SRTM1_TILES = 8;
constexpr int SCANNED_TILES = 20000;

double secondsOf(const std::function<void()>& work) {
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) * 1e-9;
}

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
    }
}

/// The same posts under another name: a tile of its own for the directory, at no cost of disk.
void repeatTile(const QString& folder, const QString& original, int lat, int lon) {
    std::error_code error;
    std::filesystem::create_hard_link(
        (folder + QLatin1Char('/') + original).toStdString(),
        (folder + QLatin1Char('/') + TerrainWriter::fileName(lat, lon)).toStdString(), error);
}

QByteArray spread(const QByteArray& srtm3) {
    QByteArray bytes(qsizetype(SRTM1_POSTS) * SRTM1_POSTS * 2, '\0');
    for (int row = 0; row < SRTM1_POSTS; ++row) {
        for (int column = 0; column < SRTM1_POSTS; ++column) {
            const qsizetype from = (qsizetype(row / 3) * TerrainWriter::POSTS + column / 3) * 2;
            const qsizetype to = (qsizetype(row) * SRTM1_POSTS + column) * 2;
            bytes[to] = srtm3[from];
            bytes[to + 1] = srtm3[from + 1];
        }
    }
    return bytes;
}

/// The first image of a site on a coast: one tile in three has land.
void writeCoast(const QString& folder, const QString& original) {
    for (int i = 1; i < ROWS * COLUMNS; ++i) {
        if (i % 3 == 0) {
            repeatTile(folder, original, SITE_LAT + i / COLUMNS, SITE_LON + i % COLUMNS);
        }
    }
}

double loadArea(const QString& tiles, const QString& cache, int rows, int columns) {
    const auto projection = std::make_shared<QUORGeoProjection>(
        QStringLiteral("aeqd"), QUORCoordinate(SITE_LAT + 0.3, SITE_LON + 0.9), 6378137.0, 298.257);
    QUORTerrainDir directory(tiles, cache);
    directory.scanFiles();
    const QUORTerrainSet::Ptr set =
        directory.getTerrainSet(projection, QUORCoordinate(double(SITE_LAT), double(SITE_LON)),
                                QUORCoordinate(double(SITE_LAT + rows), double(SITE_LON + columns)));
    const QUORAbortFlag abort;
    return secondsOf([&] { set->loadFiles(abort); });
}

void printArea(const char* name, const QString& tiles, const QString& cache, int rows, int columns) {
    const int count = rows * columns;
    const double cold = loadArea(tiles, cache, rows, columns);
    std::printf("%d %s tiles converted: %.2f s, %.0f ms a tile\n", count, name, cold, cold / count * 1e3);
    const double warm = loadArea(tiles, cache, rows, columns);
    std::printf("%d cached blocks read: %.3f s, %.1f ms a block\n", count, warm, warm / count * 1e3);
}

} // namespace

int main() {
    const QTemporaryDir scratch;
    const QString srtm3 = scratch.filePath(QStringLiteral("srtm3"));
    const QString srtm1 = scratch.filePath(QStringLiteral("srtm1"));
    const QString many = scratch.filePath(QStringLiteral("many"));
    const QString coast = scratch.filePath(QStringLiteral("coast"));
    for (const QString& folder : {srtm3, srtm1, many, coast}) {
        std::filesystem::create_directory(folder.toStdString());
    }
    const TerrainWriter land(1, SITE_LAT + 0.5, SITE_LON + 0.5);
    const QString first = TerrainWriter::fileName(SITE_LAT, SITE_LON);
    const QByteArray tile = land.makeTile(SITE_LAT, SITE_LON);
    writeFile(srtm3 + QLatin1Char('/') + first, tile);
    for (int i = 1; i < ROWS * COLUMNS; ++i) {
        repeatTile(srtm3, first, SITE_LAT + i / COLUMNS, SITE_LON + i % COLUMNS);
    }
    writeFile(srtm1 + QLatin1Char('/') + first, spread(tile));
    for (int i = 1; i < SRTM1_TILES; ++i) {
        repeatTile(srtm1, first, SITE_LAT, SITE_LON + i);
    }
    printArea("SRTM3", srtm3, scratch.filePath(QStringLiteral("cache3")), ROWS, COLUMNS);
    writeFile(coast + QLatin1Char('/') + first, tile);
    writeCoast(coast, first);
    printArea("coastal", coast, scratch.filePath(QStringLiteral("cacheCoast")), ROWS, COLUMNS);
    printArea("SRTM1", srtm1, scratch.filePath(QStringLiteral("cache1")), 1, SRTM1_TILES);

    const QString start = TerrainWriter::fileName(-60, -180);
    writeFile(many + QLatin1Char('/') + start, tile);
    for (int i = 1; i < SCANNED_TILES; ++i) {
        repeatTile(many, start, -60 + i / 360, -180 + i % 360);
    }
    QUORTerrainDir directory(many, scratch.filePath(QStringLiteral("cache")));
    const double scan = secondsOf([&] { directory.scanFiles(); });
    std::printf("%d of %d files scanned: %.2f s\n", int(directory.getTiles().size()), SCANNED_TILES, scan);
    return 0;
}
