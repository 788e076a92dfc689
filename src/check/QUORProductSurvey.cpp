// SPDX-License-Identifier: MIT
#include "QUORProductSurvey.h"

#include "QUORBackgroundSettings.h"
#include "QUORDirectoryListing.h"

#include <QDir>

#include <algorithm>
#include <cstdlib>

namespace {

/// More say no more about a setup.
constexpr qsizetype MAXIMUM_PAIRED = 1000;
constexpr qsizetype MAXIMUM_SAMPLE = 50;
const QString ANY = QStringLiteral("*");

QStringList namesOf(const QUORDirTop::Leaves& leaves, QString (QUORFileLeaf::*get)() const) {
    QStringList names;
    for (const QUORFileLeaf::Ptr& leaf : leaves) {
        names.append((leaf.get()->*get)());
    }
    names.removeDuplicates();
    return names;
}

} // namespace

QString QUORProductSurvey::findProductFolder(const QString& path) {
    for (const QString& name : QDir(path).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString folder = path + QLatin1Char('/') + name;
        const QStringList names = QUORDirectoryListing(folder).getNames().mid(0, MAXIMUM_SAMPLE);
        const bool holds = std::ranges::any_of(names, [&folder](const QString& file) {
            return QUORFile(folder + QLatin1Char('/') + file).isValid();
        });
        if (holds) {
            return folder;
        }
    }
    return {};
}

template <class Top, class Other>
std::shared_ptr<Top> QUORProductSurvey::survey(Directory& directory) {
    const QUORDirectoryListing listing(directory.path);
    directory.error = listing.getError();
    QUORDirTop::LeftOut leftOut;
    auto top = std::make_shared<Top>(directory.path, listing.getNames(), leftOut);
    directory.products = int(top->findLeaves(ANY, ANY, ANY, ANY).size());
    directory.unfinished = leftOut.unfinished;
    directory.discarded = leftOut.discarded;
    directory.duplicates = int(leftOut.duplicates.size());
    directory.otherKind = int(listing.getNames().size() - directory.products - leftOut.unfinished.size() -
                              leftOut.discarded.size() - directory.duplicates);
    if (directory.products == 0 && directory.error == 0) {
        QUORDirTop::LeftOut ignored;
        directory.otherKind =
            int(Other(directory.path, listing.getNames(), ignored).findLeaves(ANY, ANY, ANY, ANY).size());
        directory.productFolder = findProductFolder(directory.path);
    }
    return top;
}

QUORProductSurvey::QUORProductSurvey(const QString& path3d, const QString& path2d, int timeWindow,
                                     const Product2dOf& product2dOf) {
    _directory3d.path = path3d;
    _directory2d.path = path2d;
    const auto top3d = survey<QUOR3DTop, QUOR2DTop>(_directory3d);
    const auto top2d = survey<QUOR2DTop, QUOR3DTop>(_directory2d);
    for (const QString& site : top3d->listSites()) {
        const QUORDirTop::Leaves all = top3d->findLeaves(site, ANY, ANY, ANY);
        for (const QString& configuration : namesOf(all, &QUORFileLeaf::getConfiguration)) {
            QUORDirTop::Leaves leaves = all;
            leaves.removeIf([&](const auto& entry) {
                return entry.value()->getConfiguration() != configuration || entry.value()->getSite() != site;
            });
            addRow(leaves, *top2d, timeWindow, product2dOf(configuration));
        }
    }
}

void QUORProductSurvey::addRow(const QUORDirTop::Leaves& leaves, const QUOR2DTop& top2d, int timeWindow,
                               const QString& product2d) {
    if (leaves.isEmpty()) {
        return;
    }
    QList<QUORFileLeaf::Ptr> byTime = leaves.values();
    std::ranges::stable_sort(byTime, std::ranges::greater(),
                             [](const QUORFileLeaf::Ptr& leaf) { return leaf->getFile()->getDataTime(); });
    const QUORFileLeaf& first = *byTime.constFirst();
    Row row;
    row.site = first.getSite();
    row.product = first.getProduct();
    row.configuration = first.getConfiguration();
    row.files = int(leaves.size());
    row.newest = first.getFile();
    row.product2d = product2d;
    for (const QUORFileLeaf::Ptr& leaf : byTime.mid(0, product2d.isEmpty() ? 0 : MAXIMUM_PAIRED)) {
        const Reason reason = findReason(top2d, leaf, product2d, timeWindow);
        if (reason.kind.isEmpty()) {
            ++row.with2d;
            continue;
        }
        ++row.reasons[reason.kind];
        row.detail = row.detail.isEmpty() ? reason.detail : row.detail;
    }
    _rows.append(row);
}

QUORProductSurvey::Reason QUORProductSurvey::findReason(const QUOR2DTop& top, const QUORFileLeaf::CPtr& leaf,
                                                        const QString& product2d, int timeWindow) {
    if (top.findBestMatching2DFile(leaf, product2d, timeWindow)) {
        return {};
    }
    const QStringList known = QUORBackgroundSettings::getAll2DProducts();
    if (!known.contains(product2d) && !product2d.contains(QLatin1Char('*')) &&
        !product2d.contains(QLatin1Char('?'))) {
        const QString kind = QLatin1Char('"') + product2d + QStringLiteral("\" is no 2D product");
        return {kind, kind};
    }
    const QString site = leaf->getSite();
    const QDateTime time = leaf->getFile()->getDataTime();
    const QUORDirTop::Leaves ofSite = top.findLeaves(site, product2d, ANY, ANY);
    if (const QUORFileLeaf::Ptr nearest = QUORDirTop::findClosestMatch(ofSite, time)) {
        const qint64 seconds = std::abs(nearest->getFile()->getDataTime().secsTo(time));
        const QString kind = QStringLiteral("no ") + product2d + QStringLiteral(" within ") +
                             QString::number(timeWindow / 2) + QStringLiteral(" s");
        return {kind, kind + QStringLiteral(", the nearest is ") + QString::number(seconds) +
                          QStringLiteral(" s away")};
    }
    const QStringList others = namesOf(top.findLeaves(site, ANY, ANY, ANY), &QUORFileLeaf::getProduct);
    if (!others.isEmpty()) {
        const QString kind = QStringLiteral("no ") + product2d + QStringLiteral(" of this site, but ") +
                             others.join(QStringLiteral(", "));
        return {kind, kind};
    }
    const QStringList sites = namesOf(top.findLeaves(ANY, product2d, ANY, ANY), &QUORFileLeaf::getSite);
    const QString kind = QStringLiteral("no ") + product2d +
                         (sites.isEmpty() ? QStringLiteral(" at all")
                                          : QStringLiteral(" of this site, only of ") +
                                                sites.mid(0, 5).join(QStringLiteral(", ")));
    return {kind, kind};
}
