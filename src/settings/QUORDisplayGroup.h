// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDisplayLayer.h"

#include <QStringList>
#include <QVector>

/// A group of layers; its own visibility and opacity apply to the group as a whole.
class QUORDisplayGroup : public QUORDisplayLayer {
public:
    using Ptr = std::shared_ptr<QUORDisplayGroup>;
    using CPtr = std::shared_ptr<const QUORDisplayGroup>;

    QUORDisplayGroup() = default;
    /// The layer objects are shared, in the given order.
    QUORDisplayGroup(int key, const QString& name, bool flag, const QVector<QUORDisplayLayer::Ptr>& members);

    /// Whether a client shows the group expanded.
    bool isOpen() const { return _open; }
    void setOpen(bool open) { _open = open; }
    const QVector<QUORDisplayLayer::Ptr>& getMembers() const { return _members; }
    /// The member with that key, or null; the group itself is not considered.
    QUORDisplayLayer::Ptr getLayer(int key) const;

    /// Makes the members' keys those of `other`, and their states too.
    void copyState(const QUORDisplayGroup& other);
    /// Groups of one tree never differ.
    bool hasChanged(const QUORDisplayGroup::CPtr& previous, QStringList* changes) const;
    /// Of the group and its members.
    void resetParameters() override;

private:
    bool _open = false;
    QVector<QUORDisplayLayer::Ptr> _members;
};
