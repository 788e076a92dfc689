// SPDX-License-Identifier: MIT
#pragma once

#include <QSet>
#include <QString>

#include <chrono>

/// Waits for changes of a folder and for the signals that end a program. The folder may vanish, be replaced
/// or come later. Used by one thread; blocks SIGINT and SIGTERM for the process.
class QUORFolderEvents {
public:
    explicit QUORFolderEvents(const QString& folder);
    ~QUORFolderEvents();
    QUORFolderEvents(const QUORFolderEvents&) = delete;
    QUORFolderEvents& operator=(const QUORFolderEvents&) = delete;

    /// Until something happens or the time is over. Names of files that were closed by a writer or renamed
    /// into the folder.
    QSet<QString> wait(std::chrono::milliseconds most);
    bool isStopped() const { return _stopped; }

private:
    void watchFolder();
    QSet<QString> readEvents();

    QString _folder;
    int _notifier;
    int _signals;
    int _watch = -1;
    std::pair<quint64, quint64> _identity{0, 0};
    bool _stopped = false;
};
