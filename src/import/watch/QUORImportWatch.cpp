// SPDX-License-Identifier: MIT
#include "QUORImportWatch.h"

#include "QUORDirectoryListing.h"
#include "QUORImportError.h"
#include "QUORSystem.h"

#include <algorithm>
#include <cerrno>
#include <cmath>

namespace {

constexpr int MOST_ATTEMPTS = 10;
/// After which a file that was interrupted each time is left; the pauses grow by the factor.
constexpr int MOST_INTERRUPTIONS = 5;
constexpr int PAUSE_GROWTH = 4;
/// What may wait in memory: volumes to be written, and bytes of pieces to be joined.
constexpr std::size_t MOST_UNWRITTEN = 8;
constexpr std::size_t MOST_TO_JOIN = std::size_t(256) << 20;

} // namespace

QUORImportWatch::QUORImportWatch(const QString& folder, const QString& recordPath, int joinSeconds,
                                 Timing timing, Import import, Report report)
    : _folder(folder),
      _record(recordPath),
      _joiner(joinSeconds),
      _timing(timing),
      _import(std::move(import)),
      _report(std::move(report)),
      _reader(timing.reading),
      _isFirst(_record.isNew()) {}

void QUORImportWatch::look(const QSet<QString>& closed) {
    const QUORDirectoryListing listing(_folder);
    if (!listing.isComplete()) {
        if (listing.getError() == ENOENT) {
            begin(); // what is in it when it comes is new
        }
        if (!_listingFailed) {
            _report({_folder}, QUORSystem::errorText(listing.getError()));
        }
        _listingFailed = true;
        return;
    }
    _listingFailed = false;
    takeList(listing.getNames());
    _waiting = 0;
    _hasMore = false;
    const auto end = Clock::now() + _timing.pass;
    for (const QString& name : listing.getNames()) {
        File& file = _files[name];
        if (isDue(file, closed.contains(name)) && !isFull()) {
            if (Clock::now() < end && !QUORReaderProcess::isEnding()) {
                attempt(name, file);
                importAll(_joiner.takeAlone());
            } else {
                _hasMore = true;
            }
        }
        _waiting += file.state == State::Growing ? 1 : 0;
    }
    if (QUORReaderProcess::isEnding()) {
        return; // what is left is read again at the next start
    }
    importAgain();
    // The rest of a volume may be among what is left.
    if (!_hasMore || isFull()) {
        importAll(_joiner.takeComplete(_timing.quiet));
    }
}

bool QUORImportWatch::isDue(const File& file, bool isClosed) const {
    const auto age = Clock::now() - file.since;
    if (file.state == State::Interrupted) {
        return age >= _timing.interrupted * std::pow(PAUSE_GROWTH, file.interruptions - 1);
    }
    return file.state == State::Growing && (isClosed || age >= _timing.settle);
}

bool QUORImportWatch::isFull() const {
    return _unwritten.size() >= MOST_UNWRITTEN || _joiner.getSize() > MOST_TO_JOIN;
}

/// Brings the files that are known up to date with a listing.
void QUORImportWatch::takeList(const QStringList& names) {
    QHash<QString, File> files;
    for (const QString& name : names) {
        const QUORImportRecord::Stamp stamp = QUORImportRecord::stampOf(pathOf(name));
        const auto known = _files.constFind(name);
        files[name] = known != _files.constEnd() && known->stamp == stamp ? *known : enter(name, stamp);
    }
    _files = std::move(files);
    begin();
}

/// From now on what comes is to be imported, also after a restart.
void QUORImportWatch::begin() {
    if (!_hasBegun) {
        if (const QString error = _record.begin(); !error.isEmpty()) {
            _report({_folder}, error);
        }
    }
    _hasBegun = true;
    _isFirst = false;
}

/// A name that is new, or whose file has changed.
QUORImportWatch::File QUORImportWatch::enter(const QString& name, const QUORImportRecord::Stamp& stamp) {
    for (const File& other : std::as_const(_files)) {
        if (other.stamp == stamp && other.state != State::Growing) {
            if (other.state == State::Taken && !isPending(other.digest)) {
                record(name, stamp, other.digest);
            }
            return other; // renamed
        }
    }
    File file;
    file.stamp = stamp;
    file.since = Clock::now();
    if (_isFirst) {
        record(name, stamp, {});
        file.state = State::Taken;
    } else if (_record.hasFile(name, stamp)) {
        file.state = State::Taken;
    }
    return file;
}

