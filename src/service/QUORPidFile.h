// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// The file that holds a daemon's process id, and the lock on it: one daemon at a time works under one
/// file. The lock belongs to the open file, so that a child keeps what its parent took; the system frees it
/// when the last of them has ended, however that was. Used on the main thread.
class QUORPidFile {
public:
    enum Result {
        Locked,
        Taken,  ///< another process holds the lock
        Failed, ///< see getError
    };

    QUORPidFile() = default;
    /// Removes the file that this process has written, unless another stands in its place.
    ~QUORPidFile();
    QUORPidFile(const QUORPidFile&) = delete;
    QUORPidFile& operator=(const QUORPidFile&) = delete;

    /// Opens and locks the file, which is made where it is missing; a link is not followed. Its content
    /// stays until `write`.
    Result lock(const QString& path);
    /// The id of this process and a line end, readable by all; false when the disk does not take it.
    bool write();
    /// Of the process that wrote what stands in the file; 0 for none.
    qint64 readPid() const;
    QString getError() const { return _error; }

private:
    bool isStillThere() const;

    QString _path;
    QString _error;
    int _descriptor = -1;
    bool _written = false;
};
