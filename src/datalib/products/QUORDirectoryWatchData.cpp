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

namespace {

constexpr int MOST_RETRIES = 10;
/// A check asks for the stamps of files so long, and goes on there with the next check: 100,000 files of a
/// local disk take half of it.
constexpr std::chrono::milliseconds STAMP_CHECK(200);
const QString DISCARDED = QStringLiteral("INCOMING FILE DISCARDED: (INVALID OR NO PERMISSIONS): ");
const QString DISCARDED_RETRY =
    QStringLiteral("INCOMING FILE DISCARDED AFTER RETRIES (INVALID OR NO PERMISSIONS): ");
const QString EXHAUSTED = QStringLiteral("TOO MANY RETRIES, FILE DISCARDED: ");

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

bool containsName(const QStringList& ascending, const QString& name) {
    return std::binary_search(ascending.begin(), ascending.end(), name);
}

} // namespace

QUORDirectoryWatchData::QUORDirectoryWatchData(DirectoryType type, QUORWatchTiming timing)
    : _type(type), _timing(timing), _exhausted{EXHAUSTED}, _discardedRetries{DISCARDED_RETRY} {}

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
    for (const QString& name : std::as_const(leftOut.wrongType)) {
        discard(name, stamps.value(name), false);
    }
    explainFirst(readable(leftOut.discarded) + leftOut.wrongType);
    QUORCappedLines::log(DISCARDED, leftOut.discarded);
    for (auto entry = leftOut.duplicates.cbegin(); entry != leftOut.duplicates.cend(); ++entry) {
        _duplicates.insert(entry.key(), {entry.value(), stamps.value(entry.key())});
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

void QUORDirectoryWatchData::markNotified(const QStringList& names, const QStringList& written) {
    const std::lock_guard lock(_notifiedMutex);
    _notified.names.append(names);
    _notified.written.append(written);
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
    const Notified notified = takeNotified();
    if (!revive()) {
        return false;
    }
    dirty = dirty || (retry && _listingFailed);
    const bool changed = dirty && isChanged();
    retry = retry && _waiting > 0;
    retry = lookAtWritten(notified) || retry;
    retry = (check && reconsiderDiscarded()) || retry;
    if (_listingFailed) {
        _check = true; // the names that were notified of are lost
    } else if (check) {
        checkStamps();
        _exhausted.endInterval();
        _discardedRetries.endInterval();
    }
    if (changed || !_writtenNames.isEmpty()) {
        logDebug(QStringLiteral("REFRESH DIRECTORY/NEW OR DELETED ITEMS"));
        refresh();
        _dirty = true;
    } else if (retry) {
        logDebug(QStringLiteral("REFRESH/RETRY"));
        refresh();
    }
    return true;
}

QUORDirectoryWatchData::Notified QUORDirectoryWatchData::takeNotified() {
    const std::lock_guard lock(_notifiedMutex);
    Notified notified = std::exchange(_notified, {});
    notified.names.removeDuplicates();
    return notified;
}

/// A writer that sets the time of modification back before it closes the file leaves no other sign.
void QUORDirectoryWatchData::noteWriting(const QString& name) {
    const QUORFileLeaf::CPtr leaf = _tree->findLeaf(name);
    if (leaf && stampOf(name) != leaf->getFile()->getStamp()) {
        _overwritten.insert(name);
    }
}

/// True when files that wait are to be tried at once.
bool QUORDirectoryWatchData::lookAtWritten(const Notified& notified) {
    bool waits = false;
    for (const QString& name : notified.written) {
        noteWriting(name);
    }
    const QSet<QString> waiting = getWaitingNames(notified.names.isEmpty());
    for (const QString& name : notified.names) {
        if (!containsName(_snapshot, name) || containsName(_addedNames, name)) {
            continue; // a listing tells
        }
        if (waiting.contains(name)) {
            waits = true;
        } else if (const auto entry = _discarded.constFind(name); entry != _discarded.constEnd()) {
            if (isReadableAgain(name, *entry)) {
                _discarded.erase(entry);
                wait(name);
                waits = true;
            }
        } else if (isWrittenAnew(name) || !(_tree->findLeaf(name) || _duplicates.contains(name))) {
            _writtenNames.append(name);
        }
    }
    return waits;
}

QSet<QString> QUORDirectoryWatchData::getWaitingNames(bool none) const {
    QSet<QString> names;
    if (!none) {
        for (const QUORDirWatchRetryItem::Ptr& item : _retryItems) {
            names.insert(item->getName());
        }
    }
    return names;
}

/// Whether a file of the tree, or a duplicate of one, is not as it was read.
bool QUORDirectoryWatchData::isWrittenAnew(const QString& name) const {
    const Stamp stamp = stampOf(name);
    if (!stamp.isKnown()) {
        return false; // a listing tells
    }
    if (const QUORFileLeaf::Ptr leaf = _tree->findLeaf(name)) {
        return stamp != leaf->getFile()->getStamp();
    }
    const auto duplicate = _duplicates.constFind(name);
    return duplicate != _duplicates.constEnd() && stamp.isWrittenSince(duplicate->stamp);
}

/// What no notification told of, as on a network file system.
void QUORDirectoryWatchData::checkStamps() {
    const Clock::time_point end = Clock::now() + STAMP_CHECK;
    const QSet<QString> skipped =
        getWaitingNames(false) + QSet<QString>(_writtenNames.begin(), _writtenNames.end());
    const qsizetype count = _snapshot.size();
    for (qsizetype i = 0; i < count && (i % 64 != 0 || Clock::now() < end); ++i) {
        _nextStamp = (_nextStamp + 1) % count;
        const QString& name = _snapshot[_nextStamp];
        if (isWrittenAnew(name) && !skipped.contains(name) && !containsName(_addedNames, name)) {
            _writtenNames.append(name);
        }
    }
    std::sort(_writtenNames.begin(), _writtenNames.end());
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
    for (const QString& name : std::as_const(_writtenNames)) {
        _duplicates.remove(name);
    }
    _addedNames.append(addAll(std::exchange(_writtenNames, {})));
    doRetries();
    removeLost();
}

QUORDirTop::Result QUORDirectoryWatchData::addToTree(const QString& name, Clock::time_point freshUntil) {
    const Stamp stamp = stampOf(name);
    const QUORFileLeaf::CPtr before = _tree->findLeaf(name);
    QString other;
    QUORDirTop::Result result = _tree->addFile(name, _removedNames, &other);
    if (before) {
        result = judgeIssue(name, result, other == name);
        noteIssue(*before, name, result);
    } else {
        _overwritten.remove(name);
    }
    if (result == QUORDirTop::ResultDuplicate && other != name) {
        _duplicates.insert(name, {other, stamp, freshUntil});
    } else if (result != QUORDirTop::ResultDuplicate && !other.isEmpty()) {
        _replaced.insert(other);
    }
    if (result == QUORDirTop::ResultInvalid) {
        discard(name, stamp, !QUORFile::canBeRead(pathOf(name)));
    } else if (result == QUORDirTop::ResultWrongType) {
        discard(name, stamp, false);
    }
    return result;
}

/// Of a file that was in the tree before it was added again; the tree goes by the stamps.
QUORDirTop::Result QUORDirectoryWatchData::judgeIssue(const QString& name, QUORDirTop::Result result,
                                                      bool isSame) {
    if (result == QUORDirTop::ResultIncomplete || result == QUORDirTop::ResultNoData) {
        _overwritten.insert(name);
    }
    if (isUnfinished(result)) {
        return result;
    }
    const bool isOverwritten = _overwritten.remove(name);
    return isSame && isOverwritten && result == QUORDirTop::ResultDuplicate ? QUORDirTop::ResultOk : result;
}

/// Of a file that was in the tree before it was added again.
void QUORDirectoryWatchData::noteIssue(const QUORFileLeaf& before, const QString& name,
                                       QUORDirTop::Result result) {
    const QUORFileLeaf::CPtr now = _tree->findLeaf(name);
    if (!now || now->getKey() != before.getKey()) {
        _lostNames.append(name);
    } else if (result == QUORDirTop::ResultOk) {
        QUORLog::Instance().logNotice(QStringLiteral("PRODUCT ISSUED AGAIN, REPLACES THE ONE BEFORE: ") +
                                      name);
    }
}

/// To those who follow the directory a name that stands for another product now has gone and come.
void QUORDirectoryWatchData::removeLost() {
    const QStringList lost = std::exchange(_lostNames, {});
    for (const QString& name : lost) {
        logDebug(QStringLiteral("REMOVE: REMOVED FROM DIRECTORY ") + name);
    }
    _removedNames.append(lost);
    fillPlacesOf(lost);
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
        } else if (result == QUORDirTop::ResultDuplicate && !_duplicates.contains(name)) {
            logDebug(QStringLiteral("ADD: UNCHANGED ") + name);
        } else if (result == QUORDirTop::ResultDuplicate) {
            logWarning(QStringLiteral("INCOMING FILE DISCARDED (DUPLICATE):  ") + name);
        } else {
            discarded.append(name);
        }
    }
    explainFirst(readable(discarded));
    QUORCappedLines::log(DISCARDED, discarded);
    for (const QString& name : std::as_const(unfinished)) {
        wait(name);
    }
    return added;
}