void QUORImportWatch::attempt(const QString& name, File& file) {
    file.state = State::Growing;
    file.digest = QUORImportRecord::digestOf(pathOf(name));
    const bool isDone = _record.hasContent(file.digest);
    if (isDone || isPending(file.digest)) {
        file.state = State::Taken;
        _report({name}, QStringLiteral("not imported again: its content has been imported already"));
        if (isDone) {
            record(name, file.stamp, file.digest);
        }
        return;
    }
    try {
        QUORRadarData data = _reader.read(pathOf(name));
        if (QUORImportRecord::stampOf(pathOf(name)) != file.stamp) {
            return; // it has changed meanwhile, which the next listing shows
        }
        _pending.push_back({name, file.stamp, file.digest});
        file.state = State::Taken;
        _joiner.add(std::move(data), name);
    } catch (const QUORReadingEnded& error) {
        file.attempts = MOST_ATTEMPTS; // it costs too much to be tried again as it is
        fail(name, file, error.getReason());
    } catch (const QUORReadingInterrupted& error) {
        interrupt(name, file, error.getReason());
    } catch (const QUORImportError& error) {
        fail(name, file, error.getReason());
    }
}

void QUORImportWatch::fail(const QString& name, File& file, const QString& reason) {
    file.since = Clock::now();
    if (++file.attempts > MOST_ATTEMPTS) {
        file.state = State::Bad;
        _report({name}, reason);
    }
}

/// One line for each cause.
void QUORImportWatch::interrupt(const QString& name, File& file, const QString& reason) {
    if (QUORReaderProcess::isEnding()) {
        return;
    }
    file.since = Clock::now();
    const int left = MOST_INTERRUPTIONS - ++file.interruptions;
    file.state = left > 0 ? State::Interrupted : State::Bad;
    if (file.interruption != reason) {
        file.interruption = reason;
        _report({name}, left > 0
                            ? reason + QStringLiteral("; it will be tried again, %1 times at most").arg(left)
                            : reason);
    }
}

void QUORImportWatch::importAgain() {
    const auto now = Clock::now();
    for (auto entry = _unwritten.begin(); entry != _unwritten.end();) {
        if (now - entry->since < _timing.again) {
            ++entry;
        } else if (importVolume(entry->volume, false)) {
            entry = _unwritten.erase(entry);
        } else {
            entry->since = now;
            ++entry;
        }
    }
}

void QUORImportWatch::importAll(std::vector<QUORVolumeJoiner::Volume> volumes) {
    for (QUORVolumeJoiner::Volume& volume : volumes) {
        if (!importVolume(volume, true)) {
            _unwritten.push_back({std::move(volume), Clock::now()});
        }
    }
}

/// False when it could not be written and shall be tried again.
bool QUORImportWatch::importVolume(const QUORVolumeJoiner::Volume& volume, bool isFirst) {
    try {
        _import(volume.data, volume.files);
    } catch (const QUORWriteError& error) {
        if (isFirst) {
            _report(volume.files, error.getReason());
        }
        return false;
    } catch (const QUORRequestError& error) {
        // Another start may ask for something else.
        _report(volume.files, error.getReason());
        forget(volume.files, false);
        return true;
    } catch (const QUORImportError& error) {
        _report(volume.files, error.getReason());
    }
    forget(volume.files, true);
    return true;
}

/// Files wait no longer; what is done is not taken again, also under the name that it has now. What is not
/// done is refused.
void QUORImportWatch::forget(const QStringList& names, bool isDone) {
    for (const QString& name : names) {
        const auto pending = std::find_if(_pending.begin(), _pending.end(),
                                          [&](const Pending& other) { return other.name == name; });
        if (pending == _pending.end()) {
            continue;
        }
        if (isDone) {
            record(name, pending->stamp, pending->digest);
        }
        for (auto file = _files.begin(); file != _files.end(); ++file) {
            if (file->digest != pending->digest) {
                continue;
            }
            if (!isDone) {
                file->state = State::Refused;
            } else if (file.key() != name) {
                record(file.key(), file->stamp, file->digest);
            }
        }
        _pending.erase(pending);
    }
}

void QUORImportWatch::record(const QString& name, const QUORImportRecord::Stamp& stamp,
                             const QByteArray& digest) {
    if (const QString error = _record.add(name, stamp, digest); !error.isEmpty()) {
        _report({name}, error);
    }
}

bool QUORImportWatch::isPending(const QByteArray& digest) const {
    return std::any_of(_pending.begin(), _pending.end(),
                       [&](const Pending& pending) { return pending.digest == digest; });
}
