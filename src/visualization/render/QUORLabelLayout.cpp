// SPDX-License-Identifier: MIT
#include "QUORLabelLayout.h"

#include "QUOR2DLayerActor.h"
#include "QUORFlatLabelActor.h"
#include "QUORLandmarkLabel.h"

#include <vtkAssembly.h>
#include <vtkProp3DCollection.h>
#include <vtkPropAssembly.h>
#include <vtkPropCollection.h>
#include <vtkRenderer.h>

#include <algorithm>
#include <array>

namespace {

/// Left, right, bottom and top in pixels.
using Box = std::array<double, 4>;

bool overlap(const Box& a, const Box& b) {
    return a[0] < b[1] && b[0] < a[1] && a[2] < b[3] && b[2] < a[3];
}

std::vector<Box> toPixels(vtkRenderer* renderer, const std::vector<QUORPictureArea>& areas) {
    const int* size = renderer->GetSize();
    std::vector<Box> boxes;
    for (const QUORPictureArea& area : areas) {
        boxes.push_back(
            {area.left * size[0], area.right * size[0], area.bottom * size[1], area.top * size[1]});
    }
    return boxes;
}

bool isAmong(const Box& box, const std::vector<Box>& others) {
    return std::ranges::any_of(others, [&](const Box& other) { return overlap(box, other); });
}

template <class Prop, class Collection>
void collectFrom(Collection* parts, std::vector<vtkSmartPointer<Prop>>& found) {
    vtkCollectionSimpleIterator cookie;
    parts->InitTraversal(cookie);
    while (vtkObject* part = parts->GetNextItemAsObject(cookie)) {
        if (auto* label = Prop::SafeDownCast(part)) {
            found.emplace_back(label);
        }
    }
}

} // namespace

QUORLabelLayout::QUORLabelLayout() = default;

QUORLabelLayout::~QUORLabelLayout() = default;

void QUORLabelLayout::collect(const std::vector<QUORVisualizationPipelineItem::ResultPart>& parts) {
    _names.clear();
    _flat.clear();
    for (const auto& part : parts) {
        if (auto* assembly = vtkPropAssembly::SafeDownCast(part.prop)) {
            collectFrom(assembly->GetParts(), _names);
        } else if (auto* layer = QUOR2DLayerActor::SafeDownCast(part.prop)) {
            collectFrom(layer->GetAssembly()->GetParts(), _flat);
        }
    }
    std::ranges::stable_sort(_names,
                             [](const auto& a, const auto& b) { return a->GetSize() > b->GetSize(); });
}

void QUORLabelLayout::arrange(vtkRenderer* renderer, const std::vector<QUORPictureArea>& taken,
                              bool keepsApart) {
    arrangeNames(renderer, taken, keepsApart);
    arrangeFlat(renderer, taken, keepsApart);
}

void QUORLabelLayout::arrangeNames(vtkRenderer* renderer, const std::vector<QUORPictureArea>& taken,
                                   bool keepsApart) {
    const std::vector<Box> furniture = toPixels(renderer, taken);
    std::vector<Box> placed;
    for (const auto& label : _names) {
        Box marker{};
        Box name{};
        label->SetLeftOut(false);
        if (!label->FindBox(renderer, marker, name)) {
            continue;
        }
        label->SetLeftOut(isAmong(marker, furniture) || isAmong(name, furniture) ||
                          (keepsApart && isAmong(name, placed)));
        if (!label->IsLeftOut()) {
            placed.push_back(name);
        }
    }
}

void QUORLabelLayout::arrangeFlat(vtkRenderer* renderer, const std::vector<QUORPictureArea>& taken,
                                  bool keepsApart) {
    const std::vector<Box> furniture = toPixels(renderer, taken);
    for (const auto& label : _flat) {
        Box box{};
        const bool isCovered = keepsApart && label->FindBox(renderer, box) && isAmong(box, furniture);
        label->SetVisibility(isCovered ? 0 : 1);
    }
}
