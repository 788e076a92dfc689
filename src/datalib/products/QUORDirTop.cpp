// SPDX-License-Identifier: MIT
#include "QUORDirTop.h"

#include "QUORDirSite.h"
#include "QUORDirectoryListing.h"
#include "QUORLog.h"
#include "QUORWildcard.h"

#include <QDir>
#include <QTextStream>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <limits>
#include <mutex>
#include <tuple>
#include <vector>

namespace {

void logAdding(const QUORFile& file) {
    if (QUORLog::Instance().level() >= QUORLog::Debug) {
        const QStringList names{file.getSite(), file.getProduct(), file.getConfiguration(), file.getTime()};
        logDebug(QStringLiteral("Adding to directory file ") + names.join(QLatin1Char('.')));
    }
}

/// What the file is by itself.
QUORDirTop::Result stateOf(const QUORFile& file) {
    switch (file.getStatus()) {
    case QUORFile::Valid:
        return QUORDirTop::ResultOk;
    case QUORFile::Incomplete:
        return QUORDirTop::ResultIncomplete;
    case QUORFile::NoData:
        return QUORDirTop::ResultNoData;
    case QUORFile::NotReadable:
        return QUORDirectoryListing::hasVanished(file.getPath()) ? QUORDirTop::ResultInvalid
                                                                 : QUORDirTop::ResultNotReadable;
    default:
        return QUORDirTop::ResultInvalid;
    }
}

std::vector<QUORDirectory::Ptr> matching(const QUORDirectory::Children& children,
                                         const QUORWildcard& pattern) {
    std::vector<QUORDirectory::Ptr> nodes;
    std::copy_if(children.begin(), children.end(), std::back_inserter(nodes),
                 [&pattern](const QUORDirectory::Ptr& node) { return pattern.matches(node->getName()); });
    return nodes;
}

QString productName(const QUORFileLeaf& leaf, bool withConfiguration) {
    return withConfiguration ? leaf.getProduct() + QStringLiteral(" - ") + leaf.getConfiguration()
                             : leaf.getProduct();
}

QStringList productNames(const QUORDirTop::Leaves& leaves, bool withConfiguration, const QString& logPrefix) {
    QStringList names;
    for (const QUORFileLeaf::Ptr& leaf : leaves) {
        const QString name = productName(*leaf, withConfiguration);
        if (!names.contains(name)) {
            names.append(name);
            logDebug(logPrefix + name);
        }
    }
    return names;
}

} // namespace

QUORDirTop::QUORDirTop(const QString& path)
    : QUORDirectory(Top, QString(), nullptr), _path(path.isEmpty() ? path : QDir(path).absolutePath()) {}

QString QUORDirTop::resolve(const QString& name) const {
    // A name that begins with ":" would count as a path of its own.
    return name.startsWith(QLatin1Char('/')) ? name : _path + QLatin1Char('/') + name;
}

bool QUORDirTop::isValid() const {
    return QUORDirectoryListing::identify(_path) != QUORDirectoryListing::Identity();
}

void QUORDirTop::refresh() {
    const QUORDirectoryListing listing(_path);
    if (listing.isComplete() || listing.isGone()) {
        scan(listing.getNames());
    }
}

QUORDirTop::LeftOut QUORDirTop::scan(const QStringList& names) {
    Children sites;
    ByName byName;
    LeftOut leftOut;
    for (const QString& name : names) {
        const auto file = std::make_shared<const QUORFile>(resolve(name));
        const Result state = stateOf(*file);
        if (state == ResultInvalid) {
            leftOut.discarded.append(name);
        } else if (state != ResultOk) {
            leftOut.unfinished.append(name);
        } else if (!filter(file)) {
            leftOut.wrongType.append(name);
        } else {
            logAdding(*file);
            const QUORFile::CPtr present = insert(sites, byName, file)->getFile();
            if (present != file) {
                leftOut.duplicates.insert(name, present->getName());
            }
        }
    }
    {
        const std::unique_lock lock(_lock);
        _children.swap(sites);
        _byName.swap(byName);
    }
    release(sites);
    return leftOut;
}

