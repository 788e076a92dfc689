// SPDX-License-Identifier: MIT
#include "QUORFlatLabelActor.h"

#include <vtkCamera.h>
#include <vtkMapper.h>
#include <vtkMath.h>
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
/// Pixels of letters that can just be read: their height, and the width that each has.
constexpr double LEAST_HEIGHT = 7.0;
constexpr double LEAST_WIDTH = 3.0;

/// The cosine between line of sight and letters' normal from which on a text need not lean, and degrees by
/// which it may be off.
constexpr double LEAST_FACING = 0.5;
constexpr double LEAN_TOLERANCE = 0.5;

/// The text's length on the screen, and the distance of its upper edge from its lower one.
struct Extent {
    double length;
    double height;
};

Extent measure(const QUORFlatLabelActor::Corners& corners) {
    const double dx = corners[1][0] - corners[0][0];
    const double dy = corners[1][1] - corners[0][1];
    const double area = std::abs(dx * (corners[3][1] - corners[0][1]) - dy * (corners[3][0] - corners[0][0]));
    const double length = std::hypot(dx, dy);
    return {length, area / std::max(length, 1e-6)};
}

} // namespace

vtkStandardNewMacro(QUORFlatLabelActor)

QUORFlatLabelActor::QUORFlatLabelActor() = default;

QUORFlatLabelActor::~QUORFlatLabelActor() = default;

void QUORFlatLabelActor::LeanTowards(vtkCamera* camera) {
    OnTop = true;
    this->ComputeMatrix();
    std::array<double, 3> sight{};
    for (int i = 0; i < 3; ++i) {
        sight.at(std::size_t(i)) = camera->GetPosition()[i] - this->GetMatrix()->GetElement(i, 3);
    }
    vtkMath::Normalize(sight.data());
    // Of the normal's directions round the base line, the one nearest to the line of sight.
    const double best = std::atan2(-sight[1], sight[2]);
    const double reach = std::hypot(sight[1], sight[2]);
    const double enough = std::acos(std::min(1.0, LEAST_FACING / std::max(reach, LEAST_FACING)));
    const double angle =
        vtkMath::DegreesFromRadians(std::copysign(std::max(0.0, std::abs(best) - enough), best));
    if (std::abs(this->GetOrientation()[0] - angle) > LEAN_TOLERANCE) {
        this->SetOrientation(angle, 0.0, 0.0);
    }
}

void QUORFlatLabelActor::LieFlat() {
    OnTop = false;
    this->SetOrientation(0.0, 0.0, 0.0);
}

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

bool QUORFlatLabelActor::IsLegible(const Corners& corners) const {
    const auto [length, height] = measure(corners);
    return height >= LEAST_HEIGHT && length >= LEAST_WIDTH * double(Text.size());
}

int QUORFlatLabelActor::RenderOpaqueGeometry(vtkViewport* viewport) {
    return OnTop ? 0 : Draw(viewport);
}

int QUORFlatLabelActor::RenderOverlay(vtkViewport* viewport) {
    return OnTop ? Draw(viewport) : 0;
}

int QUORFlatLabelActor::Draw(vtkViewport* viewport) {
    Corners corners;
    if (IsHalo() && FindCorners(vtkRenderer::SafeDownCast(viewport), corners)) {
        const double width = std::min(HaloWidth, MOST_HALO * measure(corners).height);
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