/// The others may be readable in a moment; what stays so is given up.
QStringList QUORDirectoryWatchData::readable(QStringList names) const {
    names.removeIf([this](const QString& name) { return !QUORFile::canBeRead(pathOf(name)); });
    return names;
}

/// The level that operators see tells of one file of a directory, and what is the likely reason.
void QUORDirectoryWatchData::explainFirst(const QStringList& discarded) {
    if (discarded.isEmpty() || std::exchange(_explained, true)) {
        return;
    }
    const QString& name = discarded.constFirst();
    const QUORFile file(pathOf(name));
    const bool wants3d = _type == Directory3d;
    const QUORFile::Status status = file.getStatus();
    QString reason = status == QUORFile::Incomplete || status == QUORFile::NoData
                         ? QStringLiteral("cut short, or not a product")
                         : QStringLiteral("no product, or not to be read");
    if (file.isValid()) {
        reason = (wants3d ? QStringLiteral("no 3D product") : QStringLiteral("no 2D product")) +
                 (file.getDimensions() == (wants3d ? 2 : 3)
                      ? QStringLiteral(" but one of the other kind: are data3d and data2d swapped?")
                      : QString());
    }
    QUORLog::Instance().logError(QStringLiteral("The first file of this directory that gives no image: ") +
                                 pathOf(name) + QStringLiteral(" is ") + reason);
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
        _discarded.remove(name);
        _duplicates.remove(name);
        _overwritten.remove(name);
    }
    stopWaiting(_removedNames);
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
            QUORCappedLines::log(DISCARDED, {name});
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
    kept.reserve(_retryItems.size());
    for (const QUORDirWatchRetryItem::Ptr& item : std::as_const(_retryItems)) {
        if (retryFile(*item)) {
            kept.append(item);
        }
    }
    setWaiting(kept);
}

