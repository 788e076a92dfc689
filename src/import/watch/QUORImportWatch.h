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
/// Memory is bounded: a volume that needs no other file is imported before the next file is read, and of what
/// waits to be joined or written, only so many values are held; the others are read again.
///
/// `look` makes one pass; who calls it decides when. Used by one thread, in a process without others.
class QUORImportWatch {
public:
    struct Limits {
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
        /// Values that are held for what waits to be joined or written, bytes.
        std::size_t memory = std::size_t(256) << 20;
    };
    /// Makes products; throws a QUORImportError.
    using Import = std::function<void(const QUORRadarData& data, const QStringList& files)>;
    /// One line about files, for the log.
    using Report = std::function<void(const QStringList& files, const QString& reason)>;

    /// The record lies in `recordPath`. Without one, what is in the folder at the first look is known and not
    /// imported, unless `takeExisting`.
    QUORImportWatch(const QString& folder, const QString& recordPath, int joinSeconds, const Limits& limits,
                    Import import, Report report);

    void takeExisting() { _isFirst = false; }
    /// One pass. `closed` are names that a writer has just closed or renamed into place.
    void look(const QSet<QString>& closed);
    /// The last pass left for the next one what can be done at once.
    bool hasMore() const { return _hasMore; }
    /// Something is to be looked at again soon.
    bool isWaiting() const {
        return _waiting > 0 || !_joiner.isEmpty() || !_complete.empty() || !_unwritten.empty();
    }

private:
    using Clock = std::chrono::steady_clock;
    /// Refused by the options is what another start may take.
    enum class State { Growing, Interrupted, Taken, Refused, Bad };
    struct File {
        QUORImportRecord::Stamp stamp;
        State state = State::Growing;
        Clock::time_point since; ///< of the stamp, or of the last attempt
        bool isClosed = false;   ///< by its writer, since then
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
    using Volume = QUORVolumeJoiner::Volume;

    void takeList(const QStringList& names);
    void begin();
    File enter(const QString& name, const QUORImportRecord::Stamp& stamp);
    bool isDue(const File& file) const;
    bool readDue(const QStringList& names, const QSet<QString>& closed);
    void attempt(const QString& name, File& file);
    void interrupt(const QString& name, File& file, const QString& reason);
    void fail(const QString& name, File& file, const QString& reason);
    void hold(QUORRadarData& data) const;
    void importComplete();
    void importAgain();
    void importFirst(Volume volume);
    bool importVolume(Volume& volume, bool isFirst);
    bool readAgain(Volume& volume);
    QUORRadarData readPiece(const QString& name) const;
    void forget(const QStringList& names, bool isDone);
    void record(const QString& name, const QUORImportRecord::Stamp& stamp, const QByteArray& digest);
    bool isPending(const QByteArray& digest) const;
    QString pathOf(const QString& name) const { return _folder + QLatin1Char('/') + name; }

    QString _folder;
    QUORImportRecord _record;
    QUORVolumeJoiner _joiner;
    Limits _limits;
    Import _import;
    Report _report;
    QUORReaderProcess _reader;
    QHash<QString, File> _files;
    std::list<Pending> _pending;
    std::list<Volume> _complete;
    std::list<Volume> _unwritten; ///< that were refused once
    Clock::time_point _again;     ///< the next round over these
    bool _isFirst;
    bool _hasBegun = false;
    bool _listingFailed = false;
    int _waiting = 0;
    bool _hasMore = false;
};
