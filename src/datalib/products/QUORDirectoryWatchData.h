// SPDX-License-Identifier: MIT
#pragma once

#include "QUORCappedLines.h"
#include "QUORDirTop.h"
#include "QUORDirWatchRetryItem.h"
#include "QUORFileStamp.h"

#include <QHash>
#include <QList>
#include <QMap>
#include <QSet>
#include <QStringList>

#include <atomic>
#include <chrono>
#include <mutex>

class QUORDirectoryListing;

/// How often a watched directory is looked at without being asked to.
struct QUORWatchTiming {
    /// The whole directory, whatever the notifier says.
    std::chrono::milliseconds check{60000};
    /// Files that are still being written.
    std::chrono::milliseconds retry{1000};
    /// So long after its arrival a duplicate is announced when the file that has its place goes.
    std::chrono::milliseconds recent{60000};
    /// A directory that the system does not notify of.
    std::chrono::milliseconds poll{1000};
};

/// One watched directory: its tree, the names of the last listing and the files that wait to be complete.
/// Names that were not in the last listing are new, and so are files that were written or replaced since they
/// were read: at once when a notification names them, otherwise with a check. What is in the directory when
/// it is initialised is not announced, unless it is still being written.
///
/// `initialize` is called before the object is shared. Then the flags may be set and the tree and the path
/// be read by any thread; everything else belongs to the watcher's thread.
class QUORDirectoryWatchData {
public:
    using Ptr = std::shared_ptr<QUORDirectoryWatchData>;
    using CPtr = std::shared_ptr<const QUORDirectoryWatchData>;

    enum DirectoryType { Directory2d = 2, Directory3d = 3 };

    explicit QUORDirectoryWatchData(DirectoryType type, QUORWatchTiming timing = {});
    virtual ~QUORDirectoryWatchData();
    QUORDirectoryWatchData(const QUORDirectoryWatchData&) = delete;
    QUORDirectoryWatchData& operator=(const QUORDirectoryWatchData&) = delete;

    /// One listing serves the tree and the later comparisons. A directory that does not exist is an error
    /// line, an empty tree and not valid, until a check finds it.
    void initialize(const QString& path);

    /// A notification arrived.
    void markDirty();
    /// Files of these names may have been written or replaced; those of `written` were closed after writing.
    void markNotified(const QStringList& names, const QStringList& written);
    /// Files that wait are due.
    void markRetry() { _retry = true; }
    /// Time for a check of everything, notified or not.
    void markForCheck();
    bool isDirty() const { return _dirty; }
    bool isRetry() const { return _retry; }
    bool isValid() const { return _valid; }
    /// Absolute; empty when there is none.
    QString getPath() const { return _path; }
    /// Null for an unknown type only.
    QUORDirTop::Ptr getTree() const { return _tree; }
    /// How many files wait to be complete.
    int getWaiting() const { return _waiting; }
    /// Something is to be looked at again after the retry interval.
    bool needsRetry() const { return _waiting > 0 || _listingFailed; }

    /// One pass: takes the flags, compares the directory with the last listing and brings the tree up to
    /// date. After a change the directory stays dirty, for one more look. False when it does not exist.
    bool checkUpdates();
    /// Compares with the last listing; a listing that fails is no change.
    bool isChanged();
    void refresh();
    void addFilesToDir();
    void removeFilesFromDir();
    void doRetries();
    int getRefreshes() const { return _refreshes; }
    /// The names added to the tree and removed from it, each handed out once.
    QStringList takeAddedNames() { return std::exchange(_addedNames, {}); }
    QStringList takeRemovedNames() { return std::exchange(_removedNames, {}); }

private:
    using Stamp = QUORFileStamp;
    using Clock = std::chrono::steady_clock;

    struct Duplicate {
        QString holder; ///< the name of the file that has its place in the tree
        Stamp stamp;
        /// Until then it counts as an arrival; what was there at the start never does.
        Clock::time_point freshUntil = Clock::time_point::min();
    };

    /// A file that was given up.
    struct Discarded {
        Stamp stamp;
        bool unreadable = false;
    };

    struct Notified {
        QStringList names;
        QStringList written; ///< those that were closed after writing
    };

    QUORDirTop::Ptr dirFactory(const QStringList& names, QUORDirTop::LeftOut& leftOut) const;
    void scan();
    bool revive();
    void noteListing(const QUORDirectoryListing& listing);
    QString pathOf(const QString& name) const;
    Stamp stampOf(const QString& name) const;
    Notified takeNotified();
    QSet<QString> getWaitingNames(bool none) const;
    bool lookAtWritten(const Notified& notified);
    void noteWriting(const QString& name);
    bool isWrittenAnew(const QString& name) const;
    void checkStamps();
    QUORDirTop::Result addToTree(const QString& name, Clock::time_point freshUntil);
    QUORDirTop::Result judgeIssue(const QString& name, QUORDirTop::Result result, bool isSame);
    void noteIssue(const QUORFileLeaf& before, const QString& name, QUORDirTop::Result result);
    void removeLost();
    bool retryFile(QUORDirWatchRetryItem& item);
    QUORDirTop::Result readAgain(QUORDirWatchRetryItem& item, const Stamp& stamp);
    void giveUp(const QString& name, const Stamp& stamp, QUORDirTop::Result result);
    void wait(const QString& name);
    void setWaiting(QList<QUORDirWatchRetryItem::Ptr> items);
    void stopWaiting(const QStringList& names);
    QStringList addAll(const QStringList& names);
    void fillPlacesOf(const QStringList& removed);
    QMap<QString, Duplicate> takeDuplicatesOf(const QStringList& names);
    void discard(const QString& name, const Stamp& stamp, bool unreadable);
    QStringList readable(QStringList names) const;
    void explainFirst(const QStringList& discarded);
    bool isReadableAgain(const QString& name, const Discarded& entry) const;
    bool reconsiderDiscarded();

    const DirectoryType _type;
    const QUORWatchTiming _timing;
    std::atomic<bool> _valid{false};
    std::atomic<bool> _dirty{false};
    std::atomic<bool> _retry{false};
    std::atomic<bool> _check{false};
    QUORDirTop::Ptr _tree;
    QString _path;
    QStringList _snapshot;
    QStringList _addedNames;
    QStringList _removedNames;
    /// Listed as before, but written or replaced since they were read.
    QStringList _writtenNames;
    /// Files of the tree that were written since they were read, whatever their stamps say.
    QSet<QString> _overwritten;
    /// Files of the tree that hold another product, or none, by now.
    QStringList _lostNames;
    QList<QUORDirWatchRetryItem::Ptr> _retryItems;
    bool _explained = false;
    QUORCappedLines _exhausted;
    QUORCappedLines _discardedRetries;
    std::atomic<int> _waiting{0};
    std::atomic<bool> _listingFailed{false};
    /// Files whose place in the tree a duplicate took before their removal was seen.
    QSet<QString> _replaced;
    /// Tried again when the file that has their place is removed.
    QHash<QString, Duplicate> _duplicates;
    /// Unreadable or unfinished files that were given up: when a check finds them changed, or readable again,
    /// they wait again.
    QHash<QString, Discarded> _discarded;
    bool _gone = false;
    bool _unreadableNamesLogged = false;
    std::atomic<int> _notifications{0};
    int _refreshes = 0;
    /// Where the next check of the stamps begins.
    qsizetype _nextStamp = 0;
    std::mutex _notifiedMutex;
    Notified _notified; ///< guarded by it
};
