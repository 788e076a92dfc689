// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDirectoryListing.h"
#include "StopSignals.h"

#include <QString>

#include <chrono>

/// Sleeps until files come or go in a folder, a time has passed or the process is asked to end. While it
/// lives, SIGINT and SIGTERM are answers of `wait`. A folder that is not there yet, or becomes another one,
/// is found when the time has passed. For programs of one thread.
class FolderWait {
public:
    enum class Reason { Changed, TimedOut, AskedToEnd };

    explicit FolderWait(const QString& folder);
    ~FolderWait();
    FolderWait(const FolderWait&) = delete;
    FolderWait& operator=(const FolderWait&) = delete;

    /// Changes that came since the last call count at once; those that follow shortly count with them.
    Reason wait(std::chrono::milliseconds most);

private:
    void follow();
    bool poll(std::chrono::milliseconds most, Reason& reason);

    QString _folder;
    QUORDirectoryListing::Identity _identity;
    StopSignals _signals;
    int _changes = -1;
};