/// False when the file need not wait any longer.
bool QUORDirectoryWatchData::retryFile(QUORDirWatchRetryItem& item) {
    const QString name = item.getName();
    const Stamp stamp = stampOf(name);
    if (!stamp.isKnown() && QUORDirectoryListing::hasVanished(pathOf(name))) {
        return true; // one that was deleted while it waited leaves with the next listing
    }
    const bool isDebug = QUORLog::Instance().level() >= QUORLog::Debug;
    if (isDebug) {
        logDebug(QStringLiteral("RETRY: ") + name + QStringLiteral(", size then: ") +
                 QString::number(item.getSize()) + QStringLiteral(", size now: ") +
                 QString::number(stamp.size));
    }
    item.update(stamp.size, _timing.retry * 9 / 10);
    const QString prefix = isDebug ? QStringLiteral("RETRY(%1)").arg(item.getRetries()) : QString();
    logDebug(prefix + QStringLiteral(" ADDING ") + name);
    const QUORDirTop::Result result = readAgain(item, stamp);
    if (result == QUORDirTop::ResultOk) {
        logDebug(prefix + QStringLiteral(": ADDED TO DIRECTORY ") + name);
        _addedNames.append(name);
        return false;
    }
    if (result == QUORDirTop::ResultDuplicate && !_duplicates.contains(name)) {
        return false; // the product of this name, as it was
    }
    const bool exhausted = item.getRetries() > MOST_RETRIES;
    if (isUnfinished(result)) {
        logDebug(prefix + QStringLiteral(": FILE STILL INCOMPLETE: ") + name);
    } else {
        _discardedRetries.log(name);
    }
    if (exhausted) {
        giveUp(name, stamp, result);
    }
    return isUnfinished(result) && !exhausted;
}

