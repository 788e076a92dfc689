// SPDX-License-Identifier: MIT
#include "QUORFile.h"

#include "QUORAssert.h"
#include "QUORGeoProjection.h"
#include "QUORLog.h"

#include <QFile>
#include <QFileInfo>
#include <QMutex>
#include <QMutexLocker>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <fcntl.h>
#include <limits>
#include <map>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>

using namespace QUORProductHeader;

namespace {

constexpr int SECONDS_OF_DAY = 86400;
constexpr quint32 DEFAULT_EARTH_RADIUS = 637100000;
constexpr double SMALLEST_EARTH_RADIUS = 6.0e6;
constexpr double LARGEST_EARTH_RADIUS = 6.6e6;
constexpr double SMALLEST_INVERSE_FLATTENING = 100.0;
constexpr double LARGEST_EXTENT = 5.0e6; ///< metres, far beyond any radar's range
constexpr double EXACT_MAP = 0.005;
constexpr std::size_t SMALLEST_PURGE = 64;

class Descriptor {
public:
    explicit Descriptor(const QString& path)
        : _fd(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)),
          _error(_fd < 0 ? errno : 0) {}
    ~Descriptor() {
        if (_fd >= 0) {
            ::close(_fd);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    /// The system's error number, 0 when it worked.
    int describe(struct stat& info) const { return _error != 0 || ::fstat(_fd, &info) == 0 ? _error : errno; }
    /// How many bytes there were; negative when reading failed.
    qint64 read(char* target, qint64 length) const {
        qint64 total = 0;
        while (total < length) {
            const ssize_t count = ::read(_fd, target + total, size_t(length - total));
            if (count > 0) {
                total += count;
            } else if (count == 0) {
                break;
            } else if (errno != EINTR) {
                return -1;
            }
        }
        return total;
    }

private:
    int _fd;
    int _error;
};

/// Failures that say nothing about the file and may be over the next time.
bool isTransient(int error) {
    constexpr std::array transient{EIO, ESTALE, EMFILE, ENFILE, EINTR, ENOMEM};
    return std::find(transient.begin(), transient.end(), error) != transient.end();
}

bool fileIsValidProductFile(const PHD& phd) {
    return HEADER_ID(phd) == HEADER_ID_VALUE && PRODUCT_ID(phd) == PRODUCT_ID_VALUE;
}

qint64 getTotalFileSizeFromProductHeader(const PHD& phd) {
    return QUOR_VERIFY(fileIsValidProductFile(phd)) ? TOTAL_SIZE(phd) : 0;
}

qint64 getDataSizeFromProductHeader(const PHD& phd) {
    return QUOR_VERIFY(fileIsValidProductFile(phd)) ? qint64(TOTAL_SIZE(phd)) - qint64(phd.size()) : 0;
}

qint64 getItemCountFromProductHeader(const PHD& phd) {
    if (!QUOR_VERIFY(fileIsValidProductFile(phd))) {
        return 0;
    }
    const qint64 plane = qint64(X_POINTS(phd)) * Y_POINTS(phd);
    qint64 count = 0;
    return __builtin_mul_overflow(plane, qint64(Z_POINTS(phd)), &count) ? std::numeric_limits<qint64>::max()
                                                                        : count;
}

QString siteFromProductHeader(const PHD& phd) {
    if (!QUOR_VERIFY(fileIsValidProductFile(phd))) {
        return {};
    }
    const char* first = phd.data() + SITE_OFFSET;
    const char* last = std::find(first, first + SITE_LENGTH, '\0');
    QString site = QString::fromLatin1(first, last - first).simplified().toUpper();
    std::replace_if(
        site.begin(), site.end(),
        [](QChar c) { return c == QLatin1Char('/') || c.category() == QChar::Other_Control; },
        QLatin1Char('_'));
    return site;
}

const ProjectionRow* findProjection(int code) {
    const auto row = std::find_if(PROJECTIONS.begin(), PROJECTIONS.end(),
                                  [code](const ProjectionRow& r) { return r.code == code; });
    return row == PROJECTIONS.end() ? nullptr : row;
}

/// The projection of those arguments, shared by all who hold one: a directory has thousands of files of
/// few sites.
QUORGeoProjection::CPtr sharedProjection(const QString& name, const QUORCoordinate& site, double radius,
                                         double inverseFlattening) {
    using Key = std::tuple<QString, double, double, double, double>;
    static QMutex mutex;
    static std::map<Key, std::weak_ptr<const QUORGeoProjection>> projections;
    static std::size_t purgeAt = SMALLEST_PURGE;

    const Key key{name, site.getLat(), site.getLon(), radius, inverseFlattening};
    const QMutexLocker lock(&mutex);
    if (const auto found = projections.find(key); found != projections.end()) {
        if (auto projection = found->second.lock()) {
            return projection;
        }
    }
    // Only after doubling: to look through all of them for every new one takes seconds at 30,000.
    if (projections.size() >= purgeAt) {
        std::erase_if(projections, [](const auto& entry) { return entry.second.expired(); });
        purgeAt = std::max(SMALLEST_PURGE, 2 * projections.size());
    }
    auto projection = std::make_shared<const QUORGeoProjection>(name, site, radius, inverseFlattening);
    projections[key] = projection;
    return projection;
}

double extentM(int points, int step) {
    return (double(points) - 1.0) * step * 0.01;
}

double middleM(int points, int step, int radar) {
    const double place = radar / 1000.0;
    const bool isInside = place >= 0.0 && place <= points - 1.0;
    return isInside ? (0.5 * points - place) * step * 0.01 : 0.0;
}

/// Half a step is what the two usual middles, of the points and of the extent, lie apart.
double extentAroundM(double extent, double middle, int step) {
    return extent + 2.0 * std::max(0.0, std::abs(middle) - 0.5 * step * 0.01);
}

bool isUsableExtent(int points, int step) {
    return points >= 1 && (points == 1 || (step > 0 && extentM(points, step) <= LARGEST_EXTENT));
}

} // namespace

QUORFile::QUORFile(const QString& path)
    : _path(path.isEmpty() ? path : QFileInfo(path).absoluteFilePath()), _status(readHeader(path)) {
    if (isValid()) {
        _projection = sharedProjection(getProjectionTypeProj4(), getSiteCoordinates(), getEarthRadius(),
                                       getEarthInvFlattening());
    }
}

QUORFile::~QUORFile() = default;

bool QUORFile::canBeRead(const QString& path) {
    char byte = 0;
    return Descriptor(path).read(&byte, 1) >= 0;
}

bool QUORFile::isUnchanged() const {
    const Descriptor file(_path);
    struct stat info {};
    PHD header{};
    return isValid() && file.describe(info) == 0 && S_ISREG(info.st_mode) &&
           info.st_size >= getTotalFileSize() && file.read(header.data(), getHeaderSize()) >= 0 &&
           header == _header;
}

bool QUORFile::isSameIssue(const QUORFile& other) const {
    return _header == other._header && !_stamp.isWrittenSince(other._stamp);
}

QUORFile::Status QUORFile::readHeader(const QString& path) {
    const Descriptor file(_path);
    struct stat info {};
    const int error = file.describe(info);
    if (error == ENOENT || error == ENOTDIR) {
        QUORLog::Instance().logDebug(QStringLiteral("QUORFile::QUORFile(): file does not exist: ") + path);
        QUORLog::Instance().logError(QStringLiteral("QUORFile does not exist: ") + path);
        return NotReadable;
    }
    if (error != 0 || !S_ISREG(info.st_mode)) {
        QUORLog::Instance().logDebug(QStringLiteral("QUORFile::QUORFile(): Cannot open file: ") + path);
        QUORLog::Instance().logError(QStringLiteral("Cannot open QUORfile: ") + path);
        return isTransient(error) ? NotReadable : CannotOpen;
    }
    const qint64 bytesRead = file.read(_header.data(), getHeaderSize());
    if (bytesRead < 0 || file.describe(info) != 0) {
        QUORLog::Instance().logDebug(QStringLiteral("QUORFile::QUORFile(): Cannot read file: ") + path);
        return NotReadable;
    }
    _stamp = QUORFileStamp(info);
    // What a short read did not supply cannot be counted on, although the file may have grown since.
    return classify(bytesRead, bytesRead < getHeaderSize() ? bytesRead : qint64(info.st_size));
}

QUORFile::Status QUORFile::classify(qint64 bytesRead, qint64 fileSize) const {
    QUORLog& log = QUORLog::Instance();
    if (bytesRead >= IDENTIFIED_SIZE && fileIsValidProductFile(_header)) {
        const qint64 expected = TOTAL_SIZE(_header);
        if (fileSize >= expected) {
            return Valid;
        }
        log.logDebug(QStringLiteral("DATA FILE SIZE SMALLER THAN SHOULD: ") + getFolder());
        log.logDebug(QStringLiteral("Expected size: ") + QString::number(expected));
        log.logDebug(QStringLiteral("Real size: ") + QString::number(fileSize));
        return Incomplete;
    }
    if (bytesRead < getHeaderSize()) {
        return NoData;
    }
    log.logDebug(QStringLiteral("DATA LOOKS INVALID: ") + getFolder());
    log.logDebug(QStringLiteral("File size: ") + QString::number(fileSize));
    return Invalid;
}

QString QUORFile::getGridError() const {
    if (!isValid()) {
        return QStringLiteral("not a complete product file");
    }
    if (getXPoints() < 2 || getYPoints() < 2 || !isUsableExtent(getXPoints(), getXScale()) ||
        !isUsableExtent(getYPoints(), getYScale()) || !isUsableExtent(getZPoints(), getZScale())) {
        return QStringLiteral("impossible number of grid points or grid step");
    }
    if (getItemCount() > getDataSize() / getItemSize()) {
        return QStringLiteral("the total size is smaller than the grid");
    }
    const QUORDataType type = getDataType();
    if (type.getItemSize() != 0 && type.getItemSize() != getItemSize()) {
        return QStringLiteral("element size and data type disagree");
    }
    if (!(type.getMinDisplayValue() < type.getMaxDisplayValue())) {
        return QStringLiteral("impossible Nyquist velocity");
    }
    if (!getDataTime().isValid()) {
        return QStringLiteral("impossible data time");
    }
    if (!_projection->isReady() || getEarthRadius() < SMALLEST_EARTH_RADIUS ||
        getEarthRadius() > LARGEST_EARTH_RADIUS || getEarthInvFlattening() < SMALLEST_INVERSE_FLATTENING) {
        return QStringLiteral("unusable map projection or earth size");
    }
    return {};
}

QString QUORFile::getSite() const {
    return siteFromProductHeader(_header);
}

QString QUORFile::getProduct() const {
    const auto row = std::find_if(PRODUCTS.begin(), PRODUCTS.end(),
                                  [this](const ProductRow& r) { return r.code == PRODUCT_CODE(_header); });
    return row == PRODUCTS.end() ? QString() : QString::fromLatin1(row->name);
}

QString QUORFile::getConfiguration() const {
    return QUORDataType(getRawType()).getConfiguration();
}

QString QUORFile::getTime() const {
    return getName().mid(3, 12).toUpper();
}

QString QUORFile::getPath() const {
    return _path;
}

QString QUORFile::getName() const {
    return nameOf(_path);
}

QString QUORFile::nameOf(const QString& path) {
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

QString QUORFile::getBaseName() const {
    return getName().section(QLatin1Char('.'), 0, 0);
}

QString QUORFile::getFolder() const {
    return QFileInfo(_path).absolutePath();
}

int QUORFile::getXPoints() const {
    return X_POINTS(_header);
}

int QUORFile::getYPoints() const {
    return Y_POINTS(_header);
}

int QUORFile::getZPoints() const {
    return Z_POINTS(_header);
}

int QUORFile::getXScale() const {
    return X_STEP(_header);
}

int QUORFile::getYScale() const {
    return Y_STEP(_header);
}

int QUORFile::getZScale() const {
    return Z_STEP(_header);
}

int QUORFile::getXRadar() const {
    return X_RADAR(_header);
}

int QUORFile::getYRadar() const {
    return Y_RADAR(_header);
}

int QUORFile::getZRadar() const {
    return Z_RADAR(_header);
}

int QUORFile::getDimensions() const {
    return getZPoints() > 1 ? 3 : 2;
}

double QUORFile::getWidthM() const {
    return extentM(getXPoints(), getXScale());
}

double QUORFile::getLengthM() const {
    return extentM(getYPoints(), getYScale());
}

double QUORFile::getHeightM() const {
    return extentM(getZPoints(), getZScale());
}

QUORPoint3D QUORFile::getMiddleM() const {
    return {middleM(getXPoints(), getXScale(), getXRadar()), middleM(getYPoints(), getYScale(), getYRadar()),
            0.0};
}

double QUORFile::getWidthAroundRadarM() const {
    return extentAroundM(getWidthM(), getMiddleM().x, getXScale());
}

double QUORFile::getLengthAroundRadarM() const {
    return extentAroundM(getLengthM(), getMiddleM().y, getYScale());
}

QUORPoint3D QUORFile::getPointM(double x, double y, double z) const {
    return {x * getXScale() * 0.01, y * getYScale() * 0.01, z * getZScale() * 0.01};
}

double QUORFile::getPointElevationM(int, int, int z) const {
    return double(z) * getZScale() * 0.01;
}

int QUORFile::getGroundElevation() const {
    return GROUND_ELEVATION(_header);
}

int QUORFile::getRadarElevation() const {
    return GROUND_ELEVATION(_header) + RADAR_HEIGHT(_header);
}

double QUORFile::getEarthRadius() const {
    const quint32 centimetres = EARTH_RADIUS(_header);
    return (centimetres == 0 ? DEFAULT_EARTH_RADIUS : centimetres) * 0.01;
}

double QUORFile::getEarthInvFlattening() const {
    const quint32 millionths = INVERSE_FLATTENING(_header);
    return millionths == 0 ? double(std::numeric_limits<float>::max()) : millionths * 1e-6;
}

QString QUORFile::getProjectionTypeProj4() const {
    const ProjectionRow* row = findProjection(PROJECTION(_header));
    return row == nullptr ? QString() : QString::fromLatin1(row->libraryName);
}

QString QUORFile::getProjection() const {
    const ProjectionRow* row = findProjection(PROJECTION(_header));
    return row == nullptr ? QString() : QString::fromLatin1(row->name);
}

QUORCoordinate QUORFile::getSiteCoordinates() const {
    return QUORCoordinate(LATITUDE(_header), LONGITUDE(_header));
}

double QUORFile::getMapScale() const {
    const double scale = _projection ? _projection->getScaleAtReference() : 1.0;
    return std::abs(scale - 1.0) < EXACT_MAP ? 1.0 : scale;
}

int QUORFile::getRawType() const {
    return DATA_TYPE(_header);
}

QUORDataType QUORFile::getDataType() const {
    return QUORDataType(getRawType(), PRF(_header), PRF_MODE(_header), WAVELENGTH(_header),
                        PULSE_CODE(_header));
}

QDateTime QUORFile::getDataTime() const {
    const QDate date(YEAR(_header), MONTH(_header), DAY(_header));
    const quint32 seconds = SECONDS(_header);
    if (!date.isValid() || seconds >= SECONDS_OF_DAY) {
        return {};
    }
    return QDateTime(date, QTime::fromMSecsSinceStartOfDay(int(seconds) * 1000), Qt::UTC);
}

qint64 QUORFile::getTotalFileSize() const {
    return getTotalFileSizeFromProductHeader(_header);
}

qint64 QUORFile::getDataSize() const {
    return getDataSizeFromProductHeader(_header);
}

qint64 QUORFile::getItemCount() const {
    return getItemCountFromProductHeader(_header);
}

int QUORFile::getItemSize() const {
    return getDataSize() == getItemCount() ? 1 : 2;
}
