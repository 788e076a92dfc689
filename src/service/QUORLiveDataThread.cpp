// SPDX-License-Identifier: MIT
#include "QUORLiveDataThread.h"

#include "QUORActivity.h"
#include "QUORConfig.h"
#include "QUORDataStore.h"
#include "QUORLog.h"
#include "QUORLogOnce.h"
#include "QUOROffscreenVisualizer.h"
#include "QUORSettingsReader.h"
#include "QUORTerrainDir.h"
#include "QUORThreadStart.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

#include <exception>

namespace {

constexpr int DIRECTORY_CHECK_INTERVAL_MS = 60000;
constexpr int JOIN_STEP_MS = 10;
const QString TERRAIN_CACHE = QStringLiteral("~/.quor3d/cache/terrain");

// A settings file that is being replaced or cannot be read names no directory: that must not cost the
// directory in use and what arrived in it meanwhile.
QString keptUnlessConfigured(const QString& kind, const QString& configured, const QString& current) {
    const QString subject = kind + QStringLiteral(" directory");
    if (!configured.isEmpty()) {
        QUORLogOnce::forget(subject);
    } else if (!current.isEmpty()) {
        QUORLogOnce::logError(subject, QStringLiteral("The settings name no ") + subject +
                                           QStringLiteral(" any more, this one is kept: ") + current);
    }
    return configured.isEmpty() ? current : configured;
}

void logWhenNothingIsConfigured(const QUORGeneralSettings& settings) {
    if (settings.get3DDir().isEmpty()) {
        QUORLog::Instance().logError(
            QStringLiteral("No 3D product directory is configured: nothing is rendered until ") +
            QUORConfig::GENERAL_DATA3D_URL + QStringLiteral("= in [") + QUORConfig::GENERAL_GROUP +
            QStringLiteral("] names one in ") +
            QUORSettingsReader::findUserFile(QCoreApplication::applicationName()));
    }
}

/// What the tree knows of a file; one that it has not is an arrival all the same, never a live one. The
/// series of a 3D file is its site and configuration, of a 2D file its site and product.
QUORArrival describe(const QString& path, const QUORDirTop::CPtr& tree, bool is2D) {
    QUORArrival arrival;
    arrival.path = path;
    if (const QUORFileLeaf::CPtr leaf = tree ? tree->findLeaf(QUORFile::nameOf(path)) : nullptr) {
        arrival.key = leaf->getKey();
        arrival.series =
            leaf->getSite() + QLatin1Char('/') + (is2D ? leaf->getProduct() : leaf->getConfiguration());
        arrival.time = leaf->getFile()->getDataTime();
    }
    return arrival;
}

QList<QUORArrival> describe(const QStringList& paths, const QUORDirTop::CPtr& tree, bool is2D) {
    QList<QUORArrival> arrivals;
    for (const QString& path : paths) {
        arrivals.append(describe(path, tree, is2D));
    }
    return arrivals;
}

// A file that no step foresaw costs its image and nothing else.
template <class Job>
void runGuarded(const QString& file, Job job) {
    try {
        job();
    } catch (const std::exception& error) {
        QUORLog::Instance().logError(QStringLiteral("Visualization failed: ") + file + QStringLiteral(": ") +
                                     QString::fromLocal8Bit(error.what()));
    } catch (...) {
        QUORLog::Instance().logError(QStringLiteral("Visualization failed: ") + file);
    }
}

} // namespace

QUORLiveDataThread::QUORLiveDataThread() {
    const QUORLogScope scope("QUORLiveDataThread::QUORLiveDataThread");
    logDebug(QStringLiteral("Initializing background renderer.."));
    init();
    logDebug(QStringLiteral("Starting background renderer thread.."));
    QUORThreadStart::start(*this, "live data");
}

