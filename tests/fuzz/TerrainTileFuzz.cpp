// SPDX-License-Identifier: MIT
// A terrain tile. Tiles have one size only, so the input is what is put into one: a letter for the kind
// ("h" SRTM, "d" DTED), a line with the name or the user header label, then bytes that are repeated as posts.
#include "FuzzScratch.h"
#include "QUORDtedLayout.h"
#include "QUORTerrainFile.h"

#include <QFile>

#include <vtkImageData.h>
#include <vtkPolyData.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr qsizetype SRTM3_BYTES = 1201LL * 1201 * 2;

/// Headers only are a hundred times faster than posts.
bool holdsPosts(const QByteArray& posts) {
    return posts.size() > 1;
}

QByteArray fill(qsizetype size, qsizetype first, const QByteArray& posts) {
    QByteArray bytes(size, '\0');
    if (holdsPosts(posts)) {
        for (qsizetype at = first; at < size; at += posts.size()) {
            std::copy_n(posts.begin(), std::min(posts.size(), size - at), bytes.begin() + at);
        }
    }
    return bytes;
}

/// What a name may not hold would be another file.
QString toName(const QByteArray& line) {
    QString name = QString::fromLatin1(line.left(60));
    name.replace(QLatin1Char('/'), QLatin1Char('_')).remove(QChar::Null);
    return QStringLiteral("tile/") + name + QStringLiteral(".hgt");
}

void check(QUORTerrainFile& tile, const QByteArray& posts) {
    const QUORCoordinate origin = tile.getOrigin();
    FUZZ_REQUIRE(std::abs(origin.getLat()) <= 90.0 && std::abs(origin.getLon()) <= 180.0);
    FUZZ_REQUIRE(tile.getLonLines() == 1201 && tile.getLatPoints() == 1201);
    tile.getBlockName();
    if (!holdsPosts(posts)) {
        return;
    }
    const auto projection = std::make_shared<const QUORGeoProjection>(
        QStringLiteral("aeqd"), QUORCoordinate(origin.getLat() * 0.9, origin.getLon()), 6378137.0, 298.257);
    if (tile.convertData(projection, QString())) {
        FUZZ_REQUIRE(tile.getBlock().mesh->GetNumberOfPoints() == QUORTerrainBlock::POINTS);
        FUZZ_REQUIRE(std::isfinite(tile.getElevationAtLocation(origin)));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const QByteArray input = fuzzBytes(data, size);
    const qsizetype end = input.indexOf('\n');
    if (end < 1) {
        return -1;
    }
    const QByteArray line = input.mid(1, end - 1);
    const QByteArray posts = input.mid(end + 1);
    QString path;
    if (input.startsWith('d')) {
        QByteArray bytes = fill(QUORDtedLayout::FILE_BYTES, 3428, posts);
        bytes.replace(0, QUORDtedLayout::UHL_BYTES, line.leftJustified(QUORDtedLayout::UHL_BYTES, ' ', true));
        bytes.replace(QUORDtedLayout::UHL_BYTES, 3, "DSI");
        path = FuzzScratch::instance().write(QStringLiteral("tile/n47.dt1"), bytes);
    } else {
        path = FuzzScratch::instance().write(toName(line), fill(SRTM3_BYTES, 0, posts));
    }
    QUORTerrainFile tile(path);
    if (tile.loadFileInfo()) {
        check(tile, posts);
    }
    QFile::remove(path);
    return 0;
}
