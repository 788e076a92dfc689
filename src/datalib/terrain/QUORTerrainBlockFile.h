// SPDX-License-Identifier: MIT
#pragma once

#include "QUORTerrainBlock.h"

#include <QString>

class QUORCoordinate;
class QUORGeoProjection;

/// A terrain block in the cache: a mesh file of the given name, and its texture under the name + ".png".
/// The mesh file's title line holds a checksum of both, the tile's origin, and the projection with its earth,
/// so that what is cut, damaged, foreign or made for another place is never parsed, let alone shown. Several
/// processes may share a cache: each file is published whole.
namespace QUORTerrainBlockFile {

/// Makes a folder with its parents, readable by all; true when it exists afterwards.
bool makeFolder(const QString& path);

/// Writes both files. Empty on success, otherwise the reason, with nothing half-written left.
QString write(const QString& fileName, const QUORTerrainBlock& block, const QUORCoordinate& origin,
              const QUORGeoProjection& projection);

/// Reads both files. Empty on success, otherwise the reason, with `block` unchanged.
QString read(const QString& fileName, const QUORCoordinate& origin, const QUORGeoProjection& projection,
             QUORTerrainBlock& block);

} // namespace QUORTerrainBlockFile
