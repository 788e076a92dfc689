// SPDX-License-Identifier: MIT
#pragma once

#include <vtkSmartPointer.h>

class vtkImageData;
class vtkPolyData;

/// What is drawn of one terrain tile.
struct QUORTerrainBlock {
    /// Posts per side of the mesh.
    static constexpr int SIDE = 61;
    static constexpr int POINTS = SIDE * SIDE;
    /// Pixels per side of the texture.
    static constexpr int TEXTURE_SIDE = 256;

    /// POINTS points in scene metres, row by row from the south-west, with normals and texture coordinates.
    vtkSmartPointer<vtkPolyData> mesh;
    /// RGB, the first row at the tile's south edge.
    vtkSmartPointer<vtkImageData> texture;
};
