// SPDX-License-Identifier: MIT
#include "QUORTerrainFile.h"

#include "QUORAssert.h"
#include "QUORDtedLayout.h"
#include "QUORLog.h"
#include "QUORTerrainBlockFile.h"
#include "QUORTerrainColors.h"
#include "QUORTerrainGrid.h"
#include "QUORTerrainMesh.h"

#include <vtkImageData.h>
#include <vtkPolyData.h>

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

namespace {

constexpr int SRTM1_POSTS = 3601;
constexpr int SRTM3_POSTS = 1201;
constexpr int THINNING = (QUORTerrainGrid::REDUCED_SIDE - 1) / (QUORTerrainBlock::SIDE - 1);
/// Tenths of an arc second in a degree.
constexpr double INTERVALS_PER_DEGREE = 36000.0;

const std::array DTED1_SUFFIXES{QStringLiteral(".dt1"), QStringLiteral(".Dt1"), QStringLiteral(".dT1")};
const std::array SRTM_SUFFIXES{QStringLiteral(".hgt"), QStringLiteral(".Hgt"), QStringLiteral(".HGT")};
constexpr std::array TYPE_TEXTS{"UNKNOWN", "EMPTY", "DTED1", "SRTM1", "SRTM3"};

template <class Suffixes>
bool hasSuffix(const QString& name, const Suffixes& suffixes) {
    return std::any_of(suffixes.begin(), suffixes.end(),
                       [&](const QString& suffix) { return name.endsWith(suffix); });
}

constexpr qint64 srtmBytes(int posts) {
    return qint64(posts) * posts * 2;
}

void logFailure(const char* method, const QString& text) {
    QUORLog::Instance().logError(QLatin1String("QUORTerrainFile::") + QLatin1String(method) +
                                 QLatin1String("(): ") + text);
}

std::optional<int> readNumber(const QByteArray& label, int offset, int length) {
    bool good = false;
    const QByteArray digits = label.mid(offset, length);
    const int number = digits.toInt(&good);
    return good && number >= 0 ? std::optional(number) : std::nullopt;
}

std::optional<int> readNumber(const QByteArray& label, const QUORDtedLayout::Field& field) {
    return readNumber(label, field.offset, field.length);
}

/// An angle as DDDMMSSH.
std::optional<double> readAngle(const QByteArray& label, const QUORDtedLayout::Field& field, char negative) {
    const std::optional<int> degrees = readNumber(label, field.offset, 3);
    const std::optional<int> minutes = readNumber(label, field.offset + 3, 2);
    const std::optional<int> seconds = readNumber(label, field.offset + 5, 2);
    if (!degrees || !minutes || !seconds) {
        return std::nullopt;
    }
    const double angle = *degrees + *minutes / 60.0 + *seconds / 3600.0;
    return label.at(field.offset + 7) == negative ? -angle : angle;
}

bool isTileOrigin(double lat, double lon) {
    return lat >= -90.0 && lat <= 89.0 && lon >= -180.0 && lon <= 180.0;
}

/// The signed angle of a letter and degrees; 0 for another letter.
double signedAngle(const QString& letter, const QString& degrees, QChar positive, QChar negative) {
    const QChar hemisphere = letter.at(0).toUpper();
    const int sign = hemisphere == positive ? 1 : hemisphere == negative ? -1 : 0;
    return sign * degrees.toDouble();
}

/// The whole file, or nothing when it does not have the size that its header promised any more.
std::optional<QByteArray> readWhole(const QString& fileName, const char* method, qint64 size) {
    QFile file(fileName);
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly)) {
        logFailure(method, QStringLiteral("Accessing file failed."));
        QUORLog::Instance().logError(QStringLiteral("filename: ") + fileName);
        return std::nullopt;
    }
    const QByteArray bytes = file.read(size + 1);
    if (!QUOR_VERIFY(bytes.size() == size)) {
        logFailure(method, QStringLiteral("file not correct size: ") + fileName);
        return std::nullopt;
    }
    return bytes;
}

} // namespace

QUORTerrainFile::QUORTerrainFile(const QUORCoordinate& origin) : _type(Empty), _origin(origin) {}

QUORTerrainFile::QUORTerrainFile(const QString& fileName) : _fileName(fileName) {}

QUORTerrainFile::~QUORTerrainFile() = default;

bool QUORTerrainFile::loadFileInfo() {
    _valid = (hasSuffix(_fileName, DTED1_SUFFIXES) && loadHeadersDTED1()) ||
             (hasSuffix(_fileName, SRTM_SUFFIXES) && loadHeadersSRTM());
    return _valid;
}