QUORLiveDataThread::~QUORLiveDataThread() {
    {
        const QUORLogScope scope("QUORLiveDataThread::~QUORLiveDataThread");
        stop();
    }
    _jobs.reset();
    _visualizer.reset();
    _backgroundSettings.reset();
    _generalSettings.reset();
    _dataStore.reset();
}

void QUORLiveDataThread::init() {
    const QUORLogScope scope("QUORLiveDataThread::init");
    logDebug(QStringLiteral("Initializing general settings.."));
    _generalSettings = std::make_shared<QUORGeneralSettings>();
    _generalSettings->load();
    logWhenNothingIsConfigured(*_generalSettings);
    logDebug(QStringLiteral("Initializing background settings.."));
    _backgroundSettings = std::make_shared<QUORBackgroundSettings>();
    _backgroundSettings->load();
    checkActive(_backgroundSettings);
    logDebug(QStringLiteral("Initializing data store.."));
    _dataStore = std::make_shared<QUORDataStore>(this);
    _dataStore->setDirectories(_generalSettings->get3DDir(), _generalSettings->get2DDir(),
                               _generalSettings->getGeoDir(), TERRAIN_CACHE);
    _visualizer = std::make_shared<QUOROffscreenVisualizer>();
    _jobs = std::make_unique<QUORVisualizationJobs>(_dataStore, _generalSettings, _backgroundSettings,
                                                    _visualizer);
    logDebug(QStringLiteral("Launching timer for monitoring path changes.."));
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &QUORLiveDataThread::updateDataDirectory);
    timer->start(DIRECTORY_CHECK_INTERVAL_MS);
}

void QUORLiveDataThread::stop() {
    const QUORLogScope scope("QUORLiveDataThread::stop");
    {
        const std::lock_guard lock(_mutex);
        _stopRequested = true;
        _wakeUp.notify_one();
    }
    while (!wait(QDeadlineTimer(JOIN_STEP_MS))) {
        QCoreApplication::sendPostedEvents();
    }
}

bool QUORLiveDataThread::checkActive(const QUORBackgroundSettings::CPtr& settings) {
    if (!settings->isActivated() && _active) {
        QUORLog::Instance().logWarning(
            QStringLiteral("QUORLiveDataThread: background rendering is off - nothing generated"));
    }
    _active = settings->isActivated();
    return _active;
}

void QUORLiveDataThread::updateDataDirectory() {
    // The thread's own record may be in the middle of a load.
    const QUORGeneralSettings settings;
    const QString old3d = _dataStore->getPath3d();
    const QString old2d = _dataStore->getPath2d();
    const QString new3d = keptUnlessConfigured(QStringLiteral("3D product"), settings.get3DDir(), old3d);
    const QString new2d = keptUnlessConfigured(QStringLiteral("2D product"), settings.get2DDir(), old2d);
    if (new3d != old3d || new2d != old2d) {
        const QString geo = keptUnlessConfigured(QStringLiteral("terrain"), settings.getGeoDir(),
                                                 _dataStore->getTerrainDir()->getSourcePath());
        _dataStore->setDirectories(new3d, new2d, geo, TERRAIN_CACHE);
    }
    _dataStore->refreshTerrain();
}

void QUORLiveDataThread::dataStoreNewDataAvailable3d(QUORDataStore*, const QStringList& added,
                                                     const QStringList&) {
    const QUORLogScope scope("QUORLiveDataThread::dataStoreNewDataAvailable3d");
    append(_queue3d, describe(added, _dataStore->get3DTop(), false));
}

void QUORLiveDataThread::dataStoreNewDataAvailable2d(QUORDataStore*, const QStringList& added,
                                                     const QStringList&) {
    const QUORLogScope scope("QUORLiveDataThread::dataStoreNewDataAvailable2d");
    append(_queue2d, describe(added, _dataStore->get2DTop(), true));
}

