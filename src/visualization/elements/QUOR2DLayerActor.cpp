// SPDX-License-Identifier: MIT
#include "QUOR2DLayerActor.h"

#include <vtkAssembly.h>
#include <vtkBoundingBox.h>
#include <vtkMath.h>
#include <vtkMatrix4x4.h>
#include <vtkObjectFactory.h>
#include <vtkOpenGLRenderWindow.h>
#include <vtkOpenGLState.h>
#include <vtkProp3DCollection.h>
#include <vtkViewport.h>
#include <vtk_glew.h>

#include <algorithm>
#include <optional>

namespace {

/// Depth testing off while it lives; nothing where the viewport has no OpenGL window.
class DepthTestOff {
public:
    explicit DepthTestOff(vtkViewport* viewport) {
        auto* window = vtkOpenGLRenderWindow::SafeDownCast(viewport->GetVTKWindow());
        if (!window) {
            return;
        }
        _restore.emplace(window->GetState(), GL_DEPTH_TEST);
        window->GetState()->vtkglDisable(GL_DEPTH_TEST);
    }

private:
    std::optional<vtkOpenGLState::ScopedglEnableDisable> _restore;
};

bool isEqual(const vtkMatrix4x4* a, const vtkMatrix4x4* b) {
    return a && std::equal(a->GetData(), a->GetData() + 16, b->GetData());
}

template <typename Visitor>
void forEachPart(vtkAssembly* assembly, Visitor visitor) {
    vtkCollectionSimpleIterator cookie;
    vtkProp3DCollection* parts = assembly->GetParts();
    parts->InitTraversal(cookie);
    while (vtkProp3D* part = parts->GetNextProp3D(cookie)) {
        visitor(part);
    }
}

} // namespace

QUOR2DLayerActor::QUOR2DLayerActor()
    : Assembly(vtkSmartPointer<vtkAssembly>::New()), PartMatrix(vtkSmartPointer<vtkMatrix4x4>::New()) {}

QUOR2DLayerActor::~QUOR2DLayerActor() = default;

void QUOR2DLayerActor::AddPart(vtkProp3D* part) {
    this->Assembly->AddPart(part);
    this->Modified();
}

vtkAssembly* QUOR2DLayerActor::GetAssembly() const {
    return this->Assembly;
}

double* QUOR2DLayerActor::GetBounds() {
    this->HandMatrixToParts();
    vtkBoundingBox box;
    // The assembly's own way pokes a matrix into each part, which counts as a change of the part.
    forEachPart(this->Assembly, [&](vtkProp3D* part) {
        const double* bounds = part->GetVisibility() && part->GetUseBounds() ? part->GetBounds() : nullptr;
        if (bounds && vtkMath::AreBoundsInitialized(bounds)) {
            box.AddBounds(bounds);
        }
    });
    if (!box.IsValid()) {
        return nullptr;
    }
    box.GetBounds(this->Bounds);
    return this->Bounds;
}

void QUOR2DLayerActor::BuildPaths(vtkAssemblyPaths* paths, vtkAssemblyPath* path) {
    this->HandMatrixToParts();
    this->Superclass::BuildPaths(paths, path);
}

void QUOR2DLayerActor::ShallowCopy(vtkProp* prop) {
    if (auto* other = QUOR2DLayerActor::SafeDownCast(prop)) {
        this->Assembly = other->Assembly;
    }
    this->Superclass::ShallowCopy(prop);
}

int QUOR2DLayerActor::RenderOpaqueGeometry(vtkViewport* viewport) {
    return this->RenderParts(viewport, &vtkProp::RenderOpaqueGeometry);
}

int QUOR2DLayerActor::RenderTranslucentPolygonalGeometry(vtkViewport* viewport) {
    return this->RenderParts(viewport, &vtkProp::RenderTranslucentPolygonalGeometry);
}

int QUOR2DLayerActor::RenderVolumetricGeometry(vtkViewport* viewport) {
    return this->RenderParts(viewport, &vtkProp::RenderVolumetricGeometry);
}

int QUOR2DLayerActor::RenderOverlay(vtkViewport* viewport) {
    return this->RenderParts(viewport, &vtkProp::RenderOverlay);
}

vtkTypeBool QUOR2DLayerActor::HasTranslucentPolygonalGeometry() {
    vtkTypeBool translucent = 0;
    forEachPart(this->Assembly, [&](vtkProp3D* part) {
        if (part->GetVisibility() && part->HasTranslucentPolygonalGeometry()) {
            translucent = 1;
        }
    });
    return translucent;
}

void QUOR2DLayerActor::ReleaseGraphicsResources(vtkWindow* window) {
    this->Assembly->ReleaseGraphicsResources(window);
    this->Superclass::ReleaseGraphicsResources(window);
}

int QUOR2DLayerActor::RenderParts(vtkViewport* viewport, RenderPass pass) {
    this->HandMatrixToParts();
    const DepthTestOff depthTestOff(viewport);
    int rendered = 0;
    forEachPart(this->Assembly, [&](vtkProp3D* part) {
        if (part->GetVisibility()) {
            rendered += (part->*pass)(viewport);
        }
    });
    return rendered;
}

void QUOR2DLayerActor::HandMatrixToParts() {
    const vtkMatrix4x4* own = this->GetMatrix();
    // What holds the matrix already keeps its modification time, and what was built by it.
    if (!isEqual(this->PartMatrix, own)) {
        this->PartMatrix->DeepCopy(own);
    }
    forEachPart(this->Assembly, [&](vtkProp3D* part) {
        if (!isEqual(part->GetUserMatrix(), own)) {
            part->SetUserMatrix(this->PartMatrix);
        }
    });
}

vtkStandardNewMacro(QUOR2DLayerActor)
