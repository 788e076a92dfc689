// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLandmarkLabel.h"
#include "QUORLayerParametersGeoLabels.h"
#include "QUORTypedVisualElement.h"

#include <QVector>

/// The landmarks of the area as labels, one a landmark of the record's set and in its order. A new record
/// with the same landmarks moves the labels, other landmarks make new ones. A landmark that the map cannot
/// place has a label that is not visible.
class QUORGeoLabelsElement : public QUORTypedVisualElement<QUORLayerParametersGeoLabels> {
public:
    QUORGeoLabelsElement(QUORVisualGroup* group, int key);

    void invalidate() override;
    const QVector<vtkSmartPointer<QUORLandmarkLabel>>& getLabels() const { return _labels; }

protected:
    void rebuild(const QUORAbortFlag& abort) override;

private:
    void createVTK();
    void makeLabels(const QUORLandmarkSet& landmarks);
    void placeLabels(const QUORLandmarkSet& landmarks);

    QVector<vtkSmartPointer<QUORLandmarkLabel>> _labels;
    /// The set that the labels were made for.
    std::shared_ptr<const QUORLandmarkSet> _labelled;
};
