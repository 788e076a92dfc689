// SPDX-License-Identifier: MIT
#include "QUORTerrainDir.h"

#include "QUORAssert.h"
#include "QUORFilePublisher.h"
#include "QUORLog.h"
#include "QUORLogOnce.h"
#include "QUORTerrainBlockFile.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMutexLocker>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <mutex>
#include <system_error>

namespace {

constexpr auto CACHE_PREFIX = "TC04";
/// What is kept of earlier requests: 0.3 to 0.5 MB of memory a block, 1.2 while it is drawn.
constexpr int MAX_SETS = 16;
constexpr qsizetype MAX_KEPT_BLOCKS = 2048;
/// Files that are no tiles yet, of which the next scan asks whether they have grown.
constexpr qsizetype MAX_REMEMBERED = 1000;
/// Whole degrees that one set may cover: more is a wrong header or a site at a pole.
constexpr double MAX_TILES = 1024.0;

QString angleText(double angle, QChar positive, QChar negative) {
    return (angle < 0.0 ? negative : positive) + QString::number(std::abs(angle));
}

double normalizedLon(double lon) {
    return lon >= 180.0 ? lon - 360.0 : lon;
}

/// Degrees from west to east, across the date line where east is below west.
double lonSpan(const QUORCoordinate& southWest, const QUORCoordinate& northEast) {
    const double span = northEast.getLon() - southWest.getLon();
    return span < 0.0 ? span + 360.0 : span;
}

QByteArray fileStamp(const QString& path) {
    const QFileInfo file(path);
    return QByteArray::number(file.size()) + ' ' +
           QByteArray::number(file.lastModified().toMSecsSinceEpoch()) + ' ';
}

QByteArray namesOf(const QFileInfoList& entries) {
    QByteArray names;
    for (const QFileInfo& entry : entries) {
        names += QFile::encodeName(entry.fileName()) + '/';
    }
    return names;
}

/// An error line, once, when a configured directory cannot be listed.
bool isListable(const QString& directory) {
    if (directory.isEmpty()) {
        return false;
    }
    const QString subject = QStringLiteral("list ") + directory;
    std::error_code error;
    const std::filesystem::directory_iterator listing(QFile::encodeName(directory).toStdString(), error);
    if (!error) {
        QUORLogOnce::forget(subject);
        return true;
    }
    QUORLogOnce::logError(subject, QStringLiteral("Terrain directory ") + directory + QStringLiteral(": ") +
                                       QString::fromStdString(error.message()));
    return false;
}

QString absolutePath(const QString& path) {
    return path.isEmpty() ? path : QFileInfo(path).absoluteFilePath();
}

} // namespace

QUORTerrainDir::QUORTerrainDir(const QString& sourcePath, const QString& cachePath) {
    const QUORLogScope scope("QUORTerrainDir::QUORTerrainDir");
    setPath(sourcePath, cachePath);
}

QUORTerrainDir::~QUORTerrainDir() = default;

void QUORTerrainDir::setPath(const QString& sourcePath, const QString& cachePath) {
    QString expanded = cachePath;
    if (cachePath.startsWith(QLatin1Char('~'))) {
        expanded.replace(QLatin1Char('~'), QDir::homePath());
    }
    QUORLog::Instance().logDebug(QStringLiteral("srcPath=") + sourcePath);
    QUORLog::Instance().logDebug(QStringLiteral("dstPath=") + expanded);
    _sourcePath = absolutePath(sourcePath);
    _cachePath = absolutePath(expanded);
    createCache();
}

void QUORTerrainDir::createCache() const {
    if (_cachePath.isEmpty()) {
        return;
    }
    if (QFileInfo(_cachePath).isDir()) {
        QUORFilePublisher::removeLeftovers(_cachePath);
        return;
    }
    QUORLog::Instance().logDebug(QStringLiteral("Creating cache directory for converted terrain files."));
    if (!QUORTerrainBlockFile::makeFolder(_cachePath)) {
        QUORLog::Instance().logWarning(
            QStringLiteral("QUORTerrainDir::createCache(): cannot create the terrain cache: ") + _cachePath);
    }
}

void QUORTerrainDir::clearCache() const {
    if (_cachePath.isEmpty() || !QFileInfo(_cachePath).isDir()) {
        return;
    }
    QUORLog::Instance().logDebug(QStringLiteral("Clearing cache directory."));
    QDir cache(_cachePath);
    for (const QString& name : cache.entryList(QDir::Files | QDir::Hidden)) {
        cache.remove(name);
    }
}