QUORDirTop::Result QUORDirTop::addFile(const QString& name, const QStringList& leaving, QString* other) {
    const auto file = std::make_shared<const QUORFile>(resolve(name));
    const Result state = stateOf(*file);
    if (state == ResultOk) {
        return addValid(file, leaving, other);
    }
    const QString reason = state == ResultIncomplete ? QStringLiteral("INCOMPLETE ")
                           : state == ResultNoData   ? QStringLiteral("NO DATA ")
                                                     : QStringLiteral("INVALID ");
    logDebug(QStringLiteral("NOT ADDED: ") + reason + file->getPath());
    if (state == ResultInvalid && file->getStatus() != QUORFile::NotReadable) {
        removeOutdated(*file);
    }
    return state;
}

QUORDirTop::Result QUORDirTop::addValid(const QUORFile::CPtr& file, const QStringList& leaving,
                                        QString* other) {
    if (!filter(file)) {
        logDebug(QStringLiteral("NOT ADDED: DATA FILE OF WRONG TYPE ") + file->getPath());
        removeOutdated(*file);
        return ResultWrongType;
    }
    const Result renewed = renew(file);
    if (renewed != ResultInvalid) {
        if (renewed == ResultDuplicate) {
            logDebug(QStringLiteral("NOT ADDED: DATA FILE IS DUPLICATE ") + file->getPath());
            if (other != nullptr) {
                *other = file->getName();
            }
        }
        return renewed;
    }
    QUORFileLeaf::Ptr present = insertOrFind(file, nullptr);
    if (present) {
        const QString name = present->getFile()->getName();
        if (other != nullptr) {
            *other = name;
        }
        if (!leaving.contains(name) && !QUORDirectoryListing::hasVanished(present->getPath())) {
            logDebug(QStringLiteral("NOT ADDED: DATA FILE IS DUPLICATE ") + file->getPath());
            return ResultDuplicate;
        }
        insertOrFind(file, present);
    }
    logAdding(*file);
    return ResultOk;
}

/// Of a file that the tree has: whether it was written anew. Invalid when its product has no leaf.
QUORDirTop::Result QUORDirTop::renew(const QUORFile::CPtr& file) {
    const std::unique_lock lock(_lock);
    const QUORFileLeaf::Ptr leaf = leafNamed(file->getName());
    if (!leaf || leaf->getPath() != file->getPath()) {
        return ResultInvalid;
    }
    const bool isSameProduct =
        leaf == leafAt(file->getSite(), file->getProduct(), file->getConfiguration(), file->getTime());
    remove(leaf);
    if (!isSameProduct) {
        return ResultInvalid;
    }
    insert(_children, _byName, file);
    return file->isSameIssue(*leaf->getFile()) ? ResultDuplicate : ResultOk;
}

void QUORDirTop::removeOutdated(const QUORFile& file) {
    const std::unique_lock lock(_lock);
    const QUORFileLeaf::Ptr leaf = leafNamed(file.getName());
    if (leaf && leaf->getPath() == file.getPath()) {
        remove(leaf);
    }
}

/// The leaf that stands in the way of the file, or null when the file is in the tree now.
QUORFileLeaf::Ptr QUORDirTop::insertOrFind(const QUORFile::CPtr& file, const QUORFileLeaf::Ptr& giveWay) {
    const std::unique_lock lock(_lock);
    QUORFileLeaf::Ptr present =
        leafAt(file->getSite(), file->getProduct(), file->getConfiguration(), file->getTime());
    if (present && present != giveWay) {
        return present;
    }
    if (present) {
        remove(present);
    }
    insert(_children, _byName, file);
    return nullptr;
}

QUORDirTop::Result QUORDirTop::removeFile(const QString& name) {
    std::unique_lock lock(_lock);
    const QUORFileLeaf::Ptr leaf = leafNamed(name);
    if (leaf) {
        remove(leaf);
    }
    lock.unlock();
    logDebug((leaf ? QStringLiteral("REMOVING ") : QStringLiteral("NOTHING TO REMOVE ")) + name);
    return leaf ? ResultOk : ResultInvalid;
}

void QUORDirTop::addToAllLevels(const QUORFile::CPtr& file) {
    logAdding(*file);
    const std::unique_lock lock(_lock);
    insert(_children, _byName, file);
}

