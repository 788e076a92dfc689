// SPDX-License-Identifier: MIT
#pragma once

#include <vtkSmartPointer.h>

class QUORCoordinate;
class QUORGeoProjection;
struct QUORTerrainGrid;
class vtkPolyData;

/// The surface of a terrain block: points row by row from the south-west, one triangle strip a row of
/// squares, a normal and a texture coordinate a point.
namespace QUORTerrainMesh {

/// A tile of one degree from `origin` over the grid, whose first row is the south edge. Null when the
/// projection cannot place the tile, or tears it apart: at a pole, say, or behind the map's edge.
vtkSmartPointer<vtkPolyData> make(const QUORTerrainGrid& grid, const QUORCoordinate& origin,
                                  const QUORGeoProjection& projection);

/// Whether a mesh that came from a file has the form that `make` gives and only finite numbers.
bool isWhole(vtkPolyData& mesh);

/// Gives two neighbours the same normals along their common edge, so that the light shows no seam.
void joinEastWest(vtkPolyData& west, vtkPolyData& east);
void joinSouthNorth(vtkPolyData& south, vtkPolyData& north);

} // namespace QUORTerrainMesh