void QUORTerrainDir::scanFiles() {
    const QUORLogScope scope("QUORTerrainDir::scanFiles");
    QUORLog& log = QUORLog::Instance();
    resetFiles();
    if (!isListable(_sourcePath)) {
        return;
    }
    const QFileInfoList entries = listSource();
    QByteArray stamp = namesOf(entries);
    QElapsedTimer timer;
    timer.start();
    log.logDebug(QStringLiteral("Scanning ") + QString::number(entries.size()) +
                 QStringLiteral(" terrain files.."));
    QMap<QString, QUORTerrainFile::CPtr> tiles;
    QStringList skipped;
    for (const QFileInfo& entry : entries) {
        const QString path = entry.canonicalFilePath();
        const auto tile = std::make_shared<QUORTerrainFile>(path.isEmpty() ? entry.filePath() : path);
        const QByteArray stampBefore = fileStamp(tile->getFileName());
        if (tile->loadFileInfo()) {
            tiles.insert(getFileKey(tile->getOrigin()), tile);
            continue;
        }
        log.logError(QStringLiteral("Skipped terrain file: ") + tile->getFileName());
        if (skipped.size() < MAX_REMEMBERED) {
            skipped.append(tile->getFileName());
            stamp += stampBefore;
        }
    }
    const double seconds = double(timer.nsecsElapsed()) * 1e-9;
    const auto text = [](double value) { return QString::number(value, 'f', 3); };
    log.logDebug(QString::number(entries.size()) + QStringLiteral(" files scanned in ") + text(seconds) +
                 QStringLiteral("s (") + text(seconds / double(std::max<qsizetype>(entries.size(), 1))) +
                 QStringLiteral(" s/file)"));
    const QMutexLocker lock(&_mutex);
    _tiles = tiles;
    _skipped = skipped;
    _stamp = stamp;
    _sets.clear();
}

bool QUORTerrainDir::hasTilesOf(const QUORTerrainDir& other) const {
    const auto known = other.getTiles();
    const auto tiles = getTiles();
    return tiles.size() == known.size() &&
           std::equal(tiles.cbegin(), tiles.cend(), known.cbegin(), [](const auto& a, const auto& b) {
               return a->getFileName() == b->getFileName() && a->getOrigin() == b->getOrigin();
           });
}

void QUORTerrainDir::takeScanOf(const QUORTerrainDir& other) {
    const std::scoped_lock lock(_mutex, other._mutex);
    _skipped = other._skipped;
    _stamp = other._stamp;
}

