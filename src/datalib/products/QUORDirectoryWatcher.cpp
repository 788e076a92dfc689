// SPDX-License-Identifier: MIT
#include "QUORDirectoryWatcher.h"

#include "QUORLog.h"
#include "QUORSystem.h"
#include "QUORThreadStart.h"

#include <QDateTime>
#include <QDir>

#include <algorithm>
#include <cerrno>
#include <exception>

namespace {

/// So many changes of a burst are seen at once.
constexpr unsigned long SETTLE_MILLISECONDS = 10;

/// Why the system does not notify, and which of its limits to raise.
QString describeNotifierError(int error) {
    const QString reason = QUORSystem::errorText(error);
    return error == EMFILE   ? reason + QStringLiteral(", see fs.inotify.max_user_instances")
           : error == ENOSPC ? reason + QStringLiteral(", see fs.inotify.max_user_watches")
                             : reason;
}

void logNotificationTime() {
    logDebug(QStringLiteral("Notification time: ") + QDateTime::currentDateTime().toString(Qt::TextDate));
}

} // namespace

QUORDirectoryWatcher::QUORDirectoryWatcher(const QString& path, QUORDirectoryWatchData::DirectoryType type,
                                           QUORWatchTiming timing)
    : _type(type), _timing(timing), _checkAt(Clock::now() + timing.check) {
    const QUORLogScope scope("QUORDirectoryWatcher::QUORDirectoryWatcher");
    QUORLog::Instance().logNotice(
        QStringLiteral("QUORDirectoryWatcher: Directory watcher created for path: ") + path);
    connect(&_notifier, &QUORDirectoryNotifier::changed, this, &QUORDirectoryWatcher::noteChanges);
    _data = load(path);
    QUORThreadStart::start(*this, "watcher");
}

QUORDirectoryWatcher::~QUORDirectoryWatcher() {
    logDebug(QStringLiteral("QUORDirectoryWatcher::~QUORDirectoryWatcher() called.."));
    stop();
    logDebug(QStringLiteral("QUORDirectoryWatcher::~QUORDirectoryWatcher() finished."));
}

/// Watches first, lists then, and has the thread look once more: nothing arrives unseen in between.
QUORDirectoryWatchData::Ptr QUORDirectoryWatcher::load(const QString& path) {
    watch(path.isEmpty() ? path : QDir(path).absolutePath());
    auto data = std::make_shared<QUORDirectoryWatchData>(_type, _timing);
    data->initialize(path);
    if (data->isValid()) {
        logDebug(QStringLiteral(".... Now watching directory ") + data->getPath());
    }
    data->markForCheck();
    return data;
}

bool QUORDirectoryWatcher::watch(const QString& path) {
    const QUORDirectoryListing::Identity identity = QUORDirectoryListing::identify(path);
    const bool exists = identity != QUORDirectoryListing::Identity();
    const int error = exists ? _notifier.watch(path) : ENOENT;
    if (exists) {
        noteNotification(path, error);
    }
    const std::lock_guard lock(_mutex);
    _watched = error == 0 ? identity : QUORDirectoryListing::Identity();
    const bool polls = exists && error != 0;
    _pollAt = !polls ? Clock::time_point::max() : std::min(_pollAt, Clock::now() + _timing.poll);
    return error == 0;
}

void QUORDirectoryWatcher::noteNotification(const QString& path, int error) {
    if (error != 0 && _unnotified != path) {
        QUORLog::Instance().logError(QStringLiteral("Changes are not notified (") +
                                     describeNotifierError(error) +
                                     QStringLiteral("), the directory is looked at every second instead, and "
                                                    "every minute for files written in place: ") +
                                     path);
    } else if (error == 0 && _unnotified == path) {
        QUORLog::Instance().logError(QStringLiteral("Changes are notified again: ") + path);
    }
    _unnotified = error == 0 ? QString() : path;
}

void QUORDirectoryWatcher::watchAgain(const QUORDirectoryWatchData::Ptr& data) {
    {
        const std::lock_guard lock(_mutex);
        if (data != _data) {
            return;
        }
    }
    if (watch(data->getPath())) {
        const std::lock_guard lock(_mutex);
        data->markForCheck();
        _wakeUp.notify_one();
    }
}

QString QUORDirectoryWatcher::getAddedFile() {
    const std::lock_guard lock(_mutex);
    return _addedQueue.isEmpty() ? QString() : _addedQueue.takeFirst();
}

QString QUORDirectoryWatcher::getRemovedFile() {
    const std::lock_guard lock(_mutex);
    return _removedQueue.isEmpty() ? QString() : _removedQueue.takeFirst();
}

QUORDirTop::Ptr QUORDirectoryWatcher::getTree() const {
    const std::lock_guard lock(_mutex);
    return _data->getTree();
}

void QUORDirectoryWatcher::stop() {
    const bool started = isRunning();
    {
        std::unique_lock lock(_mutex);
        _running = false;
        _wakeUp.notify_one();
        _ended.wait(lock, [this, started] { return _finished || !started; });
    }
    QThread::wait();
}

void QUORDirectoryWatcher::noteChanges(const QStringList& names, const QStringList& written, bool lost) {
    QString path;
    {
        const std::lock_guard lock(_mutex);
        path = _data->getPath();
        _data->markNotified(names, written);
        if (lost) {
            _data->markForCheck();
        }
    }
    directoryChanged(path);
}