void QUORLiveDataThread::append(QUORArrivalQueue& queue, const QList<QUORArrival>& arrivals) {
    for (const QUORArrival& arrival : arrivals) {
        if (!arrival.without2D) {
            QUORActivity::Instance().arrived(arrival.path);
        }
    }
    const std::lock_guard lock(_mutex);
    for (const QUORArrival& arrival : arrivals) {
        queue.append(arrival);
    }
    QUORActivity::Instance().setWaiting(_queue3d.getSize(), _queue2d.getSize());
    _wakeUp.notify_one();
}

void QUORLiveDataThread::run() {
    const QUORLogScope scope("QUORLiveDataThread::run");
    while (waitForWork()) {
        runPass();
    }
}

// False when the thread has to end.
bool QUORLiveDataThread::waitForWork() {
    std::unique_lock lock(_mutex);
    const auto hasReason = [this] {
        return _stopRequested || !_completed.isEmpty() || !_queue3d.isEmpty() || !_queue2d.isEmpty();
    };
    const Clock::time_point next = getNextTime();
    if (!hasReason() && next > Clock::now()) {
        _is2DsTurn = false;
        logDebug(QStringLiteral("QUORLiveDataThread: --- GOING TO SLEEP ---"));
        if (next == Clock::time_point::max()) {
            _wakeUp.wait(lock, hasReason);
        } else {
            _wakeUp.wait_until(lock, next, hasReason);
        }
        logDebug(QStringLiteral("QUORLiveDataThread: --- WAKE UP ---"));
    }
    return !_stopRequested;
}

/// When there is something to do that nobody reports.
QUORLiveDataThread::Clock::time_point QUORLiveDataThread::getNextTime() const {
    const int wait = _backgroundSettings->getWait2D();
    return std::min(_unwritten.getNextTime(),
                    wait < 0 ? Clock::time_point::max() : _waiting.getNextTime(std::chrono::seconds(wait)));
}

std::optional<QUORArrival> QUORLiveDataThread::takeLive(QUORArrivalQueue& queue) {
    return take(queue, &QUORArrivalQueue::takeLive);
}

std::optional<QUORArrival> QUORLiveDataThread::takeFirst(QUORArrivalQueue& queue) {
    return take(queue, &QUORArrivalQueue::takeFirst);
}

std::optional<QUORArrival> QUORLiveDataThread::take(QUORArrivalQueue& queue,
                                                    std::optional<QUORArrival> (QUORArrivalQueue::*next)()) {
    const std::lock_guard lock(_mutex);
    std::optional<QUORArrival> arrival = _stopRequested ? std::nullopt : (queue.*next)();
    QUORActivity::Instance().setWaiting(_queue3d.getSize(), _queue2d.getSize());
    return arrival;
}

void QUORLiveDataThread::runPass() {
    runGuarded(QStringLiteral("settings"), [this] {
        _generalSettings->load();
        _backgroundSettings->load();
    });
    drawOverdue();
    if (!runNext()) {
        drawUnwritten();
    }
}

// One image, or the look for what a 2D file completes. False when nothing waits.
bool QUORLiveDataThread::runNext() {
    if (const auto live = takeLive(_queue3d)) {
        draw3D(*live);
        return true;
    }
    if (const auto live = takeLive(_queue2d)) {
        complete3D(*live);
        return true;
    }
    if (!_completed.isEmpty()) {
        draw(_completed.takeFirst(), QUORVisualizationJobs::Required);
        return true;
    }
    // The others in turn.
    const auto first2d = _is2DsTurn ? takeFirst(_queue2d) : std::nullopt;
    const auto first3d = first2d ? std::nullopt : takeFirst(_queue3d);
    const auto only2d = first2d || first3d ? first2d : takeFirst(_queue2d);
    _is2DsTurn = bool(first3d);
    if (first3d) {
        draw3D(*first3d);
    } else if (only2d) {
        complete3D(*only2d);
    }
    return first3d || only2d;
}

