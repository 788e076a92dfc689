// SPDX-License-Identifier: MIT
#pragma once

#include "QUORPictureArea.h"
#include "QUORScreenQuad.h"
#include "QUORVisualizationPipelineItem.h"

#include <vtkSmartPointer.h>

#include <functional>
#include <vector>

class QUOR2DLayerActor;
class QUORFlatLabelActor;
class QUORLandmarkLabel;
class vtkRenderer;

/// Which labels of a scene a picture has room for. A town under colour bar, compass or legend is left out,
/// with its marker. Kept apart, so is a name that would overlap the name or the marker of a smaller priority
/// number, and of the degrees and distances what a part of the furniture, a name or the picture's edge would
/// cover, what is too low to be read, and what would overlap one before it: distances come first, for
/// degrees stand at both ends of their lines.
///
/// Main thread only; it holds the labels, which were drawn.
class QUORLabelLayout {
public:
    QUORLabelLayout();
    ~QUORLabelLayout();

    /// Finds the labels among the parts of a scene; an empty list drops those held.
    void collect(const std::vector<QUORVisualizationPipelineItem::ResultPart>& parts);
    /// For the renderer's present camera and size.
    void arrange(vtkRenderer* renderer, const std::vector<QUORPictureArea>& areas, bool keepsApart);

private:
    struct FlatLabel {
        vtkSmartPointer<QUORFlatLabelActor> letters;
        /// Null without one.
        vtkSmartPointer<QUORFlatLabelActor> halo;

        void forEach(const std::function<void(QUORFlatLabelActor&)>& act) const;
    };

    void collectFlat(QUOR2DLayerActor& layer, bool first);
    void arrangeFlat(vtkRenderer* renderer, std::vector<QUORScreenQuad> taken);

    /// The largest names first, which have the smallest priority numbers.
    std::vector<vtkSmartPointer<QUORLandmarkLabel>> _names;
    std::vector<FlatLabel> _flat;
};