void QUORDirectoryWatcher::directoryChanged(const QString& path) {
    const QUORLogScope scope("QUORDirectoryWatcher::directoryChanged");
    logNotificationTime();
    logDebug(QStringLiteral("Changed directory: ") + path);
    const bool watched = _notifier.isWatching();
    const std::lock_guard lock(_mutex);
    if (path == _data->getPath()) {
        _data->markDirty();
        if (!watched) {
            // Deleted or unmounted. What takes its place may have the same identity.
            _watched = {};
        }
    }
    if (_sleeping) {
        _wakeUp.notify_one();
    }
}

void QUORDirectoryWatcher::retryTimerExpired() {
    const QUORLogScope scope("QUORDirectoryWatcher::retryTimerExpired");
    logNotificationTime();
    const std::lock_guard lock(_mutex);
    if (_data->needsRetry()) {
        _data->markRetry();
    }
    if (_sleeping) {
        _wakeUp.notify_one();
    }
}

void QUORDirectoryWatcher::pathChanged(const QString& path) {
    logDebug(QStringLiteral("Change directory path to ") + path);
    const QUORDirectoryWatchData::Ptr data = load(path);
    const std::lock_guard lock(_mutex);
    _data = data;
    _addedQueue.clear();
    _removedQueue.clear();
    _retryAt = Clock::time_point::max();
    _wakeUp.notify_one();
}

void QUORDirectoryWatcher::run() {
    while (const QUORDirectoryWatchData::Ptr data = waitForWork()) {
        try {
            work(data);
        } catch (const std::exception& error) {
            QUORLog::Instance().logError(QStringLiteral("QUORDirectoryWatcher::run(): ") +
                                         QString::fromLocal8Bit(error.what()));
        }
    }
    const std::lock_guard lock(_mutex);
    _finished = true;
    _ended.notify_all();
}

/// The data when there is something to do; null when the thread shall end.
QUORDirectoryWatchData::Ptr QUORDirectoryWatcher::waitForWork() {
    std::unique_lock lock(_mutex);
    while (_running) {
        // The deadlines first: a directory that is dirty all the time must not put them off.
        const Clock::time_point now = Clock::now();
        if (now >= _checkAt) {
            _checkAt = now + _timing.check;
            _data->markForCheck();
        }
        if (now >= _pollAt) {
            _pollAt = now + _timing.poll;
            const QUORDirectoryWatchData::Ptr data = _data;
            lock.unlock();
            poll(data);
            lock.lock();
        } else if (now >= _retryAt) {
            _retryAt = Clock::time_point::max();
            lock.unlock();
            retryTimerExpired();
            lock.lock();
        } else if (_data->isDirty() || _data->isRetry()) {
            return _data;
        } else {
            _sleeping = true;
            logDebug(QStringLiteral("QUORDirectoryWatcher: Directories clean - going to sleep"));
            _wakeUp.wait_until(lock, std::min({_checkAt, _retryAt, _pollAt}));
            _sleeping = false;
            logDebug(QStringLiteral("QUORDirectoryWatcher: --- WAKE UP --"));
        }
    }
    return nullptr;
}

/// The directory's own times tell of names that came or went; a file that took another's name may have
/// another content, so that the stamps are looked at as well.
void QUORDirectoryWatcher::poll(const QUORDirectoryWatchData::Ptr& data) {
    const QUORFileStamp stamp = QUORFileStamp::ofLink(data->getPath() + QStringLiteral("/."));
    if (stamp != _polled) {
        _polled = stamp;
        data->markForCheck();
    }
}

void QUORDirectoryWatcher::work(const QUORDirectoryWatchData::Ptr& data) {
    QThread::msleep(SETTLE_MILLISECONDS);
    followDirectory(data);
    const int refreshes = data->getRefreshes();
    data->checkUpdates();
    const int queued = queueOut(data);
    scheduleRetry(data, data->getRefreshes() != refreshes);
    if (queued > 0) {
        logDebug(QStringLiteral("FILES QUEUED (") + QString::number(queued) + QLatin1Char(')'));
        Q_EMIT newFiles();
    }
}

/// A directory that was replaced, mounted over, or that came back is silent until it is watched anew.
void QUORDirectoryWatcher::followDirectory(const QUORDirectoryWatchData::Ptr& data) {
    const QUORDirectoryListing::Identity identity = QUORDirectoryListing::identify(data->getPath());
    const std::lock_guard lock(_mutex);
    if (identity != _watched) {
        QMetaObject::invokeMethod(
            this, [this, data] { watchAgain(data); }, Qt::QueuedConnection);
    }
}

int QUORDirectoryWatcher::queueOut(const QUORDirectoryWatchData::Ptr& data) {
    const QStringList added = data->takeAddedNames();
    const QStringList removed = data->takeRemovedNames();
    const std::lock_guard lock(_mutex);
    if (data != _data) {
        return 0;
    }
    const QString folder = data->getPath() + QLatin1Char('/');
    for (const QString& name : added) {
        _addedQueue.append(folder + name);
    }
    for (const QString& name : removed) {
        _removedQueue.append(folder + name);
    }
    return int(added.size() + removed.size());
}

/// A busy directory must not put the retry off for ever: only a pass that did the retries does.
void QUORDirectoryWatcher::scheduleRetry(const QUORDirectoryWatchData::Ptr& data, bool retried) {
    const std::lock_guard lock(_mutex);
    if (!data->needsRetry()) {
        _retryAt = Clock::time_point::max();
    } else if (retried || _retryAt == Clock::time_point::max()) {
        logDebug(QStringLiteral("ITEMS IN RETRY QUEUE - STARTING TIMER ") +
                 QString::number(data->getWaiting()));
        _retryAt = Clock::now() + _timing.retry;
    }
}
