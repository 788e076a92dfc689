// SPDX-License-Identifier: MIT
#include "QUORDirectoryWatchData.h"

#include "QUOR2DTop.h"
#include "QUOR3DTop.h"
#include "QUORDirectoryListing.h"
#include "QUORLog.h"
#include "QUORSystem.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <iterator>
#include <sys/stat.h>

namespace {

constexpr int MOST_RETRIES = 10;
/// A directory full of other files costs so many lines, and one more for the rest.
constexpr int MOST_DISCARD_LINES = 20;
const QString DISCARDED = QStringLiteral("INCOMING FILE DISCARDED: (INVALID OR NO PERMISSIONS): ");

/// What the first list has and the second has not; both ascending.
QStringList difference(const QStringList& first, const QStringList& second) {
    QStringList result;
    std::set_difference(first.begin(), first.end(), second.begin(), second.end(), std::back_inserter(result));
    return result;
}

bool isUnfinished(QUORDirTop::Result result) {
    return result == QUORDirTop::ResultNoData || result == QUORDirTop::ResultIncomplete ||
           result == QUORDirTop::ResultNotReadable;
}

void logDiscarded(const QStringList& names) {
    for (const QString& name : names.mid(0, MOST_DISCARD_LINES)) {
        logWarning(DISCARDED + name);
    }
    if (const qsizetype rest = names.size() - MOST_DISCARD_LINES; rest > 0) {
        logWarning(DISCARDED + QString::number(rest) + QStringLiteral(" more files"));
    }
}

} // namespace

QUORDirectoryWatchData::QUORDirectoryWatchData(DirectoryType type, QUORWatchTiming timing)
    : _type(type), _timing(timing) {}

QUORDirectoryWatchData::~QUORDirectoryWatchData() = default;

void QUORDirectoryWatchData::initialize(const QString& path) {
    _path = path.isEmpty() ? path : QDir(path).absolutePath();
    const QUORDirectoryListing listing(_path);
    _snapshot = listing.getNames();
    scan();
    _gone = listing.isGone();
    _valid = _tree && !_gone;
    if (_valid) {
        noteListing(listing);
    } else if (!path.isEmpty()) {
        QUORLog::Instance().logError(
            QStringLiteral("QUORDirectoryWatchData::initialize(): Not a valid directory: ") + path);
    }
}

void QUORDirectoryWatchData::scan() {
    // As before the files are read, so that a change during the scan is seen as one.
    QHash<QString, Stamp> stamps;
    for (const QString& name : std::as_const(_snapshot)) {
        stamps.insert(name, stampOf(name));
    }
    QUORDirTop::LeftOut leftOut;
    _tree = dirFactory(_snapshot, leftOut);
    for (const QString& name : std::as_const(leftOut.unfinished)) {
        wait(name);
    }
    for (const QString& name : std::as_const(leftOut.discarded)) {
        discard(name, stamps.value(name), !QUORFile::canBeRead(pathOf(name)));
    }
    logDiscarded(leftOut.discarded);
    for (auto entry = leftOut.duplicates.cbegin(); entry != leftOut.duplicates.cend(); ++entry) {
        _duplicates.insert(entry.key(), {entry.value()});
    }
}

QUORDirTop::Ptr QUORDirectoryWatchData::dirFactory(const QStringList& names,
                                                   QUORDirTop::LeftOut& leftOut) const {
    switch (_type) {
    case Directory3d:
        return std::make_shared<QUOR3DTop>(_path, names, leftOut);
    case Directory2d:
        return std::make_shared<QUOR2DTop>(_path, names, leftOut);
    }
    return nullptr;
}

void QUORDirectoryWatchData::markDirty() {
    ++_notifications;
    _dirty = true;
}

void QUORDirectoryWatchData::markForCheck() {
    _check = true;
    _dirty = true;
}

bool QUORDirectoryWatchData::checkUpdates() {
    // Taken before the listing: what arrives during it makes the directory dirty again.
    bool dirty = _dirty.exchange(false);
    bool retry = _retry.exchange(false);
    const bool check = _check.exchange(false);
    if (!revive()) {
        return false;
    }
    dirty = dirty || (retry && _listingFailed);
    retry = (check && reconsiderDiscarded()) || (retry && _waiting > 0);
    if (dirty && isChanged()) {
        logDebug(QStringLiteral("REFRESH DIRECTORY/NEW OR DELETED ITEMS"));
        refresh();
        _dirty = true;
    } else if (retry) {
        logDebug(QStringLiteral("REFRESH/RETRY"));
        refresh();
    }
    return true;
}

bool QUORDirectoryWatchData::revive() {
    if (!_valid && _tree && _tree->isValid()) {
        _valid = true;
    }
    return _valid;
}