bool QUORTerrainFile::loadHeadersDTED1() {
    const QString error = readHeadersDTED1();
    if (!error.isEmpty()) {
        logFailure("loadHeadersDTED1", error + _fileName);
        logFailure("loadHeadersDTED1", QStringLiteral("FAILED!"));
    }
    return error.isEmpty();
}

QString QUORTerrainFile::readHeadersDTED1() {
    QFile file(_fileName);
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly)) {
        return QStringLiteral("file not available: ");
    }
    if (file.size() != QUORDtedLayout::FILE_BYTES) {
        return QStringLiteral("file not correct size: ");
    }
    const QByteArray uhl = file.read(QUORDtedLayout::UHL_BYTES);
    if (uhl.size() != QUORDtedLayout::UHL_BYTES) {
        return QStringLiteral("Reading DTED1 UHL header failed: ");
    }
    const QByteArray dsi = file.read(QUORDtedLayout::DSI_BYTES);
    if (dsi.size() != QUORDtedLayout::DSI_BYTES) {
        return QStringLiteral("Readinng DTED1 DSI header failed: ");
    }
    return uhl.startsWith("UHL") && dsi.startsWith("DSI") && takeUserHeaderLabel(uhl)
               ? QString()
               : QStringLiteral("DTED1 file headers not recognized: ");
}

bool QUORTerrainFile::takeUserHeaderLabel(const QByteArray& uhl) {
    const std::optional<double> lon = readAngle(uhl, QUORDtedLayout::LON_ORIGIN, 'W');
    const std::optional<double> lat = readAngle(uhl, QUORDtedLayout::LAT_ORIGIN, 'S');
    const std::optional<int> lonInterval = readNumber(uhl, QUORDtedLayout::LON_INTERVAL);
    const std::optional<int> latInterval = readNumber(uhl, QUORDtedLayout::LAT_INTERVAL);
    // The records that follow have this size whatever the label claims.
    if (!lon || !lat || !isTileOrigin(*lat, *lon) || !lonInterval || !latInterval ||
        readNumber(uhl, QUORDtedLayout::LON_LINES) != QUORDtedLayout::POSTS ||
        readNumber(uhl, QUORDtedLayout::LAT_POINTS) != QUORDtedLayout::POSTS) {
        return false;
    }
    _type = Dted1;
    _origin = QUORCoordinate(*lat, *lon);
    _lonInterval = *lonInterval / INTERVALS_PER_DEGREE;
    _latInterval = *latInterval / INTERVALS_PER_DEGREE;
    _lonLines = QUORDtedLayout::POSTS;
    _latPoints = QUORDtedLayout::POSTS;
    return true;
}

bool QUORTerrainFile::loadHeadersSRTM() {
    constexpr auto METHOD = "loadHeadersSRTM";
    QFile file(_fileName);
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly)) {
        logFailure(METHOD, QStringLiteral("file not available: ") + _fileName);
        return false;
    }
    const qint64 size = file.size();
    if (size != srtmBytes(SRTM3_POSTS) && size != srtmBytes(SRTM1_POSTS)) {
        logFailure(METHOD, QStringLiteral("file not correct size: ") + _fileName);
        return false;
    }
    static const QRegularExpression location(QStringLiteral("^(.)\\s*([+-]?\\d+)(.)\\s*([+-]?\\d+)"));
    const QRegularExpressionMatch match = location.match(QFileInfo(_fileName).baseName());
    const double lat = match.hasMatch() ? signedAngle(match.captured(1), match.captured(2), 'N', 'S') : NAN;
    const double lon = match.hasMatch() ? signedAngle(match.captured(3), match.captured(4), 'E', 'W') : NAN;
    if (!isTileOrigin(lat, lon)) {
        logFailure(METHOD, QStringLiteral("Parsing location from filename failed: ") + _fileName);
        return false;
    }
    _type = size == srtmBytes(SRTM1_POSTS) ? Srtm1 : Srtm3;
    _origin = QUORCoordinate(lat, lon);
    _lonLines = _latPoints = _type == Srtm1 ? SRTM1_POSTS : SRTM3_POSTS;
    _lonInterval = _latInterval = 1.0 / (_latPoints - 1);
    return true;
}

