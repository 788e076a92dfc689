// SPDX-License-Identifier: MIT
#include "QUORMissing2D.h"

#include "QUOR2DTop.h"
#include "QUORBackgroundSettings.h"
#include "QUORLog.h"

#include <cmath>

namespace {

constexpr qsizetype MAXIMUM_WAITING = 1000;
constexpr qsizetype NAMED_SITES = 3;

enum Cause { NoConfiguration, UnknownProduct, NoDirectory, None, OtherSites, NoTime, OtherTime };

struct Finding {
    Cause cause;
    QString text;
};

/// What waits as one.
QString nameImages(const QUORFileLeaf& leaf) {
    return leaf.getSite() + QLatin1Char(' ') + leaf.getConfiguration();
}

QStringList findOtherSites(const QUOR2DTop& tree, const QString& product) {
    QStringList sites = tree.listSites();
    sites.removeIf([&](const QString& site) {
        return !tree.listProductsForSite(site, false).contains(product, Qt::CaseInsensitive);
    });
    return sites;
}

Finding findNearest(const QUORFileLeaf& leaf, const QUOR2DTop::Leaves& leaves, int timeWindow) {
    const QDateTime time = leaf.getFile()->getDataTime();
    const QUORFileLeaf::Ptr nearest = QUOR2DTop::findClosestMatch(leaves, time);
    const QDateTime nearestTime = nearest ? nearest->getFile()->getDataTime() : QDateTime();
    if (!time.isValid() || !nearestTime.isValid()) {
        return {NoTime, QStringLiteral("one of the two has no possible time")};
    }
    return {OtherTime, QStringLiteral("the closest of this site is ") +
                           QString::number(std::abs(time.secsTo(nearestTime))) +
                           QStringLiteral(" seconds away, and timewindow=") + QString::number(timeWindow) +
                           QStringLiteral(" accepts half of that to either side")};
}

Finding findCause(const QUORFileLeaf& leaf, const QString& product, int timeWindow, const QUOR2DTop* tree) {
    if (!QUORBackgroundSettings::getAllConfigurations().contains(leaf.getConfiguration())) {
        return {NoConfiguration,
                QStringLiteral("its data type ") + QString::number(leaf.getFile()->getRawType()) +
                    QStringLiteral(" has no configuration that a 2D product could be set for")};
    }
    const QStringList known = QUORBackgroundSettings::getAll2DProducts();
    const bool isPattern = product.contains(QLatin1Char('*')) || product.contains(QLatin1Char('?'));
    if (!known.contains(product) && !isPattern) {
        return {UnknownProduct, QLatin1Char('"') + product +
                                    QStringLiteral("\" is no 2D product, valid are ") +
                                    known.join(QStringLiteral(", "))};
    }
    if (tree == nullptr || tree->getPath().isEmpty()) {
        return {NoDirectory, QStringLiteral("no 2D product directory is configured")};
    }
    const auto leaves = tree->findLeaves(leaf.getSite(), product, QStringLiteral("*"), QStringLiteral("*"));
    if (!leaves.isEmpty()) {
        return findNearest(leaf, leaves, timeWindow);
    }
    const QStringList sites = findOtherSites(*tree, product);
    if (sites.isEmpty()) {
        return {None, QStringLiteral("there is none at all in ") + tree->getPath()};
    }
    return {OtherSites, QStringLiteral("there is only that of ") +
                            sites.mid(0, NAMED_SITES).join(QStringLiteral(", ")) +
                            (sites.size() > NAMED_SITES ? QStringLiteral(" ...") : QString())};
}

} // namespace

void QUORMissing2D::report(const QUORFileLeaf::CPtr& leaf3d, const QString& product, int timeWindow,
                           const QUOR2DTop* tree, int wait) {
    const QString images = nameImages(*leaf3d);
    if (!_waiting.contains(images) && _waiting.size() >= MAXIMUM_WAITING) {
        return;
    }
    Waiting& waiting = _waiting[images];
    const Finding finding = findCause(*leaf3d, product, timeWindow, tree);
    if (waiting.cause != finding.cause || waiting.product != product) {
        const QString what =
            wait < 0
                ? QStringLiteral("No image of ") + images + QStringLiteral(" before its 2D product ") +
                      product + QStringLiteral(" arrives: ")
                : QStringLiteral("Image of ") + images + QStringLiteral(" drawn without its 2D product ") +
                      product + QStringLiteral(", which has not come within ") + QString::number(wait) +
                      QStringLiteral(" seconds: ");
        QUORLog::Instance().logError(
            what + finding.text + QStringLiteral(". To do without, set the 2D product of ") +
            leaf3d->getConfiguration() +
            QStringLiteral(" to (none) or use a display state without the 2D layer: ") + leaf3d->getPath());
    }
    waiting = {leaf3d, product, finding.cause, wait};
}

void QUORMissing2D::forget(const QUORFileLeaf& leaf3d) {
    _waiting.remove(nameImages(leaf3d));
}

void QUORMissing2D::reportAgain(const QUORFileLeaf& leaf2d, int timeWindow, const QUOR2DTop* tree) {
    const QMap<QString, Waiting> waiting = _waiting;
    for (const Waiting& images : waiting) {
        if (images.product.compare(leaf2d.getProduct(), Qt::CaseInsensitive) == 0) {
            report(images.leaf, images.product, timeWindow, tree, images.wait);
        }
    }
}