bool QUORDirectoryWatchData::isChanged() {
    _addedNames.clear();
    _removedNames.clear();
    const QUORDirectoryListing listing(_path);
    noteListing(listing);
    if (!listing.isComplete() && !listing.isGone()) {
        return false;
    }
    QStringList names = listing.getNames();
    _addedNames = difference(names, _snapshot);
    for (const QString& name : difference(_snapshot, names)) {
        (QUORDirectoryListing::hasVanished(pathOf(name)) ? _removedNames : names).append(name);
    }
    std::sort(names.begin(), names.end());
    _snapshot = names;
    return !_addedNames.isEmpty() || !_removedNames.isEmpty();
}

void QUORDirectoryWatchData::noteListing(const QUORDirectoryListing& listing) {
    const bool failed = !listing.isComplete() && !listing.isGone();
    if (failed && !_listingFailed) {
        logWarning(QStringLiteral("Directory cannot be listed (") +
                   QUORSystem::errorText(listing.getError()) + QStringLiteral("): ") + _path);
    }
    _listingFailed = failed;
    if (!failed && listing.isGone() != _gone) {
        _gone = listing.isGone();
        if (_gone) {
            logWarning(QStringLiteral("Directory has gone: ") + _path);
        } else {
            QUORLog::Instance().logNotice(QStringLiteral("Directory is there: ") + _path);
        }
    }
    if (listing.getUnreadableNames() > 0 && !_unreadableNamesLogged) {
        _unreadableNamesLogged = true;
        logWarning(QStringLiteral("File names that are not valid UTF-8 are ignored, number: ") +
                   QString::number(listing.getUnreadableNames()) + QStringLiteral(", directory: ") + _path);
    }
}

void QUORDirectoryWatchData::refresh() {
    ++_refreshes;
    logDebug(QString::number(_refreshes) + QStringLiteral(": directory ") + _path +
             QStringLiteral(" has changed (") + QString::number(_notifications) + QLatin1Char(')'));
    addFilesToDir();
    removeFilesFromDir();
    doRetries();
}

QUORDirTop::Result QUORDirectoryWatchData::addToTree(const QString& name, Clock::time_point freshUntil) {
    const Stamp stamp = stampOf(name);
    QString other;
    const QUORDirTop::Result result = _tree->addFile(name, _removedNames, &other);
    if (result == QUORDirTop::ResultDuplicate) {
        _duplicates.insert(name, {other, freshUntil});
    } else if (!other.isEmpty()) {
        _replaced.insert(other);
    }
    if (result == QUORDirTop::ResultInvalid) {
        discard(name, stamp, !QUORFile::canBeRead(pathOf(name)));
    }
    return result;
}

void QUORDirectoryWatchData::addFilesToDir() {
    _addedNames = addAll(_addedNames);
}

/// Returns those that are in the tree now.
QStringList QUORDirectoryWatchData::addAll(const QStringList& names) {
    QStringList added;
    QStringList unfinished;
    QStringList discarded;
    for (const QString& name : names) {
        logDebug(QStringLiteral("ADD: TRYING TO ADD ") + name);
        const QUORDirTop::Result result = addToTree(name, Clock::now() + _timing.recent);
        if (result == QUORDirTop::ResultOk) {
            logDebug(QStringLiteral("ADD: ADDED TO DIRECTORY ") + name);
            added.append(name);
        } else if (isUnfinished(result)) {
            logDebug(QStringLiteral("ADD: FILE IS NOT COMPLETE ") + name);
            unfinished.append(name);
        } else if (result == QUORDirTop::ResultDuplicate) {
            logWarning(QStringLiteral("INCOMING FILE DISCARDED (DUPLICATE):  ") + name);
        } else {
            discarded.append(name);
        }
    }
    logDiscarded(discarded);
    for (const QString& name : std::as_const(unfinished)) {
        wait(name);
    }
    return added;
}

void QUORDirectoryWatchData::removeFilesFromDir() {
    QStringList removed;
    for (const QString& name : std::as_const(_removedNames)) {
        if (_replaced.remove(name) || _tree->removeFile(name) == QUORDirTop::ResultOk) {
            logDebug(QStringLiteral("REMOVE: REMOVED FROM DIRECTORY ") + name);
            removed.append(name);
        } else {
            QUORLog::Instance().logNotice(QStringLiteral("COULD NOT REMOVE FILE (NOT IN DIRECTORY) ") + name);
        }
        stopWaiting(name);
        _discarded.remove(name);
        _duplicates.remove(name);
    }
    _removedNames = removed;
    fillPlacesOf(removed);
}

/// A clean-up of old products must not have their copies drawn: only what has just arrived is announced,
/// as when a file is linked to its final name and its first name is removed.
void QUORDirectoryWatchData::fillPlacesOf(const QStringList& removed) {
    const QMap<QString, Duplicate> duplicates = takeDuplicatesOf(removed);
    for (auto entry = duplicates.cbegin(); entry != duplicates.cend(); ++entry) {
        const QString& name = entry.key();
        if (QUORDirectoryListing::hasVanished(pathOf(name))) {
            continue;
        }
        const QUORDirTop::Result result = addToTree(name, entry->freshUntil);
        if (result == QUORDirTop::ResultOk && Clock::now() < entry->freshUntil) {
            _addedNames.append(name);
        } else if (isUnfinished(result)) {
            wait(name);
        } else if (result == QUORDirTop::ResultInvalid) {
            logDiscarded({name});
        }
    }
}

