// SPDX-License-Identifier: MIT
#pragma once

#include "QUORAssert.h"
#include "QUORStyleGroup.h"
#include "QUORTypedVisualElement.h"

/// An element of lines and labels in the style of its component, made anew as a whole from every changed
/// record. A kind gives its texts, the name of its style group and `makeProp()`.
template <class Parameters>
class QUORStyledElement : public QUORTypedVisualElement<Parameters> {
public:
    void invalidate() final {
        const QUORLogScope scope(_className, "::invalidate");
        this->_params.reset();
        this->_prop = nullptr;
    }

    void loadStyle(bool night) {
        const QUORLogScope scope(_className, "::loadStyle");
        _style.load(night);
    }

protected:
    QUORStyledElement(QUORVisualGroup* group, int key, const QUORElementTexts& texts, const char* component)
        : QUORTypedVisualElement<Parameters>(group, key, texts),
          _className(texts.className),
          _style(component) {}

    /// The element's whole contribution; null where the record gives nothing to draw.
    virtual vtkSmartPointer<vtkProp> makeProp() const = 0;

    const QUORStyleGroup& style() const { return _style; }

    void rebuild(const QUORAbortFlag& /*abort*/) final {
        const QUORLogScope scope(_className, "::createVTK");
        QUOR_ASSERT(this->_params);
        loadStyle(false);
        this->_prop = makeProp();
    }

private:
    const char* _className;
    QUORStyleGroup _style;
};
