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
#include "QUORVisualizationJobs.h"

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
                                                    _visualizer, _stopRequested);
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
    append(_queue3d, added);
}

void QUORLiveDataThread::dataStoreNewDataAvailable2d(QUORDataStore*, const QStringList& added,
                                                     const QStringList&) {
    const QUORLogScope scope("QUORLiveDataThread::dataStoreNewDataAvailable2d");
    append(_queue2d, added);
}

void QUORLiveDataThread::visualize(const QString& file, bool required2D) {
    _backgroundSettings->setActivated(true);
    checkActive(_backgroundSettings);
    _jobs->visualize(file, required2D);
}

void QUORLiveDataThread::visualize2D(const QString& file) {
    _jobs->visualize2D(file);
}

void QUORLiveDataThread::append(QStringList& queue, const QStringList& files) {
    for (const QString& file : files) {
        QUORActivity::Instance().arrived(file);
    }
    const std::lock_guard lock(_mutex);
    queue.append(files);
    QUORActivity::Instance().setWaiting(_queue3d.size(), _queue2d.size());
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
    const auto hasReason = [this] { return _stopRequested || !_queue3d.isEmpty() || !_queue2d.isEmpty(); };
    if (!hasReason()) {
        logDebug(QStringLiteral("QUORLiveDataThread: --- GOING TO SLEEP ---"));
        _wakeUp.wait(lock, hasReason);
        logDebug(QStringLiteral("QUORLiveDataThread: --- WAKE UP ---"));
    }
    return !_stopRequested;
}

QString QUORLiveDataThread::takeFirst(QStringList& queue) {
    const std::lock_guard lock(_mutex);
    const QString file = queue.isEmpty() || _stopRequested ? QString() : queue.takeFirst();
    QUORActivity::Instance().setWaiting(_queue3d.size(), _queue2d.size());
    return file;
}

void QUORLiveDataThread::runPass() {
    runGuarded(QStringLiteral("settings"), [this] {
        _generalSettings->load();
        _backgroundSettings->load();
    });
    if (const QString file = takeFirst(_queue3d); !file.isEmpty()) {
        QUORLog::Instance().logNotice(QStringLiteral("QUORLiveDataThread: new 3D file arrived ") + file);
        runGuarded(file, [&] { visualize(file, false); });
    }
    if (const QString file = takeFirst(_queue2d); !file.isEmpty()) {
        QUORLog::Instance().logNotice(QStringLiteral("QUORLiveDataThread: new 2D file arrived ") + file);
        runGuarded(file, [&] { visualize2D(file); });
    }
}
