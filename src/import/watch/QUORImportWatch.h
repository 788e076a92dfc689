// SPDX-License-Identifier: MIT
#pragma once

#include "QUORImportRecord.h"
#include "QUORReaderProcess.h"
#include "QUORVolumeJoiner.h"

#include <QHash>
#include <QSet>

#include <chrono>
#include <functional>
#include <list>

/// Follows a folder of radar data as the service follows its product folders: hidden names and links are not
/// looked at, a file that grows is waited for, one that is renamed or copied is not taken twice, one that
/// comes again with other content is, a bad one costs one line.
///
/// What is read is bounded: a volume that needs no other file is imported before the next file is read, and
/// while much waits to be joined or written, no more is read.
///
/// `look` makes one pass; who calls it decides when. Used by one thread, in a process without others.
class QUORImportWatch {
public:
    struct Timing {
        /// A file that nobody told to be complete is tried when it has been the same for so long.
        std::chrono::milliseconds settle{1000};
        /// A volume of single sweeps is complete when no sweep came for so long.
        std::chrono::milliseconds quiet{60000};
        /// What could not be written is tried again.
        std::chrono::milliseconds again{60000};
        /// What was interrupted while it was read is tried again, then after four times as long, and so on.
        std::chrono::milliseconds interrupted{60000};
        /// One pass begins to read no further file after so long, so that others have their turn.
        std::chrono::milliseconds pass{2000};
        /// Of one attempt to read a file.
        QUORReaderProcess::Limits reading{};
    };
    /// Makes products; throws a QUORImportError.
    using Import = std::function<void(const QUORRadarData& data, const QStringList& files)>;
    /// One line about files, for the log.
    using Report = std::function<void(const QStringList& files, const QString& reason)>;

    /// The record lies in `recordPath`. Without one, what is in the folder at the first look is known and not
    /// imported, unless `takeExisting`.
    QUORImportWatch(const QString& folder, const QString& recordPath, int joinSeconds, Timing timing,
                    Import import, Report report);

    void takeExisting() { _isFirst = false; }
    /// One pass. `closed` are names that a writer has just closed or renamed into place.
    void look(const QSet<QString>& closed);
    /// The last pass left complete files for the next one.
    bool hasMore() const { return _hasMore; }
    /// Something is to be looked at again soon.
    bool isWaiting() const { return _waiting > 0 || !_joiner.isEmpty() || !_unwritten.empty(); }

private:
    using Clock = std::chrono::steady_clock;
    /// Refused by the options is what another start may take.
    enum class State { Growing, Interrupted, Taken, Refused, Bad };
    struct File {
        QUORImportRecord::Stamp stamp;
        State state = State::Growing;
        Clock::time_point since; ///< of the stamp, or of the last attempt
        int attempts = 0;        ///< that failed since it last changed
        QByteArray digest;
        int interruptions = 0;
        QString interruption; ///< that has been reported
    };
    /// A file that waits for the rest of its volume, as it was read; it may have another name meanwhile.
    struct Pending {
        QString name;
        QUORImportRecord::Stamp stamp;
        QByteArray digest;
    };
    struct Unwritten {
        QUORVolumeJoiner::Volume volume;
        Clock::time_point since;
    };

    void takeList(const QStringList& names);
    void begin();
    File enter(const QString& name, const QUORImportRecord::Stamp& stamp);
    bool isDue(const File& file, bool isClosed) const;
    bool isFull() const;
    void attempt(const QString& name, File& file);
    void interrupt(const QString& name, File& file, const QString& reason);
    void fail(const QString& name, File& file, const QString& reason);
    void importAgain();
    void importAll(std::vector<QUORVolumeJoiner::Volume> volumes);
    bool importVolume(const QUORVolumeJoiner::Volume& volume, bool isFirst);
    void forget(const QStringList& names, bool isDone);
    void record(const QString& name, const QUORImportRecord::Stamp& stamp, const QByteArray& digest);
    bool isPending(const QByteArray& digest) const;
    QString pathOf(const QString& name) const { return _folder + QLatin1Char('/') + name; }

    QString _folder;
    QUORImportRecord _record;
    QUORVolumeJoiner _joiner;
    Timing _timing;
    Import _import;
    Report _report;
    QUORReaderProcess _reader;
    QHash<QString, File> _files;
    std::list<Pending> _pending;
    std::list<Unwritten> _unwritten;
    bool _isFirst;
    bool _hasBegun = false;
    bool _listingFailed = false;
    int _waiting = 0;
    bool _hasMore = false;
};