std::optional<QUORTerrainGrid> QUORTerrainFile::loadOriginalData() const {
    std::optional<QByteArray> bytes;
    switch (_type) {
    case Dted1:
        bytes = readWhole(_fileName, "loadOriginalDataDTED1", QUORDtedLayout::FILE_BYTES);
        return bytes ? std::optional(QUORTerrainGrid::reduceDted1(*bytes)) : std::nullopt;
    case Srtm1:
    case Srtm3:
        bytes = readWhole(_fileName, "loadOriginalDataSRTM", srtmBytes(_latPoints));
        return bytes ? std::optional(QUORTerrainGrid::reduceSrtm(*bytes, _latPoints)) : std::nullopt;
    case Unknown:
    case Empty:
        break;
    }
    return std::nullopt;
}

bool QUORTerrainFile::convertData(const QUORGeoProjection::CPtr& projection, const QString& cacheFileName) {
    _cacheError.clear();
    _block = QUORTerrainBlock();
    if (!projection || !projection->isReady()) {
        logFailure("convertData", QStringLiteral("no projection for ") + getBlockName());
        return false;
    }
    const bool isSea = _type == Empty;
    const std::optional<QUORTerrainGrid> grid = isSea ? std::nullopt : loadOriginalData();
    if (!isSea && !grid) {
        return false;
    }
    _block.mesh = QUORTerrainMesh::make(
        isSea ? QUORTerrainGrid(QUORTerrainBlock::SIDE) : grid->thin(THINNING), _origin, *projection);
    if (!_block.mesh) {
        logFailure("convertData", QStringLiteral("the projection cannot place ") + getBlockName());
        return false;
    }
    _block.texture = isSea ? QUORTerrainColors::makeSeaTexture() : QUORTerrainColors::makeTexture(*grid);
    if (!cacheFileName.isEmpty()) {
        _cacheError = QUORTerrainBlockFile::write(cacheFileName, _block, _origin, *projection);
    }
    return true;
}

bool QUORTerrainFile::loadCachedData(const QUORGeoProjection::CPtr& projection,
                                     const QString& cacheFileName) {
    _cacheError = QUORTerrainBlockFile::read(cacheFileName, _origin, *projection, _block);
    return _cacheError.isEmpty();
}

vtkSmartPointer<vtkImageData> QUORTerrainFile::takeTexture() {
    return std::exchange(_block.texture, nullptr);
}

bool QUORTerrainFile::contains(const QUORCoordinate& location) const {
    const double lat = location.getLat() - _origin.getLat();
    const double lon = location.getLon() - _origin.getLon();
    return lat >= 0.0 && lat < 1.0 && lon >= 0.0 && lon < 1.0;
}

double QUORTerrainFile::getElevationAtLocation(const QUORCoordinate& location) const {
    if (!_block.mesh || !contains(location)) {
        return 0.0;
    }
    constexpr int SIDE = QUORTerrainBlock::SIDE;
    const auto column = vtkIdType((location.getLon() - _origin.getLon()) * SIDE);
    const auto row = vtkIdType((location.getLat() - _origin.getLat()) * SIDE);
    const vtkIdType index = row * SIDE + column;
    return index < QUORTerrainBlock::POINTS ? _block.mesh->GetPoint(index)[2] : 0.0;
}

QString QUORTerrainFile::getBlockName() const {
    const auto degrees = [](double angle) { return QString::number(std::abs(int(angle))); };
    return getTypeAsString() + QLatin1Char('_') + _origin.getLatitudeMark() + degrees(_origin.getLat()) +
           _origin.getLongitudeMark() + degrees(_origin.getLon());
}

QString QUORTerrainFile::getTypeAsString() const {
    return QLatin1String(TYPE_TEXTS.at(_type));
}

void QUORTerrainFile::printDebug() const {
    QUORLog& log = QUORLog::Instance();
    const auto number = [](double value) { return QString::number(value); };
    log.logDebug(QStringLiteral("QUORTerrainFile: ") + getBlockName());
    log.logDebug(QStringLiteral("  fileName=") + _fileName);
    log.logDebug(QStringLiteral("  valid=") + number(_valid ? 1 : 0));
    log.logDebug(QStringLiteral("  origin=") + number(_origin.getLat()) + QStringLiteral(", ") +
                 number(_origin.getLon()));
    log.logDebug(QStringLiteral("  lonInterval=") + number(_lonInterval));
    log.logDebug(QStringLiteral("  latInterval=") + number(_latInterval));
    log.logDebug(QStringLiteral("  lonLines=") + number(_lonLines));
    log.logDebug(QStringLiteral("  latPoints=") + number(_latPoints));
}
