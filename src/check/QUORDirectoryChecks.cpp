// SPDX-License-Identifier: MIT
#include "QUORDirectoryChecks.h"

#include "QUORDirectoryListing.h"
#include "QUORGeoProjection.h"
#include "QUORSystem.h"
#include "QUORTerrainDir.h"

#include <QDir>
#include <QFileInfo>

#include <cerrno>
#include <cmath>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

using Cost = QUORFinding::Cost;
using File = QUORSettingsKey::File;

const QString GENERAL = QStringLiteral("GENERAL");
const QString BACKGROUND = QStringLiteral("BACKGROUND");
const QString OUTPUT = QStringLiteral("directory");
constexpr double TERRAIN_FACTOR = 0.75; // of the diagonal, as the jobs ask for it
constexpr int MINIMUM_LATITUDES = 4;
constexpr double SMALL_SPACE = 100.0e6; // bytes

/// The first folder of a path that does not let this process in; empty when all do.
QString findClosedFolder(const QString& path) {
    QString folder;
    for (const QString& part : path.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        folder += QLatin1Char('/') + part;
        if (QFileInfo(folder).isDir() &&
            ::faccessat(AT_FDCWD, QFile::encodeName(folder).constData(), X_OK, AT_EACCESS) != 0) {
            return folder;
        }
    }
    return {};
}

QString adviseOnAccess(const QString& path) {
    const QString closed = findClosedFolder(path);
    return closed.isEmpty() ? QStringLiteral("let the user of the service read it")
                            : QStringLiteral("let the user of the service enter ") + closed;
}

void checkWatch(QUORFindingCollector& findings, const QString& path, const QString& key) {
    const int queue = ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    const bool good =
        queue >= 0 && ::inotify_add_watch(queue, QFile::encodeName(path).constData(), IN_CLOSE_WRITE) >= 0;
    const int error = errno;
    if (queue >= 0) {
        ::close(queue);
    }
    if (!good) {
        const bool limit = error == ENOSPC || error == EMFILE;
        findings.addAt(Cost::Remark, "not-watchable", File::Main, GENERAL, key,
                       path + QStringLiteral(" cannot be watched: ") + QUORSystem::errorText(error) +
                           QStringLiteral("; new products are found once a minute"),
                       limit ? QStringLiteral("raise fs.inotify.max_user_watches or max_user_instances")
                             : QString());
    }
}

/// Whether there is a directory that can be listed.
bool checkListing(QUORFindingCollector& findings, const QString& path, const QString& key, int error,
                  Cost cost) {
    if (path.isEmpty()) {
        findings.addAt(cost, "no-directory", File::Main, GENERAL, key,
                       QStringLiteral("no directory is configured"),
                       QStringLiteral("quor3d set ") + key + QStringLiteral(" DIRECTORY"));
    } else if (error == ENOENT) {
        findings.addAt(cost, "directory-missing", File::Main, GENERAL, key,
                       path + QStringLiteral(" does not exist"),
                       QStringLiteral("make it, or name another one"));
    } else if (error == ENOTDIR) {
        findings.addAt(cost, "directory-missing", File::Main, GENERAL, key,
                       path + QStringLiteral(" is not a directory"),
                       QStringLiteral("name the directory of the files"));
    } else if (error != 0) {
        findings.addAt(cost, "directory-unreadable", File::Main, GENERAL, key,
                       path + QStringLiteral(" cannot be listed: ") + QUORSystem::errorText(error),
                       adviseOnAccess(path));
    }
    return !path.isEmpty() && error == 0;
}