void QUORLiveDataThread::draw3D(const QUORArrival& arrival) {
    if (arrival.without2D) {
        draw(arrival, QUORVisualizationJobs::Waived);
        return;
    }
    QUORLog::Instance().logNotice(QStringLiteral("QUORLiveDataThread: new 3D file arrived ") + arrival.path);
    draw(arrival, QUORVisualizationJobs::AsShown);
}

void QUORLiveDataThread::complete3D(const QUORArrival& arrival2d) {
    QUORLog::Instance().logNotice(QStringLiteral("QUORLiveDataThread: new 2D file arrived ") +
                                  arrival2d.path);
    {
        const std::lock_guard lock(_mutex);
        _queue2d.noteDrawn(arrival2d.series, arrival2d.time);
    }
    runGuarded(arrival2d.path, [&] {
        // Before what an earlier 2D file has left, which a live one has overtaken.
        _completed =
            describe(_jobs->findCompleted(arrival2d.path), _dataStore->get3DTop(), false) + _completed;
    });
}

void QUORLiveDataThread::draw(const QUORArrival& arrival, QUORVisualizationJobs::Need2D need) {
    QUORVisualizationJobs::Result result = QUORVisualizationJobs::Ignored;
    runGuarded(arrival.path, [&] {
        _backgroundSettings->setActivated(true);
        checkActive(_backgroundSettings);
        result = _jobs->visualize(arrival.path, need);
    });
    note(arrival, need, result);
}

void QUORLiveDataThread::note(const QUORArrival& arrival, QUORVisualizationJobs::Need2D need,
                              QUORVisualizationJobs::Result result) {
    if (arrival.key.isEmpty()) {
        return;
    }
    if (result == QUORVisualizationJobs::NotWritten) {
        QUORArrival image = arrival;
        image.without2D = need == QUORVisualizationJobs::Waived;
        _unwritten.add(image);
    } else {
        _unwritten.remove(arrival.key);
    }
    QUORActivity::Instance().setUnwritten(_unwritten.getCount());
    if (result == QUORVisualizationJobs::Missing2D) {
        _waiting.add(arrival);
    } else if (result == QUORVisualizationJobs::Visualized) {
        _waiting.remove(arrival.key);
        const std::lock_guard lock(_mutex);
        _queue3d.noteDrawn(arrival.series, arrival.time);
    }
}

// The product may have gone, or another one may stand under its name.
bool QUORLiveDataThread::isStill(const QUORArrival& product) const {
    return describe(product.path, _dataStore->get3DTop(), false).key == product.key;
}

void QUORLiveDataThread::drawOverdue() {
    const int wait = _backgroundSettings->getWait2D();
    if (wait < 0) {
        _waiting = {};
        return;
    }
    QList<QUORArrival> due = _waiting.takeDue(std::chrono::seconds(wait));
    due.removeIf([this](const QUORArrival& product) { return !isStill(product); });
    for (QUORArrival& product : due) {
        product.without2D = true;
    }
    append(_queue3d, due);
}

// One of them, so that an arrival waits for no more than that.
void QUORLiveDataThread::drawUnwritten() {
    const std::optional<QUORArrival> image = _unwritten.findDue();
    if (!image) {
        return;
    }
    const auto tree = _dataStore->get3DTop();
    const QUORFileLeaf::CPtr leaf = tree ? tree->findLeaf(QUORFile::nameOf(image->path)) : nullptr;
    if (!leaf || leaf->getKey() != image->key) {
        _unwritten.remove(image->key);
        QUORActivity::Instance().setUnwritten(_unwritten.getCount());
    } else if (!_jobs->canWrite(*leaf)) {
        _unwritten.postpone();
    } else {
        QUORLog::Instance().logNotice(QStringLiteral("QUORLiveDataThread: image not written before, of ") +
                                      QString::number(_unwritten.getCount()) + QLatin1Char(' ') +
                                      image->path);
        draw(*image, image->without2D ? QUORVisualizationJobs::Waived : QUORVisualizationJobs::AsShown);
    }
}
