// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

class QSocketNotifier;

/// Tells of changes in one directory, by inotify. Lives in a thread with an event loop.
class QUORDirectoryNotifier : public QObject {
    Q_OBJECT

public:
    QUORDirectoryNotifier();
    ~QUORDirectoryNotifier() override;

    /// Watches that directory instead of the one before. The system's error number, 0 when it is watched.
    int watch(const QString& path);
    /// False also when the directory was deleted, moved or unmounted.
    bool isWatching() const { return _watch >= 0; }

Q_SIGNALS:
    /// Files came, went, were closed after writing or got other rights: their names, the hidden ones left
    /// out. With `lost`, names are missing.
    void changed(const QStringList& names, bool lost);

private:
    bool open();
    void read();

    int _queue = -1;
    int _watch = -1;
    int _error = 0;
    QSocketNotifier* _readable = nullptr;
};