void checkContent(QUORFindingCollector& findings, const QUORProductSurvey::Directory& directory,
                  const QString& key, Cost cost, const QString& kind) {
    if (directory.products == 0 && !directory.productFolder.isEmpty()) {
        findings.addAt(cost, "products-in-folder", File::Main, GENERAL, key,
                       directory.path + QStringLiteral(" holds no ") + kind +
                           QStringLiteral(", but a folder of it does"),
                       QStringLiteral("write ") + directory.productFolder);
    } else if (directory.products == 0) {
        findings.addAt(Cost::Remark, "no-products", File::Main, GENERAL, key,
                       directory.path + QStringLiteral(" holds no ") + kind + QStringLiteral(" yet"), {});
    }
    const auto sample = [&](const QStringList& names) {
        return names.mid(0, 3).join(QStringLiteral(", ")) +
               (names.size() > 3
                    ? QStringLiteral(" and ") + QString::number(names.size() - 3) + QStringLiteral(" more")
                    : QString());
    };
    if (!directory.discarded.isEmpty()) {
        const bool all = directory.products == 0;
        findings.addAt(all ? Cost::Missing : Cost::Remark, "no-product-files", File::Main, GENERAL, key,
                       directory.path + QStringLiteral(" holds files that are no products: ") +
                           sample(directory.discarded),
                       QStringLiteral("quor3d info FILE says why"));
    }
    if (!directory.unfinished.isEmpty()) {
        findings.addAt(Cost::Missing, "unfinished-files", File::Main, GENERAL, key,
                       directory.path +
                           QStringLiteral(" holds files that are incomplete or cannot be read: ") +
                           sample(directory.unfinished),
                       QStringLiteral("quor3d info FILE says why"));
    }
    if (directory.otherKind > 0 && directory.products > 0) {
        findings.addAt(Cost::Remark, "other-products", File::Main, GENERAL, key,
                       directory.path + QStringLiteral(" also holds ") +
                           QString::number(directory.otherKind) + QStringLiteral(" products that are no ") +
                           kind + QStringLiteral(" and do not count"),
                       {});
    }
}

} // namespace

