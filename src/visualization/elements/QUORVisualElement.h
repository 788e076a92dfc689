// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLayerElement.h"

#include <vtkSmartPointer.h>

#include <memory>

class QUORAbortFlag;
class QUORLayerParameters;
class QUORVisualGroup;
class vtkProp;

/// Owns the VTK objects of one layer and builds them from the layer's parameter record. Made on the
/// controller's thread together with its pipeline item, used on the pipeline's worker thread afterwards;
/// the item's in-use flag keeps the two apart. Every kind derives from QUORTypedVisualElement.
class QUORVisualElement : public QUORLayerElement {
public:
    using Ptr = std::shared_ptr<QUORVisualElement>;
    using CPtr = std::shared_ptr<const QUORVisualElement>;

    /// A new element of the kind that belongs to the layer key; an unknown key or no group is a
    /// programming error.
    static Ptr makeElement(QUORVisualGroup* group, int key);

    ~QUORVisualElement() override = default;
    QUORVisualElement(const QUORVisualElement&) = delete;
    QUORVisualElement& operator=(const QUORVisualElement&) = delete;

    /// The element's whole contribution to the scene; empty when it shows nothing.
    virtual vtkSmartPointer<vtkProp> getProp();
    /// Brings the VTK objects up to date with the record. Long work stops early when `abort` is set.
    virtual void update(std::shared_ptr<const QUORLayerParameters> params, bool visible,
                        const QUORAbortFlag& abort) = 0;
    /// Drops the VTK objects and the record; the next update with a record builds from scratch.
    void invalidate() override {}
    bool isEmpty() override;

    QUORVisualGroup* getGroup() const { return _group; }
    int getKey() const { return _key; }
    /// Makes the element part of another group: its geometry then serves the next pipeline item.
    void moveTo(QUORVisualGroup* group);

protected:
    QUORVisualElement(QUORVisualGroup* group, int key);

private:
    QUORVisualGroup* _group;
    int _key;
};
