// SPDX-License-Identifier: MIT
#include "QUORSceneParts.h"

#include "QUORDisplayState.h"

#include <vtkPropAssembly.h>
#include <vtkRenderer.h>

#include <algorithm>
#include <malloc.h>

namespace {

bool isProduct(const QUORSceneParts::ResultPart& part) {
    return !QUORDisplayState::isLasting(part.layerKey);
}

} // namespace

QUORSceneParts::QUORSceneParts(vtkRenderer* statics, vtkRenderer* rest)
    : _statics(vtkSmartPointer<vtkPropAssembly>::New()), _rest(vtkSmartPointer<vtkPropAssembly>::New()) {
    statics->AddViewProp(_statics);
    rest->AddViewProp(_rest);
}

QUORSceneParts::~QUORSceneParts() = default;

void QUORSceneParts::show(const std::vector<ResultPart>& parts, vtkWindow* window) {
    for (const ResultPart& old : _shown) {
        const bool stays = std::any_of(parts.begin(), parts.end(),
                                       [&](const ResultPart& part) { return part.prop == old.prop; });
        if (!stays) {
            old.prop->ReleaseGraphicsResources(window);
        }
        remove(old);
    }
    _shown = parts;
    for (const ResultPart& part : _shown) {
        const bool first = &part == &_shown.front();
        const bool apart = first && part.layerKey == QUORDisplayState::TERRAIN_LAYER;
        (apart ? _statics : _rest)->AddPart(part.prop);
    }
    setVisible(true);
}

void QUORSceneParts::hide(vtkWindow* window) {
    for (const ResultPart& part : _shown) {
        if (isProduct(part)) {
            part.prop->ReleaseGraphicsResources(window);
            remove(part);
        }
    }
    std::erase_if(_shown, isProduct);
    setVisible(false);
}

vtkProp* QUORSceneParts::getTerrain() const {
    const bool has = !_shown.empty() && _shown.front().layerKey == QUORDisplayState::TERRAIN_LAYER;
    return has ? _shown.front().prop.Get() : nullptr;
}

void QUORSceneParts::setStaticsDrawn(bool drawn) {
    _statics->SetVisibility(drawn);
}

void QUORSceneParts::releaseStatics(vtkWindow* window) {
    _statics->ReleaseGraphicsResources(window);
    ::malloc_trim(0); // some 150 MB of many small pieces, which would stay with the process
}

void QUORSceneParts::remove(const ResultPart& part) {
    _statics->RemovePart(part.prop);
    _rest->RemovePart(part.prop);
}

void QUORSceneParts::setVisible(bool visible) {
    _statics->SetVisibility(visible);
    _rest->SetVisibility(visible);
}
