// SPDX-License-Identifier: MIT
#pragma once

#include <array>

class vtkCamera;

/// Near and far plane for drawing a scene that lies between two heights. A camera's stated range, from a
/// hundred units to far beyond the scene, leaves a kilometre of depth precision at the usual distances.
namespace QUORDepthRange {

/// The depths between which the camera can see anything of the scene, within its present clipping range.
/// It follows from the camera and the two heights alone, so that equal views have equal ranges.
std::array<double, 2> fit(vtkCamera* camera, double lowestHeight, double greatestHeight);

} // namespace QUORDepthRange
