// SPDX-License-Identifier: MIT
#pragma once

#include "QUORViewGeometry.h"

#include <vtkCamera.h>
#include <vtkMatrix4x4.h>
#include <vtkNew.h>

#include <array>

/// Where a view has the points of a scene in its picture, by the toolkit's own camera.
class ViewProjection {
public:
    /// `aspect`: the picture's width over its height.
    ViewProjection(const QUORViewGeometry::View& view, double aspect) {
        _camera->SetPosition(view.position.x, view.position.y, view.position.z);
        _camera->SetFocalPoint(view.position.x + view.direction.x, view.position.y + view.direction.y,
                               view.position.z + view.direction.z);
        _camera->SetViewUp(0.0, 0.0, 1.0);
        _camera->SetClippingRange(100.0, 8.0e6);
        _matrix = _camera->GetCompositeProjectionTransformMatrix(aspect, -1.0, 1.0);
    }

    /// From -1, the left or lower edge, to 1.
    std::array<double, 2> project(double x, double y, double z) const {
        double point[4] = {x, y, z, 1.0};
        _matrix->MultiplyPoint(point, point);
        return {point[0] / point[3], point[1] / point[3]};
    }

private:
    vtkNew<vtkCamera> _camera;
    vtkMatrix4x4* _matrix;
};
