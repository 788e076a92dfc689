// SPDX-License-Identifier: MIT
#pragma once

#include "QUORFileStamp.h"

#include <QString>

#include <chrono>
#include <memory>

/// A file that was not complete when it was looked at. Used by the watcher's thread.
class QUORDirWatchRetryItem {
public:
    using Ptr = std::shared_ptr<QUORDirWatchRetryItem>;

    QUORDirWatchRetryItem(QString name, qint64 size) : _name(std::move(name)), _size(size) {}
    virtual ~QUORDirWatchRetryItem() = default;

    /// Relative to the watched directory.
    QString getName() const { return _name; }
    /// Passes without growth since the file last grew.
    int getRetries() const { return _retries; }
    /// Bytes when the file last grew, or when it was queued.
    qint64 getSize() const { return _size; }

    /// Takes the size of one more pass. Passes follow each other as fast as the directory changes, so one
    /// without growth counts only when the shortest interval has gone by since the last one that did.
    void update(qint64 size, std::chrono::milliseconds shortestInterval) {
        const auto now = std::chrono::steady_clock::now();
        if (size > _size) {
            _retries = 0;
            _size = size;
        } else if (now - _counted < shortestInterval) {
            return;
        } else {
            ++_retries;
        }
        _counted = now;
    }

    /// What was looked at and found unfinished: there is nothing to read before it changes. Unknown where
    /// only a new attempt tells.
    QUORFileStamp getUnfinished() const { return _unfinished; }
    void setUnfinished(const QUORFileStamp& stamp) { _unfinished = stamp; }

private:
    QString _name;
    QUORFileStamp _unfinished;
    int _retries = 0;
    qint64 _size;
    std::chrono::steady_clock::time_point _counted = std::chrono::steady_clock::now();
};
