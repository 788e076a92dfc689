// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDirectoryListing.h"
#include "QUORDirectoryNotifier.h"
#include "QUORDirectoryWatchData.h"

#include <QStringList>
#include <QThread>

#include <chrono>
#include <condition_variable>
#include <mutex>

/// Watches one product directory on a thread of its own and queues the paths of products that arrived
/// complete or were removed, until the owner takes them.
///
/// The object and its notifier live in the thread that made it, which runs an event loop; that thread also
/// destroys it. One mutex guards the data pointer, the queues, the deadlines and the wake-up. The thread
/// sleeps until there is a notification, a file to retry or a check to do; it logs and goes on whatever
/// happens to a file or to the directory, which may vanish, be replaced or come later. Where the system does
/// not notify, an error line says so and the directory itself is looked at each second.
class QUORDirectoryWatcher : public QThread {
    Q_OBJECT

public:
    using Ptr = std::shared_ptr<QUORDirectoryWatcher>;

    /// The directory has been scanned and the thread runs when the constructor returns.
    QUORDirectoryWatcher(const QString& path, QUORDirectoryWatchData::DirectoryType type,
                         QUORWatchTiming timing = {});
    /// Stops the thread.
    ~QUORDirectoryWatcher() override;

    /// Takes the first path of a queue; empty when there is none.
    QString getAddedFile();
    QString getRemovedFile();
    /// The tree of the directory that is watched now; any thread.
    QUORDirTop::Ptr getTree() const;
    /// Ends the thread and waits for it.
    void stop();

public Q_SLOTS:
    void directoryChanged(const QString& path);
    void retryTimerExpired();
    /// Watches another directory; what was queued for the old one is dropped.
    void pathChanged(const QString& path);

Q_SIGNALS:
    /// The queues hold something new. Emitted by the watcher's own thread.
    void newFiles();

protected:
    void run() override;

private:
    using Clock = std::chrono::steady_clock;

    QUORDirectoryWatchData::Ptr load(const QString& path);
    void noteChanges(const QStringList& names, const QStringList& written, bool lost);
    bool watch(const QString& path);
    void noteNotification(const QString& path, int error);
    void poll(const QUORDirectoryWatchData::Ptr& data);
    void watchAgain(const QUORDirectoryWatchData::Ptr& data);
    QUORDirectoryWatchData::Ptr waitForWork();
    void work(const QUORDirectoryWatchData::Ptr& data);
    void followDirectory(const QUORDirectoryWatchData::Ptr& data);
    int queueOut(const QUORDirectoryWatchData::Ptr& data);
    void scheduleRetry(const QUORDirectoryWatchData::Ptr& data, bool retried);

    const QUORDirectoryWatchData::DirectoryType _type;
    const QUORWatchTiming _timing;
    QUORDirectoryNotifier _notifier;
    /// The directory that the system does not notify of; empty when it does.
    QString _unnotified;
    mutable std::mutex _mutex;
    std::condition_variable _wakeUp;
    /// For the thread sanitizer, which does not see the end of a QThread.
    std::condition_variable _ended;
    bool _running = true;
    bool _finished = false;
    bool _sleeping = false;
    QUORDirectoryWatchData::Ptr _data;
    /// The directory that the notifier watches: not the one under the path when that was replaced.
    QUORDirectoryListing::Identity _watched;
    QStringList _addedQueue;
    QStringList _removedQueue;
    Clock::time_point _retryAt = Clock::time_point::max();
    Clock::time_point _checkAt;
    /// Set while the system does not notify.
    Clock::time_point _pollAt = Clock::time_point::max();
    QUORFileStamp _polled; ///< of the directory; belongs to the thread
};