/// In the order of their names.
QMap<QString, QUORDirectoryWatchData::Duplicate>
QUORDirectoryWatchData::takeDuplicatesOf(const QStringList& names) {
    if (names.isEmpty()) {
        return {};
    }
    QMap<QString, Duplicate> taken;
    const QSet<QString> holders(names.begin(), names.end());
    for (auto entry = _duplicates.begin(); entry != _duplicates.end();) {
        if (holders.contains(entry->holder)) {
            taken.insert(entry.key(), *entry);
            entry = _duplicates.erase(entry);
        } else {
            ++entry;
        }
    }
    return taken;
}

void QUORDirectoryWatchData::doRetries() {
    QList<QUORDirWatchRetryItem::Ptr> kept;
    for (const QUORDirWatchRetryItem::Ptr& item : std::as_const(_retryItems)) {
        // A file that was deleted while it waited leaves with the next listing.
        if (QUORDirectoryListing::hasVanished(pathOf(item->getName())) || retryFile(*item)) {
            kept.append(item);
        }
    }
    setWaiting(kept);
}

/// False when the file need not wait any longer.
bool QUORDirectoryWatchData::retryFile(QUORDirWatchRetryItem& item) {
    const QString name = item.getName();
    const Stamp stamp = stampOf(name);
    logDebug(QStringLiteral("RETRY: ") + name + QStringLiteral(", size then: ") +
             QString::number(item.getSize()) + QStringLiteral(", size now: ") + QString::number(stamp.size));
    item.update(stamp.size, _timing.retry * 9 / 10);
    const QString prefix = QStringLiteral("RETRY(") + QString::number(item.getRetries()) + QLatin1Char(')');
    logDebug(prefix + QStringLiteral(" ADDING ") + name);
    const QUORDirTop::Result result = addToTree(name, Clock::now() + _timing.recent);
    if (result == QUORDirTop::ResultOk) {
        logDebug(prefix + QStringLiteral(": ADDED TO DIRECTORY ") + name);
        _addedNames.append(name);
        return false;
    }
    const bool exhausted = item.getRetries() > MOST_RETRIES;
    if (isUnfinished(result)) {
        logDebug(prefix + QStringLiteral(": FILE STILL INCOMPLETE: ") + name);
    } else {
        logWarning(QStringLiteral("INCOMING FILE DISCARDED AFTER RETRIES (INVALID OR NO PERMISSIONS): ") +
                   name);
    }
    if (exhausted) {
        logWarning(QStringLiteral("TOO MANY RETRIES, FILE DISCARDED: ") + name);
        if (isUnfinished(result)) {
            discard(name, stamp, result == QUORDirTop::ResultNotReadable);
        }
    }
    return isUnfinished(result) && !exhausted;
}

QString QUORDirectoryWatchData::pathOf(const QString& name) const {
    return _path + QLatin1Char('/') + name;
}

QUORDirectoryWatchData::Stamp QUORDirectoryWatchData::stampOf(const QString& name) const {
    struct stat info {};
    if (::lstat(QFile::encodeName(pathOf(name)).constData(), &info) != 0) {
        return {};
    }
    return {info.st_size, qint64(info.st_ctim.tv_sec) * 1000000000 + info.st_ctim.tv_nsec};
}

void QUORDirectoryWatchData::wait(const QString& name) {
    _retryItems.append(std::make_shared<QUORDirWatchRetryItem>(name, stampOf(name).size));
    _waiting = int(_retryItems.size());
}

void QUORDirectoryWatchData::setWaiting(QList<QUORDirWatchRetryItem::Ptr> items) {
    _retryItems = std::move(items);
    _waiting = int(_retryItems.size());
}

void QUORDirectoryWatchData::stopWaiting(const QString& name) {
    QList<QUORDirWatchRetryItem::Ptr> items = _retryItems;
    const auto item =
        std::find_if(items.begin(), items.end(), [&name](const auto& i) { return i->getName() == name; });
    if (item != items.end()) {
        items.erase(item);
        setWaiting(items);
    }
}

void QUORDirectoryWatchData::discard(const QString& name, const Stamp& stamp, bool unreadable) {
    _discarded.insert(name, {stamp, unreadable});
}

bool QUORDirectoryWatchData::reconsiderDiscarded() {
    QStringList changed;
    for (auto entry = _discarded.cbegin(); entry != _discarded.cend(); ++entry) {
        if (stampOf(entry.key()) != entry->stamp ||
            (entry->unreadable && QUORFile::canBeRead(pathOf(entry.key())))) {
            changed.append(entry.key());
        }
    }
    for (const QString& name : std::as_const(changed)) {
        _discarded.remove(name);
        wait(name);
    }
    return !changed.isEmpty();
}
