// SPDX-License-Identifier: MIT
#pragma once

#include "QUORCoordinate.h"
#include "QUORDataType.h"
#include "QUORFileStamp.h"
#include "QUORPoint3D.h"
#include "QUORProductHeader.h"

#include <QDateTime>
#include <QString>

#include <memory>

class QUORGeoProjection;

/// One product file, checked and described from its 640-byte header when it is constructed. It does not
/// follow later changes on disk, keeps no descriptor and never changes: share it between threads freely.
/// The data grid behind the header is read by those who draw it; a header is only well formed, not
/// sensible, until `getGridError` has been asked.
class QUORFile {
public:
    using Ptr = std::shared_ptr<QUORFile>;
    using CPtr = std::shared_ptr<const QUORFile>;

    enum Status {
        Valid = 0,       ///< well-formed header, and the file is at least as long as it says
        NotReadable = 1, ///< does not exist, or failed for a reason that may pass
        Incomplete = 2,  ///< well-formed header of a longer file
        NoData = 3,      ///< empty, or shorter than a header without the start of one
        Invalid = 4,     ///< not a product
        CannotOpen = 6   ///< exists, but is no regular file or may not be read
    };

    /// Reads and checks the header; failures are logged and stand in the status. Never blocks on a pipe.
    explicit QUORFile(const QString& path);
    virtual ~QUORFile();
    QUORFile(const QUORFile&) = delete;
    QUORFile& operator=(const QUORFile&) = delete;

    /// Whether the system lets bytes be read from there now, whatever they are; logs nothing.
    static bool canBeRead(const QString& path);

    bool isValid() const { return _status == Valid; }
    /// Whether the path still holds this product, whole and under the same header; logs nothing.
    bool isUnchanged() const;
    Status getStatus() const { return _status; }
    /// Why no grid can be built from this file, or an empty text when one can: then the file holds all
    /// elements, points and steps are positive, element size and data type agree, the time exists, and
    /// the projection is ready and of an earth-like size.
    QString getGridError() const;

    /// Upper case; "/" and control characters are replaced by "_".
    virtual QString getSite() const;
    /// "PPI", "CAPPI", "VIL", "MAX", "SRI" or empty.
    virtual QString getProduct() const;
    /// "Z", "V", "W", "R" or null.
    virtual QString getConfiguration() const;
    /// The time key: 12 characters of the file name, after its first three, in upper case.
    virtual QString getTime() const;
    /// Absolute.
    virtual QString getPath() const;
    virtual QString getName() const;
    /// The name of a file from its path.
    static QString nameOf(const QString& path);
    /// The name up to its first dot.
    virtual QString getBaseName() const;

    // What follows is meaningful for valid files only; for others the missing header bytes are zero.

    int getXPoints() const;
    int getYPoints() const;
    int getZPoints() const;
    /// Grid steps in centimetres.
    int getXScale() const;
    int getYScale() const;
    int getZScale() const;
    /// Thousandths of a grid step from the first point.
    int getXRadar() const;
    int getYRadar() const;
    /// Thousandths of a metre above the radar elevation.
    int getZRadar() const;
    int getDimensions() const;
    /// Extents along X, Y and Z in metres.
    double getWidthM() const;
    double getLengthM() const;
    double getHeightM() const;
    /// Metres along x and y from the radar to the grid's middle, which is half the points from the first.
    /// 0 along an axis on which the header has the radar outside the grid.
    QUORPoint3D getMiddleM() const;
    /// Extents along x and y in metres of the rectangle that holds the grid and the same on the radar's other
    /// side: the grid's own for a radar in the middle.
    double getWidthAroundRadarM() const;
    double getLengthAroundRadarM() const;
    /// Metres from the first grid point.
    QUORPoint3D getPointM(double x, double y, double z) const;
    double getPointElevationM(int x, int y, int z) const;
    int getNumberElevationAngles() const { return 1; }
    /// Metres above sea level.
    int getGroundElevation() const;
    int getRadarElevation() const;

    /// Metres.
    double getEarthRadius() const;
    /// The largest single-precision number for a sphere.
    double getEarthInvFlattening() const;
    QString getProjectionTypeProj4() const;
    QString getProjection() const;
    QUORCoordinate getSiteCoordinates() const;
    /// Null unless valid; files of one site share one object.
    std::shared_ptr<const QUORGeoProjection> getGeoProjection() const { return _projection; }
    /// Metres of the map for a metre of the ground at the site; exactly 1 where they differ by less than half
    /// a per cent.
    double getMapScale() const;

    int getRawType() const;
    QUORDataType getDataType() const;
    /// UTC; an invalid time when the header holds an impossible one.
    QDateTime getDataTime() const;
    qint64 getHeaderSize() const { return qint64(_header.size()); }
    qint64 getTotalFileSize() const;
    qint64 getDataSize() const;
    /// The largest number when the product of the point counts exceeds it.
    qint64 getItemCount() const;
    int getItemSize() const;

    /// The bytes that were read, to find out whether the file on disk is still the same product.
    const PHD& getHeader() const { return _header; }
    /// Of the file when it was read; unknown when it could not be.
    const QUORFileStamp& getStamp() const { return _stamp; }
    /// Whether `other`, of the same path, is this product from the same writing.
    bool isSameIssue(const QUORFile& other) const;

private:
    Status readHeader(const QString& path);
    Status classify(qint64 bytesRead, qint64 fileSize) const;
    QString getFolder() const;

    QString _path;
    PHD _header{};
    QUORFileStamp _stamp;
    Status _status;
    std::shared_ptr<const QUORGeoProjection> _projection;
};
