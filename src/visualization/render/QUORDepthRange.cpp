// SPDX-License-Identifier: MIT
#include "QUORDepthRange.h"

#include <vtkCamera.h>

#include <algorithm>
#include <cmath>
#include <numbers>

std::array<double, 2> QUORDepthRange::fit(vtkCamera* camera, double lowestHeight, double greatestHeight) {
    const double* stated = camera->GetClippingRange();
    const double height = camera->GetPosition()[2];
    const double halfAngle = camera->GetViewAngle() * 0.5 * std::numbers::pi / 180.0;
    const double spread = std::tan(halfAngle) * camera->GetViewUp()[2];
    // The fall of the picture's steepest and flattest ray, per unit of depth.
    const double down = -camera->GetDirectionOfProjection()[2];
    const double steepest = down + spread;
    const double flattest = down - spread;
    // Between the heights something may be close by; a hundredth of the height is close enough.
    double nearest = std::max(stated[0], 0.01 * height);
    if (steepest > 0.0) {
        nearest = std::max(nearest, 0.95 * (height - greatestHeight) / steepest);
    }
    double farthest = stated[1];
    if (flattest > 0.0) {
        farthest = std::min(farthest, 1.05 * (height - lowestHeight) / flattest);
    }
    return {nearest, std::max(farthest, 1.1 * nearest)};
}