QUORFileLeaf::Ptr QUORDirTop::insert(Children& sites, ByName& byName, const QUORFile::CPtr& file) {
    QUORDirectory::Ptr& site = sites[file->getSite()];
    if (!site) {
        site = makeChild(file->getSite(), nullptr);
    }
    auto leaf = std::dynamic_pointer_cast<QUORFileLeaf>(site->addChild(file->getProduct(), nullptr)
                                                            ->addChild(file->getConfiguration(), nullptr)
                                                            ->addChild(file->getTime(), file));
    if (leaf->getFile() == file) {
        byName.insert(file->getName(), leaf);
    }
    return leaf;
}

void QUORDirTop::remove(const QUORFileLeaf::Ptr& leaf) {
    _byName.remove(leaf->getFile()->getName(), leaf);
    leaf->getParent()->removeChild(leaf->getName());
}

QUORDirectory::Ptr QUORDirTop::makeChild(const QString& name, QUORFile::CPtr) {
    return std::make_shared<QUORDirSite>(name, this);
}

QUORDirectory::Children QUORDirTop::getChildren() const {
    const std::shared_lock lock(_lock);
    return _children;
}

QStringList QUORDirTop::getChildrenNames() const {
    const std::shared_lock lock(_lock);
    return _children.keys();
}

QUORDirectory::Ptr QUORDirTop::findChildByName(const QString& name) const {
    const std::shared_lock lock(_lock);
    return _children.value(name);
}

QUORFileLeaf::Ptr QUORDirTop::leafAt(const QString& site, const QString& product,
                                     const QString& configuration, const QString& time) const {
    QUORDirectory::Ptr node = _children.value(site);
    for (const QString& name : {product, configuration, time}) {
        node = node ? node->findChildByName(name) : nullptr;
    }
    return std::dynamic_pointer_cast<QUORFileLeaf>(node);
}

/// Of several files of that name (of other folders) the first in the order of the levels.
QUORFileLeaf::Ptr QUORDirTop::leafNamed(const QString& fileName) const {
    const auto [first, last] = _byName.equal_range(fileName);
    const auto levels = [](const QUORFileLeaf::Ptr& leaf) {
        return std::tuple(leaf->getSite(), leaf->getProduct(), leaf->getConfiguration(), leaf->getTime());
    };
    const auto leaf = std::min_element(
        first, last, [&levels](const auto& a, const auto& b) { return levels(a) < levels(b); });
    return leaf == last ? nullptr : *leaf;
}

QUORFileLeaf::Ptr QUORDirTop::findLeaf(const QString& fileName) const {
    const std::shared_lock lock(_lock);
    return leafNamed(fileName);
}

QUORFileLeaf::Ptr QUORDirTop::findLeaf(const QString& site, const QString& product,
                                       const QString& configuration, const QString& time) const {
    const std::shared_lock lock(_lock);
    return leafAt(site, product, configuration, time);
}

void QUORDirTop::visit(const QUORWildcard& site, const QUORWildcard& product,
                       const QUORWildcard& configuration, const Visitor& visitor) const {
    const std::shared_lock lock(_lock);
    for (const QUORDirectory::Ptr& siteNode : matching(_children, site)) {
        for (const QUORDirectory::Ptr& productNode : matching(siteNode->getChildren(), product)) {
            for (const QUORDirectory::Ptr& node : matching(productNode->getChildren(), configuration)) {
                visitor(static_cast<const QUORDirConfiguration&>(*node));
            }
        }
    }
}

QUORDirTop::Leaves QUORDirTop::findLeaves(const QString& site, const QString& product,
                                          const QString& configuration, const QString& time) const {
    Leaves leaves;
    const QUORWildcard timePattern(time);
    visit(QUORWildcard(site), QUORWildcard(product), QUORWildcard(configuration),
          [&](const QUORDirConfiguration& node) {
              for (const QUORDirectory::Ptr& child : matching(node.getChildren(), timePattern)) {
                  const auto leaf = std::static_pointer_cast<QUORFileLeaf>(child);
                  leaves.insert(leaf->getKey(), leaf);
              }
          });
    return leaves;
}

QUORDirTop::Leaves QUORDirTop::leavesBetween(const QUORWildcard& site, const QUORWildcard& product,
                                             const QUORWildcard& configuration, qint64 first,
                                             qint64 last) const {
    Leaves leaves;
    visit(site, product, configuration, [&](const QUORDirConfiguration& node) {
        for (const QUORFileLeaf::Ptr& leaf : node.findBetween(first, last)) {
            leaves.insert(leaf->getKey(), leaf);
        }
    });
    return leaves;
}

