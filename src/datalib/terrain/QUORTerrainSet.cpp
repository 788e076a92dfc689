// SPDX-License-Identifier: MIT
#include "QUORTerrainSet.h"

#include "QUORAbortFlag.h"
#include "QUORLog.h"
#include "QUORTerrainMesh.h"

#include <vtkActor.h>
#include <vtkAssembly.h>
#include <vtkImageData.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkTexture.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMap>
#include <QMutexLocker>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <exception>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr int MAX_WORKERS = 8;
constexpr auto RETRY_AFTER = std::chrono::hours(1);

// Dim enough for light lines and names to stand out from the sea, and for the data to outshine the ground.
constexpr double AMBIENT = 0.1;
constexpr double DIFFUSE = 0.5;

QString translated(const char* text) {
    return QCoreApplication::translate("Datalib", text);
}

qint64 monotonicMs() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

QString secondsText(double seconds) {
    return QString::number(seconds, 'f', 3);
}

vtkSmartPointer<vtkTexture> makeTexture(vtkImageData* image) {
    auto texture = vtkSmartPointer<vtkTexture>::New();
    texture->SetInputData(image);
    texture->InterpolateOn();
    texture->RepeatOff();
    texture->EdgeClampOn();
    return texture;
}

vtkSmartPointer<vtkActor> makeActor(vtkPolyData* mesh, vtkTexture* texture) {
    vtkNew<vtkPolyDataMapper> mapper;
    mapper->SetInputData(mesh);
    mapper->ScalarVisibilityOff();
    mapper->StaticOn();
    auto actor = vtkSmartPointer<vtkActor>::New();
    actor->SetMapper(mapper);
    actor->SetTexture(texture);
    actor->GetProperty()->SetAmbient(AMBIENT);
    actor->GetProperty()->SetDiffuse(DIFFUSE);
    actor->GetProperty()->SetSpecular(0.0);
    // Far slopes that turn away would shine through ridges where the depth cannot tell them apart.
    actor->GetProperty()->BackfaceCullingOn();
    return actor;
}

} // namespace

/// One call of `loadFiles`, shared by its workers.
struct QUORTerrainSet::Run {
    const QUORAbortFlag& abort;
    std::atomic<qsizetype> next{0};
    std::atomic<int> toConvert{0};
    std::atomic<int> started{0};
    std::atomic<int> converted{0};
    QMutex errorMutex{};
    QString cacheError{};
};

QUORTerrainSet::QUORTerrainSet(QUORGeoProjection::CPtr projection, const QUORCoordinate& southWest,
                               const QUORCoordinate& northEast)
    : _projection(std::move(projection)), _southWest(southWest), _northEast(northEast) {
    const QUORLogScope scope("QUORTerrainSet::QUORTerrainSet");
}

QUORTerrainSet::~QUORTerrainSet() {
    QCoreApplication* application = QCoreApplication::instance();
    if (application != nullptr && application->thread() != QThread::currentThread()) {
        // Dropped by the call itself: the event may be handled, and the function object be left to this
        // thread, before invokeMethod returns.
        QMetaObject::invokeMethod(
            application,
            [prop = std::move(_prop), missing = std::move(_missing), tiles = std::move(_tiles)]() mutable {
                prop = nullptr;
                missing.clear();
                tiles.clear();
            },
            Qt::QueuedConnection);
    }
}

void QUORTerrainSet::addBlock(const QUORTerrainFile::Ptr& tile, const QString& cacheFileName) {
    _tiles.append(tile);
    _cacheFileNames.append(cacheFileName);
}

bool QUORTerrainSet::loadFiles(const QUORAbortFlag& abort) const {
    const QMutexLocker lock(&_mutex);
    if (_prop) {
        return true;
    }
    QUORLog& log = QUORLog::Instance();
    log.logDebug(QStringLiteral("QUORTerrainSet::loadFiles() called."));
    QElapsedTimer timer;
    timer.start();
    Run run{abort};
    run.toConvert = int(std::count_if(_cacheFileNames.begin(), _cacheFileNames.end(),
                                      [](const QString& name) { return !QFileInfo::exists(name); }));
    log.logDebug(QStringLiteral("numToBeConverted=") + QString::number(run.toConvert));
    if (run.toConvert > 0) {
        log.logHistory(translated("Converting terrain data, please wait..."));
    }
    loadBlocks(run);
    log.logDebug(QStringLiteral("filesConverted=") + QString::number(run.converted));
    if (run.converted > 0) {
        log.logHistory(translated("%1  terrain files converted!").arg(run.converted.load()));
    }
    if (!run.cacheError.isEmpty()) {
        log.logWarning(QStringLiteral("QUORTerrainSet::loadFiles(): terrain is shown but not cached: ") +
                       run.cacheError);
    }
    const double seconds = double(timer.nsecsElapsed()) * 1e-9;
    log.logDebug(QString::number(_tiles.size()) + QStringLiteral(" files loaded in ") + secondsText(seconds) +
                 QStringLiteral("s (") +
                 secondsText(seconds / double(std::max<qsizetype>(_tiles.size(), 1))) +
                 QStringLiteral(" s/file)"));
    if (abort) {
        log.logDebug(QStringLiteral("QUORTerrainSet::loadFiles() ABORTED!"));
        return false;
    }
    joinBlocks();
    makeProp();
    log.logDebug(QStringLiteral("QUORTerrainSet::loadFiles() finished."));
    return true;
}

