// SPDX-License-Identifier: MIT
// A cached terrain block with damage: the input is a list of changes to its two files, each seven bytes
// (what, where, which byte) and for each change of what is read the block must be refused or come back the
// same.
#include "FuzzScratch.h"
#include "QUORTerrainFile.h"

#include <vtkImageData.h>
#include <vtkPolyData.h>

#include <QFile>

#include <array>
#include <cmath>
#include <cstring>

namespace {

constexpr qsizetype CHANGE_BYTES = 7;

struct Block {
    Block() {
        tile.convertData(projection, path);
        for (std::size_t i = 0; i < files.size(); ++i) {
            QFile file(path + suffixes[i]);
            FUZZ_REQUIRE(file.open(QIODevice::ReadOnly));
            files[i] = file.readAll();
        }
    }

    const std::array<QString, 2> suffixes{QString(), QStringLiteral(".png")};
    const QUORGeoProjection::CPtr projection = std::make_shared<const QUORGeoProjection>(
        QStringLiteral("aeqd"), QUORCoordinate(47.0, 8.0), 6378137.0, 298.257);
    const QString path = FuzzScratch::instance().write(QStringLiteral("block"), {});
    QUORTerrainFile tile{QUORCoordinate(47.0, 8.0)};
    std::array<QByteArray, 2> files;
};

/// Sets, flips or inserts a byte, cuts the file, or removes or doubles a stretch.
void change(QByteArray& bytes, unsigned what, qsizetype where, char byte) {
    const qsizetype at = bytes.isEmpty() ? 0 : where % bytes.size();
    const qsizetype length = 1 + uchar(byte);
    switch (what % 6) {
    case 0:
        bytes.isEmpty() ? bytes.append(byte) : bytes.replace(at, 1, QByteArray(1, byte));
        break;
    case 1:
        bytes.isEmpty() ? bytes.append(byte) : bytes.replace(at, 1, QByteArray(1, char(bytes.at(at) ^ byte)));
        break;
    case 2:
        bytes.insert(at, byte);
        break;
    case 3:
        bytes.truncate(at);
        break;
    case 4:
        bytes.remove(at, length);
        break;
    default:
        bytes.insert(at, bytes.mid(at, length));
    }
}

bool isSame(const QUORTerrainBlock& left, const QUORTerrainBlock& right) {
    const auto* points = static_cast<const char*>(left.mesh->GetPoints()->GetVoidPointer(0));
    const auto* pixels = static_cast<const char*>(left.texture->GetScalarPointer());
    return left.mesh->GetNumberOfPoints() == right.mesh->GetNumberOfPoints() &&
           std::memcmp(points, right.mesh->GetPoints()->GetVoidPointer(0),
                       3 * sizeof(float) * QUORTerrainBlock::POINTS) == 0 &&
           std::memcmp(pixels, right.texture->GetScalarPointer(),
                       3UL * QUORTerrainBlock::TEXTURE_SIDE * QUORTerrainBlock::TEXTURE_SIDE) == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static const Block good;
    std::array<QByteArray, 2> files = good.files;
    for (std::size_t i = 0; i + CHANGE_BYTES <= size && i < 64 * CHANGE_BYTES; i += CHANGE_BYTES) {
        quint32 where = 0;
        std::memcpy(&where, data + i + 2, sizeof where);
        change(files[data[i] % 2], data[i + 1], where, char(data[i + 6]));
    }
    const QString path = FuzzScratch::instance().write(QStringLiteral("damaged/block"), files[0]);
    FuzzScratch::instance().write(QStringLiteral("damaged/block.png"), files[1]);
    QUORTerrainFile tile(QUORCoordinate(47.0, 8.0));
    const bool loaded = tile.loadCachedData(good.projection, path);
    FUZZ_REQUIRE(loaded ? isSame(tile.getBlock(), good.tile.getBlock()) : !tile.getCacheError().isEmpty());
    FUZZ_REQUIRE(loaded || files != good.files);
    return 0;
}
