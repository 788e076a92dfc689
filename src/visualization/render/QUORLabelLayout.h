// SPDX-License-Identifier: MIT
#pragma once

#include "QUORPictureArea.h"
#include "QUORVisualizationPipelineItem.h"

#include <vtkSmartPointer.h>

#include <vector>

class QUORFlatLabelActor;
class QUORLandmarkLabel;
class vtkProp;
class vtkRenderer;

/// Which labels of a scene a picture has room for. A town under colour bar, compass or legend is left out,
/// with its marker; kept apart, also the name that would overlap one of a smaller priority number, and
/// degrees and distances that a part of the furniture would cover.
///
/// Main thread only; it holds the labels, which were drawn.
class QUORLabelLayout {
public:
    QUORLabelLayout();
    ~QUORLabelLayout();

    /// Finds the labels among the parts of a scene; an empty list drops those held.
    void collect(const std::vector<QUORVisualizationPipelineItem::ResultPart>& parts);
    /// For the renderer's present camera and size.
    void arrange(vtkRenderer* renderer, const std::vector<QUORPictureArea>& taken, bool keepsApart);

private:
    void arrangeNames(vtkRenderer* renderer, const std::vector<QUORPictureArea>& taken, bool keepsApart);
    void arrangeFlat(vtkRenderer* renderer, const std::vector<QUORPictureArea>& taken, bool keepsApart);

    /// The largest names first, which have the smallest priority numbers.
    std::vector<vtkSmartPointer<QUORLandmarkLabel>> _names;
    std::vector<vtkSmartPointer<QUORFlatLabelActor>> _flat;
};