namespace QUORDirectoryChecks {

void checkProducts(QUORFindingCollector& findings, const QUORProductSurvey& survey, bool needs2d) {
    const QUORProductSurvey::Directory& first = survey.get3D();
    const QUORProductSurvey::Directory& second = survey.get2D();
    const QString volumes = QStringLiteral("volumes (3D products)");
    const QString flat = QStringLiteral("2D products");
    const Cost cost2d = needs2d ? Cost::NoImages : Cost::Remark;
    const bool listed3d =
        checkListing(findings, first.path, QStringLiteral("data3d"), first.error, Cost::NoImages);
    const bool optional2d = second.path.isEmpty() && !needs2d;
    const bool listed2d =
        !optional2d && checkListing(findings, second.path, QStringLiteral("data2d"), second.error, cost2d);
    if (listed3d) {
        checkWatch(findings, first.path, QStringLiteral("data3d"));
    }
    if (listed2d) {
        checkWatch(findings, second.path, QStringLiteral("data2d"));
    }
    const bool swapped3d = listed3d && first.products == 0 && first.otherKind > 0;
    const bool swapped2d = listed2d && second.products == 0 && second.otherKind > 0;
    if (swapped3d) {
        findings.addAt(Cost::NoImages, swapped2d ? "directories-swapped" : "directory-of-other-kind",
                       File::Main, GENERAL, QStringLiteral("data3d"),
                       first.path + QStringLiteral(" holds 2D products and no volumes"),
                       swapped2d ? QStringLiteral("swap data3d and data2d")
                                 : QStringLiteral("name the directory of the volumes"));
    }
    if (swapped2d) {
        findings.addAt(cost2d, swapped3d ? "directories-swapped" : "directory-of-other-kind", File::Main,
                       GENERAL, QStringLiteral("data2d"),
                       second.path + QStringLiteral(" holds volumes and no 2D products"),
                       swapped3d ? QStringLiteral("swap data3d and data2d")
                                 : QStringLiteral("name the directory of the 2D products"));
    }
    if (listed3d && !swapped3d) {
        checkContent(findings, first, QStringLiteral("data3d"), Cost::NoImages, volumes);
    }
    if (listed2d && !swapped2d) {
        checkContent(findings, second, QStringLiteral("data2d"), cost2d, flat);
    }
}

bool checkOutputSetting(QUORFindingCollector& findings, const QString& directory) {
    const QString path = QUORSystem::expandHome(directory);
    if (!QDir::isRelativePath(path)) {
        return true;
    }
    findings.addAt(Cost::Wrong, "output-relative", File::Background, BACKGROUND, OUTPUT,
                   QStringLiteral("images go to \"") + path +
                       QStringLiteral("\" below the working directory of the service"),
                   QStringLiteral("quor3d set BACKGROUND/directory DIRECTORY, with the whole path"));
    return false;
}

void checkOutput(QUORFindingCollector& findings, const QString& directory) {
    const auto report = [&](Cost cost, const char* code, const QString& problem, const QString& advice) {
        findings.addAt(cost, code, File::Background, BACKGROUND, OUTPUT, problem, advice);
    };
    if (!checkOutputSetting(findings, directory)) {
        return;
    }
    const QString path = QUORSystem::expandHome(directory);
    const QByteArray name = QFile::encodeName(path);
    if (!QFileInfo::exists(path)) {
        report(Cost::NoImages, "output-missing",
               path + QStringLiteral(" does not exist or cannot be reached"),
               findClosedFolder(path).isEmpty() ? QStringLiteral("make it") : adviseOnAccess(path));
        return;
    }
    if (!QFileInfo(path).isDir()) {
        report(Cost::NoImages, "output-missing", path + QStringLiteral(" is not a directory"),
               QStringLiteral("name a directory"));
        return;
    }
    if (::faccessat(AT_FDCWD, name.constData(), W_OK | X_OK, AT_EACCESS) != 0) {
        report(Cost::NoImages, "output-not-writable",
               path + QStringLiteral(" cannot be written: ") + QUORSystem::errorText(errno),
               QStringLiteral("let the user of the service write into it"));
        return;
    }
    struct statvfs space {};
    if (::statvfs(name.constData(), &space) == 0) {
        const double free = double(space.f_bavail) * double(space.f_frsize);
        if (free < SMALL_SPACE) {
            report(free < 1.0e6 ? Cost::NoImages : Cost::Remark, "output-full",
                   path + QStringLiteral(" has ") + QString::number(free / 1.0e6, 'f', 1) +
                       QStringLiteral(" MB left"),
                   QStringLiteral("make room"));
        }
    }
}

void checkTerrain(QUORFindingCollector& findings, const QString& directory, const QUORProductSurvey* survey) {
    const QString key = QStringLiteral("geolayer");
    if (directory.isEmpty()) {
        findings.addAt(Cost::Remark, "no-terrain", File::Main, GENERAL, key,
                       QStringLiteral("no terrain directory is configured, images have no terrain"),
                       QStringLiteral("quor3d set geolayer DIRECTORY, or hide the terrain layer"));
        return;
    }
    const int error = QUORDirectoryListing(directory).getError();
    if (!checkListing(findings, directory, key, error, Cost::Wrong)) {
        return;
    }
    QUORTerrainDir terrain(directory, {});
    terrain.scanFiles();
    const auto tiles = terrain.getTiles();
    if (tiles.isEmpty()) {
        findings.addAt(Cost::Wrong, "no-tiles", File::Main, GENERAL, key,
                       directory + QStringLiteral(" holds no terrain tiles, images have no terrain"),
                       QStringLiteral("SRTM tiles end in .hgt, DTED level 1 tiles in .dt1"));
        return;
    }
    QStringList sites;
    for (const QUORProductSurvey::Row& row :
         survey != nullptr ? survey->getRows() : QList<QUORProductSurvey::Row>()) {
        const QUORGeoProjection::CPtr projection = row.newest->getGeoProjection();
        if (sites.contains(row.site) || !projection || !row.newest->getGridError().isEmpty()) {
            continue;
        }
        sites.append(row.site);
        const double range = TERRAIN_FACTOR * std::hypot(row.newest->getLengthM(), row.newest->getWidthM());
        int minLat = 0, maxLat = 0, minLon = 0, maxLon = 0;
        projection->getReferenceLocation().calcLatLonBounds(range, minLat, maxLat, minLon, maxLon,
                                                            MINIMUM_LATITUDES);
        int missing = 0;
        int wanted = 0;
        for (int lat = minLat; lat < maxLat; ++lat) {
            const int width = maxLon >= minLon ? maxLon - minLon : maxLon + 360 - minLon;
            for (int step = 0; step < width; ++step) {
                const int lon = (minLon + step + 540) % 360 - 180;
                ++wanted;
                missing +=
                    tiles.contains(QUORTerrainDir::getFileKey(QUORCoordinate(double(lat), double(lon)))) ? 0
                                                                                                         : 1;
            }
        }
        if (missing > 0) {
            findings.addAt(
                missing == wanted ? Cost::Wrong : Cost::Remark, "tiles-missing", File::Main, GENERAL, key,
                QString::number(missing) + QStringLiteral(" of ") + QString::number(wanted) +
                    QStringLiteral(" tiles under ") + row.site +
                    QStringLiteral(" are missing, it is flat there"),
                QStringLiteral("add the tiles of latitudes ") + QString::number(minLat) +
                    QStringLiteral(" to ") + QString::number(maxLat) + QStringLiteral(", longitudes ") +
                    QString::number(minLon) + QStringLiteral(" to ") + QString::number(maxLon));
        }
    }
}

} // namespace QUORDirectoryChecks
