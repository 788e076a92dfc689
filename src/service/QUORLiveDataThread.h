// SPDX-License-Identifier: MIT
#pragma once

#include "QUORBackgroundSettings.h"
#include "QUORDataStoreObserver.h"
#include "QUORGeneralSettings.h"

#include <QStringList>
#include <QThread>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>

class QUORDataStore;
class QUOROffscreenVisualizer;
class QUORVisualizationJobs;

/// The heart of the service: queues the product files that the data store reports and renders them one by
/// one, in the order of their arrival, on a thread of its own.
///
/// Made, stopped and destroyed on the main thread, which has to run its event loop: images are drawn there.
/// The settings records, the noted switch and the jobs belong to the live data thread once it runs. One
/// mutex guards the queues, the request to stop and the wake-up; no lock is held while a job runs.
class QUORLiveDataThread : public QThread, public QUORDataStoreObserver {
    Q_OBJECT

public:
    /// Loads the settings, opens the data directories and starts the thread.
    QUORLiveDataThread();
    /// Stops the thread and waits for it.
    ~QUORLiveDataThread() override;

    /// Ends the thread after the image that it is working on, and delivers posted events while it waits:
    /// that image needs the main thread.
    void stop();

    std::shared_ptr<const QUORDataStore> getDataStore() const { return _dataStore; }
    /// Notes the operator's switch; a warning when it has just gone off. It stops nothing: every job sets the
    /// switch on in its record before it is noted.
    bool checkActive(const QUORBackgroundSettings::CPtr& settings);

    void dataStoreNewDataAvailable3d(QUORDataStore* store, const QStringList& added,
                                     const QStringList& removed) override;
    void dataStoreNewDataAvailable2d(QUORDataStore* store, const QStringList& added,
                                     const QStringList& removed) override;

    /// The jobs, see QUORVisualizationJobs. On the live data thread only.
    void visualize(const QString& file, bool required2D);
    void visualize2D(const QString& file);

public Q_SLOTS:
    /// Follows a change of the configured 3D or 2D directory; one that is not configured any more is kept.
    void updateDataDirectory();

protected:
    void run() override;

private:
    void init();
    void append(QStringList& queue, const QStringList& files);
    bool waitForWork();
    QString takeFirst(QStringList& queue);
    void runPass();

    std::atomic<bool> _stopRequested{false};
    std::mutex _mutex;
    std::condition_variable _wakeUp;
    QStringList _queue3d;
    QStringList _queue2d;
    /// The switch as it was last noted, not whether anything is rendered; read by `checkActive` only.
    bool _active = true;
    std::shared_ptr<QUORDataStore> _dataStore;
    QUORGeneralSettings::Ptr _generalSettings;
    QUORBackgroundSettings::Ptr _backgroundSettings;
    std::shared_ptr<QUOROffscreenVisualizer> _visualizer;
    std::unique_ptr<QUORVisualizationJobs> _jobs;
};
