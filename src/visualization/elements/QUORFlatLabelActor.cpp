// SPDX-License-Identifier: MIT
#include "QUORFlatLabelActor.h"

#include <vtkMapper.h>
#include <vtkMatrix4x4.h>
#include <vtkObjectFactory.h>
#include <vtkProperty.h>
#include <vtkRenderer.h>

#include <algorithm>
#include <cmath>

namespace {

/// Of the letters' height on the screen: the widest halo that leaves their strokes apart.
constexpr double MOST_HALO = 0.28;
/// Pixels below which a halo is not drawn, and by which a width may be off before it is set anew.
constexpr double LEAST_HALO = 1.0;
constexpr double TOLERANCE = 0.1;

} // namespace

vtkStandardNewMacro(QUORFlatLabelActor)

QUORFlatLabelActor::QUORFlatLabelActor() = default;

QUORFlatLabelActor::~QUORFlatLabelActor() = default;

bool QUORFlatLabelActor::FindCorners(vtkRenderer* renderer, Corners& corners) {
    if (renderer == nullptr || this->GetMapper() == nullptr) {
        return false;
    }
    const double* bounds = this->GetMapper()->GetBounds();
    this->ComputeMatrix();
    for (std::size_t i = 0; i < corners.size(); ++i) {
        std::array<double, 4> point{bounds[i == 0 || i == 3 ? 0 : 1], bounds[i < 2 ? 2 : 3], 0.0, 1.0};
        this->GetMatrix()->MultiplyPoint(point.data(), point.data());
        renderer->SetWorldPoint(point.data());
        renderer->WorldToDisplay();
        const double* place = renderer->GetDisplayPoint();
        // Behind the camera the depth leaves its range.
        if (!(place[2] >= 0.0 && place[2] <= 1.0)) {
            return false;
        }
        corners[i] = {place[0], place[1]};
    }
    return true;
}

bool QUORFlatLabelActor::FindBox(vtkRenderer* renderer, std::array<double, 4>& box) {
    Corners corners;
    if (!FindCorners(renderer, corners)) {
        return false;
    }
    const auto [left, right] = std::ranges::minmax(corners, {}, [](const auto& p) { return p[0]; });
    const auto [bottom, top] = std::ranges::minmax(corners, {}, [](const auto& p) { return p[1]; });
    box = {left[0], right[0], bottom[1], top[1]};
    return true;
}

int QUORFlatLabelActor::RenderOpaqueGeometry(vtkViewport* viewport) {
    Corners corners;
    if (HaloWidth > 0.0 && FindCorners(vtkRenderer::SafeDownCast(viewport), corners)) {
        // The distance of the text's upper edge from its lower one.
        const double dx = corners[1][0] - corners[0][0];
        const double dy = corners[1][1] - corners[0][1];
        const double across =
            std::abs(dx * (corners[3][1] - corners[0][1]) - dy * (corners[3][0] - corners[0][0]));
        const double height = across / std::max(std::hypot(dx, dy), 1e-6);
        const double width = std::min(HaloWidth, MOST_HALO * height);
        if (width < LEAST_HALO) {
            return 0;
        }
        // A new width has the mapper rebuild what it draws.
        if (std::abs(this->GetProperty()->GetLineWidth() - width) > TOLERANCE) {
            this->GetProperty()->SetLineWidth(float(width));
        }
    }
    return this->Superclass::RenderOpaqueGeometry(viewport);
}
