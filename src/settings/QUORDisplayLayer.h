// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLayerElement.h"

#include <QString>

#include <memory>
#include <utility>

class QUORLayerParameters;

/// One layer of the scene: whether it is shown, how opaque it is, what it is built from and the visual
/// element built for it. Opacity is stored and copied, and applied by nothing. Made by its display state.
class QUORDisplayLayer {
public:
    using Ptr = std::shared_ptr<QUORDisplayLayer>;
    using CPtr = std::shared_ptr<const QUORDisplayLayer>;

    /// All fields zero or empty: what `copyState` fills.
    QUORDisplayLayer() = default;
    QUORDisplayLayer(int key, const QString& name, int order);
    virtual ~QUORDisplayLayer() = default;
    QUORDisplayLayer(const QUORDisplayLayer&) = delete;
    QUORDisplayLayer& operator=(const QUORDisplayLayer&) = delete;

    /// Unique across groups and layers; selects the kind of visual element.
    int getKey() const { return _key; }
    QString getName() const { return _name; }
    /// Position of the layer's props in the scene; fixed at construction.
    int getOrder() const { return _order; }
    QString getSecondText() const { return _secondText; }
    bool isVisible() const { return _visible; }
    void setVisible(bool visible) { _visible = visible; }
    /// Percent.
    int getOpacity() const { return _opacity; }
    void setOpacity(int opacity) { _opacity = opacity; }

    /// Key, name, second text, visibility and opacity; not order, parameters and element.
    void copyState(const QUORDisplayLayer& other);

    std::shared_ptr<QUORLayerParameters> getParameters() const { return _parameters; }
    /// Keeps a copy of the record, of its exact class; null clears the layer's record.
    void setParameters(const std::shared_ptr<QUORLayerParameters>& parameters);
    /// Clears the record and invalidates the element, where there is one.
    virtual void resetParameters();

    QUORLayerElement::Ptr getElement() const { return _element; }
    void setElement(QUORLayerElement::Ptr element) { _element = std::move(element); }
    /// Whether the element adds nothing to the scene; the layer must have one.
    bool isEmpty() const;

private:
    int _key = 0;
    QString _name;
    int _order = 0;
    QString _secondText;
    bool _visible = false;
    int _opacity = 0;
    std::shared_ptr<QUORLayerParameters> _parameters;
    QUORLayerElement::Ptr _element;
};
