// SPDX-License-Identifier: MIT
#include "QUORSceneOpacity.h"

#include "QUOR2DLayerActor.h"
#include "QUORLandmarkLabel.h"

#include <vtkActor.h>
#include <vtkAssembly.h>
#include <vtkNew.h>
#include <vtkPiecewiseFunction.h>
#include <vtkProp3DCollection.h>
#include <vtkPropAssembly.h>
#include <vtkPropCollection.h>
#include <vtkProperty.h>
#include <vtkVolume.h>
#include <vtkVolumeProperty.h>

#include <algorithm>
#include <array>

namespace {

/// A state that was stored without opacities has zeros.
double shareOf(const QUORDisplayState& state, int key) {
    const int percent = state.getLayer(key)->getOpacity();
    return percent > 0 ? std::min(percent, 100) / 100.0 : 1.0;
}

} // namespace

QUORSceneOpacity::QUORSceneOpacity() = default;

QUORSceneOpacity::~QUORSceneOpacity() = default;

void QUORSceneOpacity::apply(const QUORVisualizationPipelineItem& item, const QUORDisplayState& state) {
    for (const auto& part : item.getResultParts()) {
        const int group = part.layerKey < QUORDisplayState::GEO_GROUP ? QUORDisplayState::RADAR_GROUP
                                                                      : QUORDisplayState::GEO_GROUP;
        applyTo(part.prop, shareOf(state, part.layerKey) * shareOf(state, group), false);
    }
}

void QUORSceneOpacity::applyTo(vtkProp* prop, double opacity, bool flat) {
    if (auto* layer = QUOR2DLayerActor::SafeDownCast(prop)) {
        applyTo(layer->GetAssembly(), opacity, true);
    } else if (auto* assembly = vtkAssembly::SafeDownCast(prop)) {
        vtkCollectionSimpleIterator cookie;
        assembly->GetParts()->InitTraversal(cookie);
        while (vtkProp3D* part = assembly->GetParts()->GetNextProp3D(cookie)) {
            applyTo(part, opacity, flat);
        }
    } else if (auto* group = vtkPropAssembly::SafeDownCast(prop)) {
        vtkCollectionSimpleIterator cookie;
        group->GetParts()->InitTraversal(cookie);
        while (vtkProp* part = group->GetParts()->GetNextProp(cookie)) {
            applyTo(part, opacity, flat);
        }
    } else if (auto* label = QUORLandmarkLabel::SafeDownCast(prop)) {
        label->SetOpacity(opacity);
    } else if (auto* volume = vtkVolume::SafeDownCast(prop)) {
        applyToVolume(volume, opacity);
    } else if (auto* actor = vtkActor::SafeDownCast(prop); actor != nullptr && actor->GetVisibility() != 0) {
        actor->GetProperty()->SetOpacity(opacity);
        if (flat) {
            // What lies on the ground is drawn before everything that stands on it, blended or not.
            actor->SetForceOpaque(opacity < 1.0);
        }
    }
}

void QUORSceneOpacity::applyToVolume(vtkVolume* volume, double opacity) {
    if (volume->GetProperty() != _property) {
        _property = volume->GetProperty();
        _ramp = _property->GetScalarOpacity();
    }
    vtkNew<vtkPiecewiseFunction> ramp;
    for (int i = 0; i < _ramp->GetSize(); ++i) {
        std::array<double, 4> node{};
        _ramp->GetNodeValue(i, node.data());
        ramp->AddPoint(node[0], node[1] * opacity, node[2], node[3]);
    }
    _property->SetScalarOpacity(ramp);
}
