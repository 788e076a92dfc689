// SPDX-License-Identifier: MIT
#include "QUORDisplayState.h"

#include "QUORAssert.h"
#include "QUORConfig.h"
#include "QUORLog.h"

#include <algorithm>

namespace {

struct GroupRow {
    int key;
    const char* name;
};

struct LayerRow {
    int group;
    int key;
    const char* name;
    int order;
    bool lasting;
};

constexpr GroupRow GROUPS[] = {
    {QUORDisplayState::RADAR_GROUP, "GROUP_RADARLAYERS"},
    {QUORDisplayState::GEO_GROUP, "GROUP_GEOLAYERS"},
};

constexpr LayerRow LAYERS[] = {
    {QUORDisplayState::RADAR_GROUP, QUORDisplayState::OUTLINE_LAYER, "LAYER_3DOUTLINE", 301, true},
    {QUORDisplayState::RADAR_GROUP, QUORDisplayState::PRODUCT_3D_LAYER, "LAYER_3DPRODUCT", 200, false},
    {QUORDisplayState::RADAR_GROUP, QUORDisplayState::PRODUCT_2D_LAYER, "LAYER_2DPRODUCT", 100, false},
    {QUORDisplayState::GEO_GROUP, QUORDisplayState::TERRAIN_LAYER, "LAYER_3DTERRAIN", 0, true},
    {QUORDisplayState::GEO_GROUP, QUORDisplayState::LAT_LON_GRID_LAYER, "LAYER_LATLONGRID", 101, true},
    {QUORDisplayState::GEO_GROUP, QUORDisplayState::RANGE_RINGS_LAYER, "LAYER_RANGERINGS", 110, true},
    {QUORDisplayState::GEO_GROUP, QUORDisplayState::GEO_LABELS_LAYER, "LAYER_GEOLABELS", 300, true},
};

QString describe(const QUORDisplayLayer& layer) {
    return layer.getName() + QStringLiteral(" (") + QString::number(layer.getKey()) +
           QStringLiteral("), opacity=") + QString::number(layer.getOpacity()) +
           QStringLiteral(", enabled=") + QString::number(int(layer.isVisible()));
}

} // namespace

QUORDisplayState::QUORDisplayState() {
    constructDefaultState();
}

void QUORDisplayState::constructDefaultState() {
    _name = QUORConfig::VALUE_DEFAULT;
    _members.clear();
    for (const GroupRow& group : GROUPS) {
        QVector<QUORDisplayLayer::Ptr> layers;
        for (const LayerRow& layer : LAYERS) {
            if (layer.group == group.key) {
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
    return std::ranges::any_of(
        LAYERS, [layerKey](const LayerRow& layer) { return layer.key == layerKey && layer.lasting; });
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
