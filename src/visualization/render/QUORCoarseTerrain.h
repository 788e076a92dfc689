// SPDX-License-Identifier: MIT
#pragma once

#include <vtkSmartPointer.h>

class vtkAssembly;
class vtkProp;
class vtkRenderer;

/// Terrain of a sixteenth of its triangles, drawn in place of the fine one while a view moves: a software
/// rasteriser spends its time on triangles, however small the picture is. Textures and properties are those
/// of the fine terrain.
///
/// Belongs to the thread that renders, and dies before its renderer's window.
class QUORCoarseTerrain {
public:
    /// Adds what it draws to the renderer.
    explicit QUORCoarseTerrain(vtkRenderer* renderer);
    ~QUORCoarseTerrain();
    QUORCoarseTerrain(const QUORCoarseTerrain&) = delete;
    QUORCoarseTerrain& operator=(const QUORCoarseTerrain&) = delete;

    /// Shows that terrain as it is placed now; false when there is nothing coarse of it to show.
    bool show(vtkProp* fine);
    void hide();
    /// Forgets the terrain and gives its buffers back.
    void drop();

private:
    void build(vtkProp* fine);

    vtkRenderer* _renderer;
    vtkSmartPointer<vtkProp> _fine;
    vtkSmartPointer<vtkAssembly> _coarse;
};
