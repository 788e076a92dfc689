// SPDX-License-Identifier: MIT
#pragma once

#include <vtkSmartPointer.h>

#include <array>

struct QUORTerrainGrid;
class vtkImageData;

/// The colours of the ground: a height ramp, darkened on slopes. The sea (height 0) has a colour of its own.
namespace QUORTerrainColors {

using Rgb = std::array<unsigned char, 3>;

/// Height in metres; shade from 0 (cliff) to 1 (level ground).
Rgb heightToColor(double height, double shade);

/// A tile's texture of TEXTURE_SIDE pixels a side from its reduced posts.
vtkSmartPointer<vtkImageData> makeTexture(const QUORTerrainGrid& grid);

/// The same for a tile at sea level throughout. The pixels are made once and shared by all these textures.
vtkSmartPointer<vtkImageData> makeSeaTexture();

} // namespace QUORTerrainColors
