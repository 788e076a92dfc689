// SPDX-License-Identifier: MIT
#include "QUORImportWatch.h"

#include "QUORDirectoryListing.h"
#include "QUORImportError.h"
#include "QUORRadarReader.h"
#include "QUORSystem.h"

#include <algorithm>
#include <cerrno>
#include <cmath>

namespace {

constexpr int MOST_ATTEMPTS = 10;
/// After which a file that was interrupted each time is left; the pauses grow by the factor.
constexpr int MOST_INTERRUPTIONS = 5;
constexpr int PAUSE_GROWTH = 4;
/// So many end a round over what was refused before: each costs as much as an import.
constexpr int MOST_REFUSALS = 8;

} // namespace

QUORImportWatch::QUORImportWatch(const QString& folder, const QString& recordPath, int joinSeconds,
                                 const Limits& limits, Import import, Report report)
    : _folder(folder),
      _record(recordPath),
      _joiner(joinSeconds),
      _limits(limits),
      _import(std::move(import)),
      _report(std::move(report)),
      _reader(limits.reading),
      _isFirst(_record.isNew()) {}

void QUORImportWatch::look(const QSet<QString>& closed) {
    _hasMore = false;
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
    importAgain();
    const bool isAllRead = readDue(listing.getNames(), closed);
    // The rest of a volume may be among what is left.
    if (isAllRead && _complete.empty()) {
        auto volumes = _joiner.takeComplete(_limits.quiet);
        std::move(volumes.begin(), volumes.end(), std::back_inserter(_complete));
    }
    importComplete();
}

/// False when the time of this pass ended before.
bool QUORImportWatch::readDue(const QStringList& names, const QSet<QString>& closed) {
    bool isAllRead = true;
    _waiting = 0;
    const auto end = Clock::now() + _limits.pass;
    for (const QString& name : names) {
        File& file = _files[name];
        file.isClosed = file.isClosed || closed.contains(name);
        if (isDue(file)) {
            if (Clock::now() < end && !QUORReaderProcess::isEnding()) {
                attempt(name, file);
            } else {
                isAllRead = false;
            }
        }
        _waiting += file.state == State::Growing ? 1 : 0;
    }
    _hasMore = _hasMore || !isAllRead;
    return isAllRead;
}

bool QUORImportWatch::isDue(const File& file) const {
    const auto age = Clock::now() - file.since;
    if (file.state == State::Interrupted) {
        return age >= _limits.interrupted * std::pow(PAUSE_GROWTH, file.interruptions - 1);
    }
    return file.state == State::Growing && (file.isClosed || age >= _limits.settle);
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
    file.isClosed = false;
    file.digest = file.stamp.size <= QUORRadarReader::LARGEST_FILE ? QUORImportRecord::digestOf(pathOf(name))
                                                                   : QByteArray();
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
        if (QUORVolumeJoiner::mayJoin(data)) {
            hold(data);
            _joiner.add(std::move(data), name);
        } else {
            importFirst({std::move(data), {name}});
        }
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

/// One line for each cause, and one when it is given up.
void QUORImportWatch::interrupt(const QString& name, File& file, const QString& reason) {
    if (QUORReaderProcess::isEnding()) {
        return;
    }
    file.since = Clock::now();
    const int left = MOST_INTERRUPTIONS - ++file.interruptions;
    file.state = left > 0 ? State::Interrupted : State::Bad;
    if (left == 0) {
        _report({name}, reason + QStringLiteral("; given up, it will not be tried again until it changes"));
    } else if (file.interruption != reason) {
        _report({name}, reason + QStringLiteral("; it will be tried again, %1 times at most").arg(left));
    }
    file.interruption = reason;
}

/// Without values when memory has no room for them.
void QUORImportWatch::hold(QUORRadarData& data) const {
    std::size_t held = _joiner.getSize();
    for (const auto* volumes : {&_complete, &_unwritten}) {
        for (const Volume& volume : *volumes) {
            held += volume.data.size();
        }
    }
    if (held + data.size() > _limits.memory) {
        data.dropValues();
    }
}

void QUORImportWatch::importComplete() {
    const auto end = Clock::now() + _limits.pass;
    while (!_complete.empty() && !QUORReaderProcess::isEnding()) {
        if (Clock::now() >= end) {
            _hasMore = true;
            return;
        }
        Volume volume = std::move(_complete.front());
        _complete.pop_front();
        importFirst(std::move(volume));
    }
}

void QUORImportWatch::importAgain() {
    if (Clock::now() < _again) {
        return;
    }
    int refusals = 0;
    const auto end = Clock::now() + _limits.pass;
    for (std::size_t left = _unwritten.size(); left > 0 && refusals < MOST_REFUSALS; --left) {
        if (QUORReaderProcess::isEnding()) {
            return;
        }
        Volume volume = std::move(_unwritten.front());
        _unwritten.pop_front();
        if (!importVolume(volume, false)) {
            ++refusals;
            hold(volume.data);
            _unwritten.push_back(std::move(volume));
        } else if (Clock::now() >= end) {
            _hasMore = true;
            return;
        }
    }
    _again = Clock::now() + _limits.again;
}

void QUORImportWatch::importFirst(Volume volume) {
    if (!importVolume(volume, true)) {
        hold(volume.data);
        _unwritten.push_back(std::move(volume));
    }
}

/// Puts the values of a volume's files in; false when none can be read any more.
bool QUORImportWatch::readAgain(Volume& volume) {
    Volume whole;
    volume.data.dropValues();
    for (const QString& name : QStringList(volume.files)) {
        try {
            QUORRadarData data = readPiece(name);
            if (whole.files.isEmpty()) {
                whole = {std::move(data), {name}};
            } else {
                QUORVolumeJoiner::append(whole, std::move(data), name);
            }
        } catch (const QUORReadingInterrupted&) {
            throw;
        } catch (const QUORImportError& error) {
            _report({name}, error.getReason());
            forget({name}, false);
            volume.files.removeOne(name);
        }
    }
    volume = std::move(whole);
    return !volume.files.isEmpty();
}

/// Under the name that it has now.
QUORRadarData QUORImportWatch::readPiece(const QString& name) const {
    const auto pending = std::find_if(_pending.begin(), _pending.end(),
                                      [&](const Pending& other) { return other.name == name; });
    for (auto file = _files.cbegin(); pending != _pending.end() && file != _files.cend(); ++file) {
        const QString path = pathOf(file.key());
        if (file->digest == pending->digest && QUORImportRecord::stampOf(path) == file->stamp) {
            QUORRadarData data = _reader.read(path);
            if (QUORImportRecord::stampOf(path) == file->stamp) {
                return data;
            }
        }
    }
    throw QUORImportError(QStringLiteral("gone or changed before its volume was made"));
}

/// False when it could not be read or written now and shall be tried again.
bool QUORImportWatch::importVolume(Volume& volume, bool isFirst) {
    try {
        if (!volume.data.hasValues && !readAgain(volume)) {
            return true;
        }
        _import(volume.data, volume.files);
    } catch (const QUORReadingInterrupted& error) {
        if (isFirst && !QUORReaderProcess::isEnding()) {
            _report(volume.files, error.getReason());
        }
        return false;
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
