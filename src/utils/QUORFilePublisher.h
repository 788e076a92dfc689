// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Makes a file appear whole or not at all. A hidden temporary beside the target is created exclusively
/// (mode 0644, no links followed); `publish` checks it, flushes it and renames it over the target. Not
/// published, it is removed with the object. Used by one thread.
class QUORFilePublisher {
public:
    explicit QUORFilePublisher(const QString& target);
    ~QUORFilePublisher();
    QUORFilePublisher(const QUORFilePublisher&) = delete;
    QUORFilePublisher& operator=(const QUORFilePublisher&) = delete;

    /// False when the temporary could not be created: the folder is missing, read-only or full.
    bool isReady() const { return !_temporary.isEmpty(); }
    /// Where the writer writes; empty when not ready.
    QString getTemporaryPath() const { return _temporary; }
    /// False when the disk has no room for so many bytes, where the file system can tell without a write.
    bool reserve(qint64 bytes);
    /// Puts the content of an open file into the temporary. False when not all of it could be written.
    bool copyFrom(int source);
    /// Renames the temporary over the target. False, and nothing at the target changed, when it is empty,
    /// cannot be flushed or cannot be renamed.
    bool publish(bool sync = true);
    /// Removes the temporaries of more than an hour that processes which live no more have left in a folder.
    static void removeLeftovers(const QString& folder);
    /// The reason of the last failure, for a log line.
    QString getError() const { return _error; }

private:
    QString _target;
    QString _temporary;
    QString _error;
};
