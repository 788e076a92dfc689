// SPDX-License-Identifier: MIT
#include "QUORCoarseTerrain.h"

#include "QUORTerrainBlock.h"

#include <vtkActor.h>
#include <vtkAssembly.h>
#include <vtkAssemblyNode.h>
#include <vtkAssemblyPath.h>
#include <vtkCellArray.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>
#include <vtkProp3DCollection.h>
#include <vtkProperty.h>
#include <vtkRenderer.h>
#include <vtkTexture.h>

namespace {

constexpr int STRIDE = 4;
constexpr int SIDE = (QUORTerrainBlock::SIDE - 1) / STRIDE + 1;

/// Every fourth post of every fourth row, and the attributes of these.
vtkSmartPointer<vtkPolyData> thin(vtkPolyData* fine) {
    vtkNew<vtkPoints> points;
    auto coarse = vtkSmartPointer<vtkPolyData>::New();
    vtkPointData* attributes = coarse->GetPointData();
    attributes->CopyAllocate(fine->GetPointData(), SIDE * SIDE);
    for (int y = 0; y < SIDE; ++y) {
        for (int x = 0; x < SIDE; ++x) {
            const vtkIdType from = vtkIdType(y) * STRIDE * QUORTerrainBlock::SIDE + x * STRIDE;
            attributes->CopyData(fine->GetPointData(), from, points->InsertNextPoint(fine->GetPoint(from)));
        }
    }
    vtkNew<vtkCellArray> triangles;
    for (vtkIdType y = 0; y + 1 < SIDE; ++y) {
        for (vtkIdType x = 0; x + 1 < SIDE; ++x) {
            const vtkIdType corner = y * SIDE + x;
            triangles->InsertNextCell({corner, corner + 1, corner + SIDE + 1});
            triangles->InsertNextCell({corner, corner + SIDE + 1, corner + SIDE});
        }
    }
    coarse->SetPoints(points);
    coarse->SetPolys(triangles);
    return coarse;
}

vtkSmartPointer<vtkActor> makeCoarse(vtkActor& fine) {
    auto* mesh = fine.GetMapper() != nullptr
                     ? vtkPolyData::SafeDownCast(fine.GetMapper()->GetInputDataObject(0, 0))
                     : nullptr;
    if (mesh == nullptr || mesh->GetNumberOfPoints() != QUORTerrainBlock::POINTS) {
        return nullptr;
    }
    vtkNew<vtkPolyDataMapper> mapper;
    mapper->SetInputData(thin(mesh));
    mapper->ScalarVisibilityOff();
    mapper->StaticOn();
    auto actor = vtkSmartPointer<vtkActor>::New();
    actor->SetMapper(mapper);
    actor->SetTexture(fine.GetTexture());
    actor->SetProperty(fine.GetProperty());
    return actor;
}

} // namespace

QUORCoarseTerrain::QUORCoarseTerrain(vtkRenderer* renderer) : _renderer(renderer) {}

QUORCoarseTerrain::~QUORCoarseTerrain() {
    drop();
}

void QUORCoarseTerrain::build(vtkProp* fine) {
    drop();
    _fine = fine;
    _coarse = vtkSmartPointer<vtkAssembly>::New();
    fine->InitPathTraversal();
    while (vtkAssemblyPath* path = fine->GetNextPath()) {
        auto* actor = vtkActor::SafeDownCast(path->GetLastNode()->GetViewProp());
        if (const vtkSmartPointer<vtkActor> coarse = actor != nullptr ? makeCoarse(*actor) : nullptr) {
            _coarse->AddPart(coarse);
        }
    }
    _renderer->AddViewProp(_coarse);
}

bool QUORCoarseTerrain::show(vtkProp* fine) {
    auto* placed = vtkProp3D::SafeDownCast(fine);
    if (placed == nullptr) {
        return false;
    }
    if (_fine != fine) {
        build(fine);
    }
    _coarse->SetScale(placed->GetScale());
    _coarse->SetPosition(placed->GetPosition());
    _coarse->SetVisibility(_coarse->GetParts()->GetNumberOfItems() > 0);
    return _coarse->GetVisibility() != 0;
}

void QUORCoarseTerrain::hide() {
    if (_coarse != nullptr) {
        _coarse->VisibilityOff();
    }
}

void QUORCoarseTerrain::drop() {
    if (_coarse != nullptr) {
        _renderer->RemoveViewProp(_coarse);
    }
    _coarse = nullptr;
    _fine = nullptr;
}
