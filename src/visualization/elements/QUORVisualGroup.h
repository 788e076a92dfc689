// SPDX-License-Identifier: MIT
#pragma once

#include "QUORVisualElement.h"

#include <QVector>

#include <memory>

/// The visual elements of one display group. Lives and dies with its pipeline item and is used where the
/// item is.
class QUORVisualGroup {
public:
    using Ptr = std::shared_ptr<QUORVisualGroup>;
    using CPtr = std::shared_ptr<const QUORVisualGroup>;

    /// A new group without elements; any key is accepted.
    static Ptr makeGroup(int key);

    virtual ~QUORVisualGroup() = default;
    QUORVisualGroup(const QUORVisualGroup&) = delete;
    QUORVisualGroup& operator=(const QUORVisualGroup&) = delete;

    /// Keeps the record; without one the group and its elements show nothing.
    virtual void update(std::shared_ptr<const QUORLayerParameters> params, bool visible);
    virtual void invalidate();

    int getKey() const { return _key; }
    std::shared_ptr<const QUORLayerParameters> getParams() const { return _params; }
    /// In the display group's order.
    const QVector<QUORVisualElement::Ptr>& getElements() const { return _elements; }
    void addElement(const QUORVisualElement::Ptr& element) { _elements.append(element); }
    /// Exchanges the element of that layer key with the other group's, built geometry and all.
    void exchangeElement(QUORVisualGroup& other, int elementKey);

private:
    explicit QUORVisualGroup(int key) : _key(key) {}

    int _key;
    QVector<QUORVisualElement::Ptr> _elements;
    std::shared_ptr<const QUORLayerParameters> _params;
};
