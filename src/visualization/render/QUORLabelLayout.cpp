// SPDX-License-Identifier: MIT
#include "QUORLabelLayout.h"

#include "QUOR2DLayerActor.h"
#include "QUORDisplayState.h"
#include "QUORFlatLabelActor.h"
#include "QUORLandmarkLabel.h"

#include <vtkAssembly.h>
#include <vtkProp3DCollection.h>
#include <vtkPropAssembly.h>
#include <vtkPropCollection.h>
#include <vtkRenderer.h>

#include <algorithm>
#include <array>
#include <utility>

namespace {

QUORScreenQuad toQuad(const std::array<double, 4>& box) {
    return {box[0], box[1], box[2], box[3]};
}

std::vector<QUORScreenQuad> toPixels(vtkRenderer* renderer, const std::vector<QUORPictureArea>& areas) {
    const int* size = renderer->GetSize();
    std::vector<QUORScreenQuad> quads;
    for (const QUORPictureArea& area : areas) {
        quads.emplace_back(area.left * size[0], area.right * size[0], area.bottom * size[1],
                           area.top * size[1]);
    }
    return quads;
}

bool isAmong(const QUORScreenQuad& quad, const std::vector<QUORScreenQuad>& others) {
    return std::ranges::any_of(others, [&](const auto& other) { return quad.overlaps(other); });
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
            collectFlat(*layer, part.layerKey == QUORDisplayState::RANGE_RINGS_LAYER);
        }
    }
    std::ranges::stable_sort(_names,
                             [](const auto& a, const auto& b) { return a->GetSize() > b->GetSize(); });
}

void QUORLabelLayout::collectFlat(QUOR2DLayerActor& layer, bool first) {
    std::vector<vtkSmartPointer<QUORFlatLabelActor>> actors;
    collectFrom(layer.GetAssembly()->GetParts(), actors);
    std::vector<FlatLabel> labels;
    vtkSmartPointer<QUORFlatLabelActor> halo;
    for (const auto& actor : actors) {
        if (actor->IsHalo()) {
            halo = actor;
        } else {
            labels.push_back({actor, std::exchange(halo, nullptr)});
        }
    }
    _flat.insert(first ? _flat.begin() : _flat.end(), labels.begin(), labels.end());
}

void QUORLabelLayout::arrange(vtkRenderer* renderer, const std::vector<QUORPictureArea>& areas,
                              bool keepsApart) {
    std::vector<QUORScreenQuad> taken = toPixels(renderer, areas);
    for (const auto& label : _names) {
        std::array<double, 4> marker{};
        std::array<double, 4> name{};
        label->SetLeftOut(false);
        if (!label->FindBox(renderer, marker, name)) {
            continue;
        }
        const std::array quads{toQuad(marker), toQuad(name)};
        label->SetLeftOut(std::ranges::any_of(quads, [&](const auto& quad) { return isAmong(quad, taken); }));
        if (keepsApart && !label->IsLeftOut()) {
            taken.insert(taken.end(), quads.begin(), quads.end());
        }
    }
    if (keepsApart) {
        arrangeFlat(renderer, std::move(taken));
        return;
    }
    for (const FlatLabel& label : _flat) {
        label.forEach([](QUORFlatLabelActor& part) {
            part.LieFlat();
            part.SetVisibility(1);
        });
    }
}

void QUORLabelLayout::arrangeFlat(vtkRenderer* renderer, std::vector<QUORScreenQuad> taken) {
    const int* size = renderer->GetSize();
    for (const FlatLabel& label : _flat) {
        QUORFlatLabelActor::Corners corners{};
        label.forEach([&](QUORFlatLabelActor& part) { part.LeanTowards(renderer->GetActiveCamera()); });
        const bool isInFront = label.letters->FindCorners(renderer, corners);
        const QUORScreenQuad quad(corners);
        const bool shown = isInFront && label.letters->IsLegible(corners) &&
                           quad.isWithin(size[0], size[1]) && !isAmong(quad, taken);
        label.forEach([&](QUORFlatLabelActor& part) { part.SetVisibility(shown); });
        if (shown) {
            taken.push_back(quad);
        }
    }
}

void QUORLabelLayout::FlatLabel::forEach(const std::function<void(QUORFlatLabelActor&)>& act) const {
    act(*letters);
    if (halo) {
        act(*halo);
    }
}
