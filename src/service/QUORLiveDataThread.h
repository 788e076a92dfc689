// SPDX-License-Identifier: MIT
#pragma once

#include "QUORArrivalQueue.h"
#include "QUORBackgroundSettings.h"
#include "QUORDataStoreObserver.h"
#include "QUORGeneralSettings.h"
#include "QUORUnwrittenImages.h"
#include "QUORVisualizationJobs.h"
#include "QUORWaitingFor2D.h"

#include <QStringList>
#include <QThread>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>

class QUORDataStore;
class QUOROffscreenVisualizer;

/// The heart of the service: queues the product files that the data store reports and renders them one by
/// one, live ones first and all others in the order of their arrival, on a thread of its own. When nothing
/// waits, images that could not be written are drawn again.
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

public Q_SLOTS:
    /// Follows a change of the configured 3D or 2D directory; one that is not configured any more is kept.
    void updateDataDirectory();

protected:
    void run() override;

private:
    void init();
    using Clock = QUORArrival::Clock;

    void append(QUORArrivalQueue& queue, const QList<QUORArrival>& arrivals);
    bool waitForWork();
    Clock::time_point getNextTime() const;
    void runPass();
    bool runNext();
    std::optional<QUORArrival> takeLive(QUORArrivalQueue& queue);
    std::optional<QUORArrival> takeFirst(QUORArrivalQueue& queue);
    std::optional<QUORArrival> take(QUORArrivalQueue& queue,
                                    std::optional<QUORArrival> (QUORArrivalQueue::*next)());
    void draw3D(const QUORArrival& arrival);
    void complete3D(const QUORArrival& arrival2d);
    void draw(const QUORArrival& arrival, QUORVisualizationJobs::Need2D need);
    void note(const QUORArrival& arrival, QUORVisualizationJobs::Need2D need,
              QUORVisualizationJobs::Result result);
    void drawOverdue();
    void drawUnwritten();
    bool isStill(const QUORArrival& product) const;

    std::atomic<bool> _stopRequested{false};
    std::mutex _mutex;
    std::condition_variable _wakeUp;
    QUORArrivalQueue _queue3d;
    QUORArrivalQueue _queue2d;
    /// The switch as it was last noted, not whether anything is rendered; read by `checkActive` only.
    bool _active = true;
    // These belong to the live data thread.
    QList<QUORArrival> _completed; ///< 3D files of 2D arrivals
    bool _is2DsTurn = false;
    QUORUnwrittenImages _unwritten;
    QUORWaitingFor2D _waiting;
    std::shared_ptr<QUORDataStore> _dataStore;
    QUORGeneralSettings::Ptr _generalSettings;
    QUORBackgroundSettings::Ptr _backgroundSettings;
    std::shared_ptr<QUOROffscreenVisualizer> _visualizer;
    std::unique_ptr<QUORVisualizationJobs> _jobs;
};