/// A file that is as it was when it was found unfinished is not read again: there may be thousands.
QUORDirTop::Result QUORDirectoryWatchData::readAgain(QUORDirWatchRetryItem& item, const Stamp& stamp) {
    if (stamp.isKnown() && stamp == item.getUnfinished()) {
        return QUORDirTop::ResultIncomplete;
    }
    const QUORDirTop::Result result = addToTree(item.getName(), Clock::now() + _timing.recent);
    const bool mayPass = result == QUORDirTop::ResultNotReadable;
    item.setUnfinished(isUnfinished(result) && !mayPass ? stamp : Stamp());
    return result;
}

void QUORDirectoryWatchData::giveUp(const QString& name, const Stamp& stamp, QUORDirTop::Result result) {
    _exhausted.log(name);
    explainFirst({name});
    if (!isUnfinished(result)) {
        return;
    }
    discard(name, stamp, result == QUORDirTop::ResultNotReadable);
    // Of a product that was being written anew nothing is left.
    if (result != QUORDirTop::ResultNotReadable && _tree->removeFile(name) == QUORDirTop::ResultOk) {
        _lostNames.append(name);
    }
}

QString QUORDirectoryWatchData::pathOf(const QString& name) const {
    return _path + QLatin1Char('/') + name;
}

QUORDirectoryWatchData::Stamp QUORDirectoryWatchData::stampOf(const QString& name) const {
    return Stamp::ofLink(pathOf(name));
}

void QUORDirectoryWatchData::wait(const QString& name) {
    const qint64 size = std::max<qint64>(0, stampOf(name).size);
    _retryItems.append(std::make_shared<QUORDirWatchRetryItem>(name, size));
    _waiting = int(_retryItems.size());
}

void QUORDirectoryWatchData::setWaiting(QList<QUORDirWatchRetryItem::Ptr> items) {
    _retryItems = std::move(items);
    _waiting = int(_retryItems.size());
}

void QUORDirectoryWatchData::stopWaiting(const QStringList& names) {
    if (_retryItems.isEmpty() || names.isEmpty()) {
        return;
    }
    const QSet<QString> gone(names.begin(), names.end());
    QList<QUORDirWatchRetryItem::Ptr> items = _retryItems;
    items.removeIf([&gone](const auto& item) { return gone.contains(item->getName()); });
    setWaiting(items);
}

void QUORDirectoryWatchData::discard(const QString& name, const Stamp& stamp, bool unreadable) {
    _discarded.insert(name, {stamp, unreadable});
}

/// Whether a file that was given up is worth another look.
bool QUORDirectoryWatchData::isReadableAgain(const QString& name, const Discarded& entry) const {
    return stampOf(name) != entry.stamp || (entry.unreadable && QUORFile::canBeRead(pathOf(name)));
}

bool QUORDirectoryWatchData::reconsiderDiscarded() {
    QStringList changed;
    for (auto entry = _discarded.cbegin(); entry != _discarded.cend(); ++entry) {
        if (isReadableAgain(entry.key(), *entry)) {
            changed.append(entry.key());
        }
    }
    for (const QString& name : std::as_const(changed)) {
        _discarded.remove(name);
        wait(name);
    }
    return !changed.isEmpty();
}