QUORDirTop::Leaves QUORDirTop::leavesAround(const QUORWildcard& site, const QUORWildcard& product,
                                            const QUORWildcard& configuration, const QDateTime& t,
                                            int timeWindow) const {
    if (!t.isValid()) {
        return {};
    }
    const qint64 half = qint64(timeWindow / 2) * 1000;
    const qint64 middle = t.toMSecsSinceEpoch();
    return leavesBetween(site, product, configuration, middle - half, middle + half);
}

QUORDirTop::Leaves QUORDirTop::findLeaves(const QString& site, const QString& product,
                                          const QString& configuration, const QDateTime& t,
                                          int timeWindow) const {
    return leavesAround(QUORWildcard(site), QUORWildcard(product), QUORWildcard(configuration), t,
                        timeWindow);
}

QUORDirTop::Leaves QUORDirTop::findLatestLeaves(const QString& site, const QString& product,
                                                const QString& configuration, int timeWindow) const {
    const QUORLogScope scope("QUORDirTop::findLatestLeaves");
    logDebug(QStringLiteral("timeWindow=") + QString::number(timeWindow));
    if (timeWindow == 0) {
        return findLeaves(site, product, configuration, QStringLiteral("*"));
    }
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    return leavesBetween(QUORWildcard(site), QUORWildcard(product), QUORWildcard(configuration),
                         now - qint64(timeWindow) * 1000 + 1, now);
}

QUORFileLeaf::Ptr QUORDirTop::findClosestMatch(const Leaves& leaves, const QDateTime& t) {
    const auto distance = [&t](const QUORFileLeaf::Ptr& leaf) {
        const QDateTime time = leaf->getFile()->getDataTime();
        return time.isValid() && t.isValid() ? std::abs(time.secsTo(t)) : std::numeric_limits<qint64>::max();
    };
    const auto best = std::min_element(leaves.begin(), leaves.end(), [&](const auto& a, const auto& b) {
        return distance(a) < distance(b);
    });
    return best == leaves.end() ? nullptr : *best;
}

QUORFileLeaf::Ptr QUORDirTop::findBestMatch(const QUORFileLeaf& leaf, const QUORWildcard& product,
                                            const QUORWildcard& configuration, int timeWindow) const {
    const QDateTime t = leaf.getFile()->getDataTime();
    return findClosestMatch(
        leavesAround(QUORWildcard::literal(leaf.getSite()), product, configuration, t, timeWindow), t);
}

QStringList QUORDirTop::findAllMatchingProducts(const QUORFileLeaf::CPtr& leaf, int timeWindow,
                                                bool withConfiguration) const {
    if (!leaf) {
        return {};
    }
    const QUORWildcard any(QStringLiteral("*"));
    const Leaves leaves = leavesAround(QUORWildcard::literal(leaf->getSite()), any, any,
                                       leaf->getFile()->getDataTime(), timeWindow);
    return productNames(leaves, withConfiguration, QStringLiteral("    New product: "));
}

qsizetype QUORDirTop::countFiles() const {
    const std::shared_lock lock(_lock);
    return _byName.size();
}

QStringList QUORDirTop::listSites() const {
    QStringList sites = getChildrenNames();
    logDebug(QStringLiteral("Available sites:"));
    if (sites.isEmpty()) {
        logDebug(QStringLiteral(" - (no sites found)"));
    }
    for (const QString& site : sites) {
        logDebug(QStringLiteral(" - ") + site);
    }
    return sites;
}

QStringList QUORDirTop::listProductsForSite(const QString& site, bool withConfiguration) const {
    logDebug(QStringLiteral("Products for site=") + site + QLatin1Char(':'));
    const QString any = QStringLiteral("*");
    const Leaves leaves = findLeaves(site, any, any, any);
    if (leaves.isEmpty()) {
        logDebug(QStringLiteral(" - (no products found)"));
    }
    return productNames(leaves, withConfiguration, QStringLiteral(" - "));
}

void QUORDirTop::printSelf() const {
    QUORDirectory::printSelf();
    QTextStream(stdout) << "path: " << _path << '\n';
}