QFileInfoList QUORTerrainDir::listSource() const {
    return QDir(_sourcePath)
        .entryInfoList({QStringLiteral("*.dt1"), QStringLiteral("*.hgt")},
                       QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

QByteArray QUORTerrainDir::makeStamp(const QStringList& skipped) const {
    QByteArray stamp = namesOf(listSource());
    for (const QString& file : skipped) {
        stamp += fileStamp(file);
    }
    return stamp;
}

bool QUORTerrainDir::hasNews() const {
    QMutexLocker lock(&_mutex);
    const QStringList skipped = _skipped;
    const QByteArray stamp = _stamp;
    lock.unlock(); // who waits for a remote file system keeps no job waiting
    return isListable(_sourcePath) && makeStamp(skipped) != stamp;
}

void QUORTerrainDir::resetFiles() {
    const QUORLogScope scope("void QUORTerrainDir::resetFiles");
    const QMutexLocker lock(&_mutex);
    _tiles.clear();
    _skipped.clear();
    _stamp.clear();
    _sets.clear();
}

QUORTerrainSet::Ptr QUORTerrainDir::getTerrainSet(const QUORGeoProjection::CPtr& projection,
                                                  const QUORCoordinate& corner1,
                                                  const QUORCoordinate& corner2) {
    QUOR_ASSERT(projection);
    const QUORLogScope scope("QUORTerrainDir::getTerrainSet");
    const QUORCoordinate southWest(std::floor(corner1.getLat()), std::floor(corner1.getLon()));
    const QUORCoordinate northEast(std::ceil(corner2.getLat()), std::ceil(corner2.getLon()));
    const QMutexLocker lock(&_mutex);
    _sets.removeIf([](const QUORTerrainSet::Ptr& kept) { return kept->hasExpired(); });
    QUORTerrainSet::Ptr set = findSet(*projection, southWest, northEast);
    if (!set) {
        set = std::make_shared<QUORTerrainSet>(projection, southWest, northEast);
        fillSet(*set);
    }
    keepSet(set);
    return set;
}

QUORTerrainSet::Ptr QUORTerrainDir::findSet(const QUORGeoProjection& projection,
                                            const QUORCoordinate& southWest,
                                            const QUORCoordinate& northEast) const {
    for (const QUORTerrainSet::Ptr& set : _sets) {
        if (set->getProjection()->isSameMap(projection) && set->getSouthWest() == southWest &&
            set->getNorthEast() == northEast) {
            return set;
        }
    }
    return nullptr;
}

void QUORTerrainDir::fillSet(QUORTerrainSet& set) const {
    const double rows = set.getNorthEast().getLat() - set.getSouthWest().getLat();
    const double columns = lonSpan(set.getSouthWest(), set.getNorthEast());
    if (rows <= 0.0 || columns <= 0.0) {
        return;
    }
    if (rows * columns > MAX_TILES) {
        QUORLog::Instance().logWarning(
            QStringLiteral("QUORTerrainDir::getTerrainSet(): no terrain for an area of ") +
            QString::number(rows) + QStringLiteral(" x ") + QString::number(columns) +
            QStringLiteral(" degrees around ") + getLocString(set.getProjection()->getReferenceLocation()));
        return;
    }
    QVector<QUORCoordinate> missing;
    for (int row = 0; row < int(rows); ++row) {
        for (int column = 0; column < int(columns); ++column) {
            const QUORCoordinate origin(set.getSouthWest().getLat() + row,
                                        normalizedLon(set.getSouthWest().getLon() + column));
            if (const QUORTerrainFile::CPtr tile = _tiles.value(getFileKey(origin))) {
                set.addBlock(std::make_shared<QUORTerrainFile>(*tile),
                             getCachedFilename(set.getProjection(), *tile));
            } else {
                missing.append(origin);
            }
        }
    }
    if (set.getTiles().isEmpty()) {
        return;
    }
    for (const QUORCoordinate& origin : missing) {
        const auto tile = std::make_shared<QUORTerrainFile>(origin);
        set.addBlock(tile, getCachedFilename(set.getProjection(), *tile));
    }
}

void QUORTerrainDir::keepSet(const QUORTerrainSet::Ptr& set) {
    _sets.removeOne(set);
    _sets.prepend(set);
    qsizetype blocks = 0;
    qsizetype kept = 0;
    while (kept < std::min<qsizetype>(_sets.size(), MAX_SETS)) {
        blocks += _sets[kept]->getTiles().size();
        if (kept > 0 && blocks > MAX_KEPT_BLOCKS) {
            break;
        }
        ++kept;
    }
    _sets.resize(kept);
}

QString QUORTerrainDir::getLocString(const QUORCoordinate& coordinate) {
    return angleText(coordinate.getLat(), QLatin1Char('N'), QLatin1Char('S')) +
           angleText(coordinate.getLon(), QLatin1Char('E'), QLatin1Char('W'));
}

QString QUORTerrainDir::getFileKey(const QUORCoordinate& coordinate) {
    return getLocString(coordinate);
}

QString QUORTerrainDir::getCacheKey(const QUORGeoProjection::CPtr& projection,
                                    const QUORCoordinate& coordinate, const QString& typeText) {
    return QStringList{QLatin1String(CACHE_PREFIX), typeText, projection->getName(),
                       getLocString(projection->getReferenceLocation()), getLocString(coordinate)}
        .join(QLatin1Char('_'));
}

QString QUORTerrainDir::getCachedFilename(const QUORGeoProjection::CPtr& projection,
                                          const QUORTerrainFile& tile) const {
    return _cachePath.isEmpty() ? QString()
                                : _cachePath + QLatin1Char('/') +
                                      getCacheKey(projection, tile.getOrigin(), tile.getTypeAsString()) +
                                      QStringLiteral(".vtk");
}

QMap<QString, QUORTerrainFile::CPtr> QUORTerrainDir::getTiles() const {
    const QMutexLocker lock(&_mutex);
    return _tiles;
}

void QUORTerrainDir::printDebug() const {
    QUORLog::Instance().logDebug(QStringLiteral("QUORTerrainDir: ") + _sourcePath + QStringLiteral(" -> ") +
                                 _cachePath);
    for (const QUORTerrainFile::CPtr& tile : getTiles()) {
        tile->printDebug();
    }
}