void QUORTerrainSet::loadBlocks(Run& run) const {
    const auto work = [this, &run] {
        for (qsizetype i = run.next++; i < _tiles.size() && !run.abort; i = run.next++) {
            try {
                loadBlock(i, run);
            } catch (const std::exception& exception) {
                QUORLog::Instance().logError(QStringLiteral("QUORTerrainSet::loadFiles(): ") +
                                             _tiles[i]->getBlockName() + QStringLiteral(": ") +
                                             QLatin1String(exception.what()));
            }
        }
    };
    std::vector<std::jthread> helpers;
    const qsizetype workers = std::min<qsizetype>({QThread::idealThreadCount(), MAX_WORKERS, _tiles.size()});
    try {
        while (qsizetype(helpers.size()) + 1 < workers) {
            helpers.emplace_back(work);
        }
    } catch (const std::system_error&) {
        // No more threads: this one does the rest.
    }
    work();
}

void QUORTerrainSet::loadBlock(qsizetype index, Run& run) const {
    QUORLog& log = QUORLog::Instance();
    QUORTerrainFile& tile = *_tiles[index];
    const QString& cacheFileName = _cacheFileNames[index];
    if (tile.getBlock().mesh) {
        return; // from an aborted call
    }
    const auto announceLoading = [&] {
        log.logDebug(QStringLiteral("Loading cached block: ") + cacheFileName);
    };
    if (QFileInfo::exists(cacheFileName)) {
        announceLoading();
        if (tile.loadCachedData(_projection, cacheFileName)) {
            return;
        }
        ++run.toConvert;
        log.logWarning(QStringLiteral("QUORTerrainSet::loadFiles(): converting again: ") +
                       tile.getCacheError());
    }
    log.logHistory(translated("- Converting terrain block: ") + QString::number(++run.started) +
                   QLatin1Char('/') + QString::number(run.toConvert));
    log.logDebug(QStringLiteral("Converting terrain block data: ") + tile.getTypeAsString() +
                 QStringLiteral(" (") + tile.getFileName() + QLatin1Char(')'));
    if (!tile.convertData(_projection, cacheFileName)) {
        return; // which it has logged
    }
    ++run.converted;
    if (tile.getCacheError().isEmpty()) {
        announceLoading(); // what was written is in memory already
    } else {
        const QMutexLocker lock(&run.errorMutex);
        run.cacheError = tile.getCacheError();
    }
}

void QUORTerrainSet::joinBlocks() const {
    QMap<std::pair<int, int>, vtkPolyData*> meshes;
    for (const QUORTerrainFile::Ptr& tile : _tiles) {
        if (tile->getBlock().mesh) {
            meshes[{int(tile->getOrigin().getLat()), int(tile->getOrigin().getLon())}] =
                tile->getBlock().mesh;
        }
    }
    // Along a whole direction first: where four tiles meet they then get one normal.
    for (auto mesh = meshes.cbegin(); mesh != meshes.cend(); ++mesh) {
        const auto [lat, lon] = mesh.key();
        if (vtkPolyData* east = meshes.value({lat, lon == 179 ? -180 : lon + 1})) {
            QUORTerrainMesh::joinEastWest(*mesh.value(), *east);
        }
    }
    for (auto mesh = meshes.cbegin(); mesh != meshes.cend(); ++mesh) {
        if (vtkPolyData* north = meshes.value({mesh.key().first + 1, mesh.key().second})) {
            QUORTerrainMesh::joinSouthNorth(*mesh.value(), *north);
        }
    }
}

/// One actor a block. The meshes differ in points and normals only and share the rest.
void QUORTerrainSet::makeProp() const {
    _prop = vtkSmartPointer<vtkAssembly>::New();
    _missing.clear();
    vtkSmartPointer<vtkTexture> flat; // the flat tiles, often most of them, look all the same
    vtkPolyData* first = nullptr;
    for (const QUORTerrainFile::Ptr& tile : _tiles) {
        vtkPolyData* mesh = tile->getBlock().mesh;
        if (mesh == nullptr) {
            _incompleteSinceMs = monotonicMs();
            continue;
        }
        first = first == nullptr ? mesh : first;
        mesh->SetStrips(first->GetStrips());
        mesh->GetPointData()->SetTCoords(first->GetPointData()->GetTCoords());
        const vtkSmartPointer<vtkImageData> image = tile->takeTexture();
        const bool isFlat = tile->getType() == QUORTerrainFile::Empty;
        const vtkSmartPointer<vtkTexture> texture = isFlat && flat ? flat : makeTexture(image);
        flat = isFlat ? texture : flat;
        const vtkSmartPointer<vtkActor> actor = makeActor(mesh, texture);
        _prop->AddPart(actor);
        if (isFlat) {
            _missing.push_back(actor);
        }
    }
}

void QUORTerrainSet::showMissing(bool shown) const {
    const QMutexLocker lock(&_mutex);
    for (const auto& actor : _missing) {
        if ((actor->GetVisibility() != 0) != shown) {
            actor->SetVisibility(shown ? 1 : 0);
        }
    }
}

vtkSmartPointer<vtkProp3D> QUORTerrainSet::getProp() const {
    const QMutexLocker lock(&_mutex);
    return _prop;
}

bool QUORTerrainSet::hasExpired() const {
    const qint64 since = _incompleteSinceMs;
    return since != 0 &&
           monotonicMs() - since > std::chrono::duration_cast<std::chrono::milliseconds>(RETRY_AFTER).count();
}

double QUORTerrainSet::getElevationAtLocation(const QUORCoordinate& location) const {
    const QMutexLocker lock(&_mutex);
    double elevation = 0.0;
    for (const QUORTerrainFile::Ptr& tile : _tiles) {
        if (tile->contains(location)) {
            elevation = tile->getElevationAtLocation(location);
        }
    }
    return elevation;
}
