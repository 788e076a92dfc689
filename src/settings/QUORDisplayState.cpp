// SPDX-License-Identifier: MIT
#include "QUORDisplayState.h"

#include "QUORAssert.h"
#include "QUORConfig.h"
#include "QUORLog.h"

#include <QCoreApplication>

#include <algorithm>
#include <iterator>

namespace {

using State = QUORDisplayState;

constexpr QUORDisplayState::Row ROWS[] = {
    {State::RADAR_GROUP, State::RADAR_GROUP, "GROUP_RADARLAYERS", "radar",
     QT_TRANSLATE_NOOP("QUORDisplayState", "Radar"), 0, false},
    {State::OUTLINE_LAYER, State::RADAR_GROUP, "LAYER_3DOUTLINE", "outline",
     QT_TRANSLATE_NOOP("QUORDisplayState", "Outline and heights"), 301, true},
    {State::PRODUCT_3D_LAYER, State::RADAR_GROUP, "LAYER_3DPRODUCT", "product",
     QT_TRANSLATE_NOOP("QUORDisplayState", "3D product"), 200, false},
    {State::PRODUCT_2D_LAYER, State::RADAR_GROUP, "LAYER_2DPRODUCT", "2d",
     QT_TRANSLATE_NOOP("QUORDisplayState", "2D product"), 100, false},
    {State::GEO_GROUP, State::GEO_GROUP, "GROUP_GEOLAYERS", "geo",
     QT_TRANSLATE_NOOP("QUORDisplayState", "Map"), 0, false},
    {State::TERRAIN_LAYER, State::GEO_GROUP, "LAYER_3DTERRAIN", "terrain",
     QT_TRANSLATE_NOOP("QUORDisplayState", "Terrain"), 0, true},
    {State::LAT_LON_GRID_LAYER, State::GEO_GROUP, "LAYER_LATLONGRID", "grid",
     QT_TRANSLATE_NOOP("QUORDisplayState", "Latitudes and longitudes"), 101, true},
    {State::RANGE_RINGS_LAYER, State::GEO_GROUP, "LAYER_RANGERINGS", "rings",
     QT_TRANSLATE_NOOP("QUORDisplayState", "Range rings"), 110, true},
    {State::GEO_LABELS_LAYER, State::GEO_GROUP, "LAYER_GEOLABELS", "landmarks",
     QT_TRANSLATE_NOOP("QUORDisplayState", "Places"), 300, true},
};

QString describe(const QUORDisplayLayer& layer) {
    return layer.getName() + QStringLiteral(" (") + QString::number(layer.getKey()) +
           QStringLiteral("), opacity=") + QString::number(layer.getOpacity()) +
           QStringLiteral(", enabled=") + QString::number(int(layer.isVisible()));
}

} // namespace

std::span<const QUORDisplayState::Row> QUORDisplayState::getRows() {
    return ROWS;
}

const QUORDisplayState::Row& QUORDisplayState::getRow(int key) {
    const auto row = std::ranges::find(ROWS, key, &Row::key);
    QUOR_ASSERT(row != std::end(ROWS));
    return *row;
}

QUORDisplayState::QUORDisplayState() {
    constructDefaultState();
}

void QUORDisplayState::constructDefaultState() {
    _name = QUORConfig::VALUE_DEFAULT;
    _members.clear();
    for (const Row& group : ROWS) {
        if (!group.isGroup()) {
            continue;
        }
        QVector<QUORDisplayLayer::Ptr> layers;
        for (const Row& layer : ROWS) {
            if (!layer.isGroup() && layer.group == group.key) {
                layers.append(std::make_shared<QUORDisplayLayer>(layer.key, QString::fromLatin1(layer.name),
                                                                 layer.order));
            }
        }
        _members.append(
            std::make_shared<QUORDisplayGroup>(group.key, QString::fromLatin1(group.name), true, layers));
    }
}

QUORDisplayGroup::Ptr QUORDisplayState::getGroup(int key) const {
    for (const QUORDisplayGroup::Ptr& group : _members) {
        if (group->getKey() == key) {
            return group;
        }
    }
    return nullptr;
}

QUORDisplayLayer::Ptr QUORDisplayState::getLayer(int key) const {
    for (const QUORDisplayGroup::Ptr& group : _members) {
        if (group->getKey() == key) {
            return group;
        }
        if (QUORDisplayLayer::Ptr layer = group->getLayer(key)) {
            return layer;
        }
    }
    return nullptr;
}

bool QUORDisplayState::has2DEnabled() const {
    const QUORDisplayLayer::Ptr group = getGroup(RADAR_GROUP);
    const QUORDisplayLayer::Ptr layer = getLayer(PRODUCT_2D_LAYER);
    return group && group->isVisible() && layer && layer->isVisible();
}

bool QUORDisplayState::isLasting(int layerKey) {
    return std::ranges::any_of(ROWS,
                               [layerKey](const Row& row) { return row.key == layerKey && row.lasting; });
}

void QUORDisplayState::copyState(const QUORDisplayState& other) {
    for (const QUORDisplayGroup::Ptr& source : other._members) {
        QUORDisplayGroup::Ptr target = getGroup(source->getKey());
        if (!target) {
            target = std::make_shared<QUORDisplayGroup>();
            _members.append(target);
        }
        target->copyState(*source);
    }
    _members.removeIf([&](const QUORDisplayGroup::Ptr& group) { return !other.getGroup(group->getKey()); });
}

bool QUORDisplayState::hasChanged(const QUORDisplayState& prevState, QStringList* changes) const {
    QUOR_ASSERT(getMembers().count() == prevState.getMembers().count());
    for (qsizetype i = 0; i < getMembers().count(); ++i) {
        const QUORDisplayGroup::CPtr group = getMembers().at(i);
        const QUORDisplayGroup::CPtr prevGroup = prevState.getMembers().at(i);
        QUOR_ASSERT(group->getKey() == prevGroup->getKey());
        QUOR_ASSERT(group->getMembers().count() == prevGroup->getMembers().count());
        group->hasChanged(prevGroup, changes);
    }
    return true;
}

void QUORDisplayState::resetParameters() {
    for (const QUORDisplayGroup::Ptr& group : _members) {
        group->resetParameters();
    }
}

void QUORDisplayState::printDisplayState() const {
    QUORLog& log = QUORLog::Instance();
    log.logDebug(QStringLiteral("Display state groups and layers:"));
    for (const QUORDisplayGroup::Ptr& group : _members) {
        log.logDebug(QStringLiteral("Group: ") + describe(*group) + QStringLiteral(", open=") +
                     QString::number(int(group->isOpen())));
        for (const QUORDisplayLayer::Ptr& layer : group->getMembers()) {
            log.logDebug(QStringLiteral("  Layer:  ") + describe(*layer));
        }
    }
}
