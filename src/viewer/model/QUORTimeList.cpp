// SPDX-License-Identifier: MIT
#include "QUORTimeList.h"

#include <QFileInfo>

#include <algorithm>

namespace {

const QString ANY = QStringLiteral("*");

qint64 timeOf(const QUORFileLeaf& leaf) {
    const QDateTime time = leaf.getFile()->getDataTime();
    return time.isValid() ? time.toSecsSinceEpoch() : 0;
}

} // namespace

QUORTimeList::QUORTimeList() : _store(std::make_shared<QUORDataStore>(this)) {}

QUORTimeList::~QUORTimeList() = default;

void QUORTimeList::open(const QString& path3d, const QString& path2d, const QString& terrain,
                        const QString& terrainCache) {
    _store->setDirectories(path3d, path2d, terrain, terrainCache);
    _times.clear();
    _index = -1;
    chooseSeries();
    readTimes();
    Q_EMIT listChanged();
    select(int(_times.size()) - 1);
}

QStringList QUORTimeList::getSites() const {
    const QUOR3DTop::Ptr top = _store->get3DTop();
    return top ? top->listSites() : QStringList();
}

QStringList QUORTimeList::getConfigurations(const QString& site) const {
    QStringList configurations;
    if (const QUOR3DTop::Ptr top = _store->get3DTop()) {
        for (const QUORFileLeaf::Ptr& leaf : top->findLeaves(ANY, ANY, ANY, ANY)) {
            if (leaf->getSite() == site && !configurations.contains(leaf->getConfiguration())) {
                configurations.append(leaf->getConfiguration());
            }
        }
    }
    configurations.sort();
    return configurations;
}

void QUORTimeList::chooseSeries() {
    const QStringList sites = getSites();
    if (!sites.contains(_site)) {
        _site = sites.value(0);
    }
    const QStringList configurations = getConfigurations(_site);
    if (!configurations.contains(_configuration)) {
        const QString usual = QStringLiteral("Z");
        _configuration = configurations.contains(usual) ? usual : configurations.value(0);
    }
}

void QUORTimeList::readTimes() {
    _times.clear();
    if (const QUOR3DTop::Ptr top = _store->get3DTop()) {
        for (const QUORFileLeaf::Ptr& leaf : top->findLeaves(ANY, ANY, ANY, ANY)) {
            if (leaf->getSite() == _site && leaf->getConfiguration() == _configuration) {
                _times.append(leaf);
            }
        }
    }
    std::stable_sort(_times.begin(), _times.end(),
                     [](const auto& a, const auto& b) { return timeOf(*a) < timeOf(*b); });
}

QUORFileLeaf::Ptr QUORTimeList::getCurrent() const {
    return _index >= 0 ? _times.at(_index) : nullptr;
}

QUORFileLeaf::Ptr QUORTimeList::getNeighbour(int steps) const {
    const int count = int(_times.size());
    if (_index < 0 || count < 2) {
        return nullptr;
    }
    return _times.at(((_index + steps) % count + count) % count);
}

void QUORTimeList::select(int index) {
    _index = std::clamp(index, -1, int(_times.size()) - 1);
    Q_EMIT currentChanged();
}

void QUORTimeList::choose(const QString& site, const QString& configuration) {
    if (site == _site && configuration == _configuration) {
        return;
    }
    const QUORFileLeaf::Ptr before = getCurrent();
    _site = site;
    _configuration = configuration;
    chooseSeries();
    readTimes();
    const auto nearer = [&](const QUORFileLeaf::Ptr& a, const QUORFileLeaf::Ptr& b) {
        return std::abs(timeOf(*a) - timeOf(*before)) < std::abs(timeOf(*b) - timeOf(*before));
    };
    Q_EMIT listChanged();
    const auto last = int(_times.size()) - 1;
    select(before && !_following
               ? int(std::min_element(_times.cbegin(), _times.cend(), nearer) - _times.cbegin())
               : last);
}

void QUORTimeList::choose(int index) {
    if (index < 0 || index >= _times.size() || index == _index) {
        return;
    }
    if (_following) {
        _following = false;
        Q_EMIT followingChanged(false);
    }
    select(index);
}

bool QUORTimeList::chooseFile(const QString& path) {
    const QUOR3DTop::Ptr top = _store->get3DTop();
    const QUORFileLeaf::Ptr leaf = top ? top->findLeaf(QFileInfo(path).fileName()) : nullptr;
    if (!leaf) {
        return false;
    }
    _site = leaf->getSite();
    _configuration = leaf->getConfiguration();
    readTimes();
    Q_EMIT listChanged();
    select(int(_times.indexOf(leaf)));
    return true;
}

void QUORTimeList::step(int steps) {
    const QUORFileLeaf::Ptr leaf = getNeighbour(steps);
    if (leaf) {
        choose(int(_times.indexOf(leaf)));
    }
}

void QUORTimeList::setFollowing(bool following) {
    if (following == _following) {
        return;
    }
    _following = following;
    Q_EMIT followingChanged(following);
    if (following && _index != _times.size() - 1) {
        select(int(_times.size()) - 1);
    }
}

void QUORTimeList::dataStoreNewDataAvailable3d(QUORDataStore* /*store*/, const QStringList& added,
                                               const QStringList& removed) {
    const QUORFileLeaf::Ptr before = getCurrent();
    const int index = _index;
    chooseSeries();
    readTimes();
    Q_EMIT listChanged();
    const bool came = added.size() > removed.size() || (!added.isEmpty() && !before);
    if ((_following && came) || !before) {
        if (!_times.isEmpty() && _times.last() != before) {
            select(int(_times.size()) - 1);
        }
        return;
    }
    const auto same = std::find_if(_times.cbegin(), _times.cend(),
                                   [&](const auto& leaf) { return leaf->getKey() == before->getKey(); });
    if (same == _times.cend()) {
        select(std::min(index, int(_times.size()) - 1));
        return;
    }
    _index = int(same - _times.cbegin());
    if (*same != before) {
        Q_EMIT currentChanged();
    }
}

void QUORTimeList::dataStoreNewDataAvailable2d(QUORDataStore* /*store*/, const QStringList& /*added*/,
                                               const QStringList& /*removed*/) {
    if (getCurrent()) {
        Q_EMIT currentChanged();
    }
}
