// SPDX-License-Identifier: MIT
#include "QUORVisualGroup.h"

#include "QUORLog.h"

#include <algorithm>
#include <utility>

namespace {

QUORVisualElement::Ptr* findElement(QVector<QUORVisualElement::Ptr>& elements, int key) {
    const auto found = std::find_if(elements.begin(), elements.end(),
                                    [key](const auto& element) { return element->getKey() == key; });
    return found == elements.end() ? nullptr : &*found;
}

} // namespace

QUORVisualGroup::Ptr QUORVisualGroup::makeGroup(int key) {
    return Ptr(new QUORVisualGroup(key));
}

void QUORVisualGroup::update(std::shared_ptr<const QUORLayerParameters> params, bool /*visible*/) {
    if (!params) {
        QUORLog::Instance().logDebug(QStringLiteral("No parameters -> invalidate visual group."));
        invalidate();
        return;
    }
    _params = std::move(params);
}

void QUORVisualGroup::invalidate() {
    for (const QUORVisualElement::Ptr& element : std::as_const(_elements)) {
        element->invalidate();
    }
    _params.reset();
}

void QUORVisualGroup::exchangeElement(QUORVisualGroup& other, int elementKey) {
    QUORVisualElement::Ptr* mine = findElement(_elements, elementKey);
    QUORVisualElement::Ptr* theirs = findElement(other._elements, elementKey);
    if (mine == nullptr || theirs == nullptr) {
        return;
    }
    std::swap(*mine, *theirs);
    (*mine)->moveTo(this);
    (*theirs)->moveTo(&other);
}
