// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QSet>
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
    /// out, and once more of those that were `written`: opening to set the time, as `touch` does, is no
    /// writing. With `lost`, names are missing.
    void changed(const QStringList& names, const QStringList& written, bool lost);

private:
    bool open();
    void read();
    bool isWritten(const QString& name, quint32 event);

    int _queue = -1;
    int _watch = -1;
    QSet<QString> _modified; ///< and not closed yet
    QSocketNotifier* _readable = nullptr;
};
