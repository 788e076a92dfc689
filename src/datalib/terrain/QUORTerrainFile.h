// SPDX-License-Identifier: MIT
#pragma once

#include "QUORCoordinate.h"
#include "QUORGeoProjection.h"
#include "QUORTerrainBlock.h"
#include "QUORTerrainGrid.h"

#include <QString>

#include <memory>
#include <optional>

/// One tile of elevation posts, one degree of latitude by one degree of longitude: a DTED level 1 or SRTM
/// file, or an empty (flat) tile. Reads the file's header, converts its posts once into a cached block (a
/// mesh and a texture) and serves that block. Used by one thread at a time; a copy shares nothing that
/// changes, so each terrain set loads copies of its own.
class QUORTerrainFile {
public:
    using Ptr = std::shared_ptr<QUORTerrainFile>;
    using CPtr = std::shared_ptr<const QUORTerrainFile>;

    enum Type { Unknown = 0, Empty = 1, Dted1 = 2, Srtm1 = 3, Srtm3 = 4 };

    /// An empty tile whose south-west corner is the coordinate.
    explicit QUORTerrainFile(const QUORCoordinate& origin);
    /// A tile of type Unknown until `loadFileInfo`.
    explicit QUORTerrainFile(const QString& fileName);
    virtual ~QUORTerrainFile();
    QUORTerrainFile(const QUORTerrainFile&) = default;
    QUORTerrainFile& operator=(const QUORTerrainFile&) = default;

    /// Reads the header by the file name's suffix; false, with an error line, when it is no usable tile.
    bool loadFileInfo();

    /// Makes the block from the posts and keeps it loaded, then writes it under the cache name (no writing
    /// for an empty name). True when the block was made; `getCacheError` tells whether it was also written.
    bool convertData(const QUORGeoProjection::CPtr& projection, const QString& cacheFileName);
    /// Loads a block that `convertData` wrote with an equal projection. False when the cache holds no whole
    /// one; the reason is in `getCacheError`.
    bool loadCachedData(const QUORGeoProjection::CPtr& projection, const QString& cacheFileName);
    /// Why the cache could not be read or written the last time; empty when it could.
    QString getCacheError() const { return _cacheError; }

    /// Hands the block's texture over to whoever draws it.
    vtkSmartPointer<vtkImageData> takeTexture();

    /// Metres above the sea in the loaded block; 0 without one or outside [origin, origin + 1).
    double getElevationAtLocation(const QUORCoordinate& location) const;
    /// Whether the one-degree square [origin, origin + 1) holds the location.
    bool contains(const QUORCoordinate& location) const;

    /// Type, "_" and the whole degrees of the origin, such as DTED1_N47E8.
    QString getBlockName() const;
    QString getTypeAsString() const;
    void printDebug() const;

    QString getFileName() const { return _fileName; }
    bool isValid() const { return _valid; }
    Type getType() const { return _type; }
    QUORCoordinate getOrigin() const { return _origin; }
    double getLonInterval() const { return _lonInterval; }
    double getLatInterval() const { return _latInterval; }
    int getLonLines() const { return _lonLines; }
    int getLatPoints() const { return _latPoints; }
    /// Empty members until a block was converted or loaded.
    const QUORTerrainBlock& getBlock() const { return _block; }

private:
    bool loadHeadersDTED1();
    /// The reason that no label was accepted; empty on success.
    QString readHeadersDTED1();
    bool takeUserHeaderLabel(const QByteArray& uhl);
    bool loadHeadersSRTM();
    std::optional<QUORTerrainGrid> loadOriginalData() const;

    QString _fileName;
    bool _valid = false;
    Type _type = Unknown;
    QUORCoordinate _origin;
    double _lonInterval = 0.0;
    double _latInterval = 0.0;
    int _lonLines = 0;
    int _latPoints = 0;
    QUORTerrainBlock _block;
    QString _cacheError;
};
