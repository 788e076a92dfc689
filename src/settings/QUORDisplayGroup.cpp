// SPDX-License-Identifier: MIT
#include "QUORDisplayGroup.h"

QUORDisplayGroup::QUORDisplayGroup(int key, const QString& name, bool flag,
                                   const QVector<QUORDisplayLayer::Ptr>& members)
    : QUORDisplayLayer(key, name, int(flag)), _open(true), _members(members) {}

QUORDisplayLayer::Ptr QUORDisplayGroup::getLayer(int key) const {
    for (const QUORDisplayLayer::Ptr& member : _members) {
        if (member->getKey() == key) {
            return member;
        }
    }
    return nullptr;
}

void QUORDisplayGroup::copyState(const QUORDisplayGroup& other) {
    QUORDisplayLayer::copyState(other);
    _open = other._open;
    for (const QUORDisplayLayer::Ptr& source : other._members) {
        QUORDisplayLayer::Ptr target = getLayer(source->getKey());
        if (!target) {
            target = std::make_shared<QUORDisplayLayer>();
            _members.append(target);
        }
        target->copyState(*source);
    }
    _members.removeIf([&](const QUORDisplayLayer::Ptr& member) { return !other.getLayer(member->getKey()); });
}

bool QUORDisplayGroup::hasChanged(const QUORDisplayGroup::CPtr& /*previous*/,
                                  QStringList* /*changes*/) const {
    return false;
}

void QUORDisplayGroup::resetParameters() {
    QUORDisplayLayer::resetParameters();
    for (const QUORDisplayLayer::Ptr& member : _members) {
        member->resetParameters();
    }
}
