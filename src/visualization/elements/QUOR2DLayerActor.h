// SPDX-License-Identifier: MIT
#pragma once

#include <vtkProp3D.h>
#include <vtkSmartPointer.h>

class vtkAssembly;
class vtkMatrix4x4;
class vtkViewport;
class vtkWindow;

/// A prop for what lies flat in the scene: it draws its parts without depth testing, in the order in which
/// they were added, so that terrain or surfaces at the same height never hide them. Scale and position of
/// the layer actor apply to all parts, through their user matrix.
///
/// Built on the pipeline's thread, drawn and released on the main thread.
class QUOR2DLayerActor : public vtkProp3D {
public:
    static QUOR2DLayerActor* New();
    vtkTypeMacro(QUOR2DLayerActor, vtkProp3D)

    void AddPart(vtkProp3D* part);
    vtkAssembly* GetAssembly() const;

    double* GetBounds() override;
    void BuildPaths(vtkAssemblyPaths* paths, vtkAssemblyPath* path) override;
    /// Shares the parts of the other layer actor.
    void ShallowCopy(vtkProp* prop) override;

    int RenderOpaqueGeometry(vtkViewport* viewport) override;
    int RenderTranslucentPolygonalGeometry(vtkViewport* viewport) override;
    int RenderVolumetricGeometry(vtkViewport* viewport) override;
    int RenderOverlay(vtkViewport* viewport) override;
    vtkTypeBool HasTranslucentPolygonalGeometry() override;
    void ReleaseGraphicsResources(vtkWindow* window) override;

    QUOR2DLayerActor(const QUOR2DLayerActor&) = delete;
    QUOR2DLayerActor& operator=(const QUOR2DLayerActor&) = delete;

protected:
    QUOR2DLayerActor();
    ~QUOR2DLayerActor() override;

private:
    using RenderPass = int (vtkProp::*)(vtkViewport*);

    int RenderParts(vtkViewport* viewport, RenderPass pass);
    /// The matrix is also handed over in every render call: paths are built under an assembly only.
    void HandMatrixToParts();

    vtkSmartPointer<vtkAssembly> Assembly;
    vtkSmartPointer<vtkMatrix4x4> PartMatrix;
};
