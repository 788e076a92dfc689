// SPDX-License-Identifier: MIT
#include "QUORLineActor.h"

#include <vtkActor.h>
#include <vtkAlgorithm.h>
#include <vtkCellArray.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>

namespace {

vtkSmartPointer<vtkActor> makeActor(vtkPolyDataMapper* mapper, const QUORStyleGroup::Color& color,
                                    double width) {
    auto actor = vtkSmartPointer<vtkActor>::New();
    actor->SetMapper(mapper);
    vtkProperty* property = actor->GetProperty();
    property->SetColor(color[0], color[1], color[2]);
    property->SetLineWidth(static_cast<float>(width));
    property->SetOpacity(1.0);
    property->SetRepresentationToWireframe();
    property->LightingOff();
    return actor;
}

} // namespace

vtkSmartPointer<vtkActor> quorMakeLineActor(vtkPoints* points, vtkCellArray* lines,
                                            const QUORStyleGroup::Color& color, double width) {
    vtkNew<vtkPolyData> data;
    data->SetPoints(points);
    data->SetLines(lines);
    vtkNew<vtkPolyDataMapper> mapper;
    mapper->SetInputData(data);
    return makeActor(mapper, color, width);
}

vtkSmartPointer<vtkActor> quorMakeLineActor(vtkAlgorithm* source, const QUORStyleGroup::Color& color,
                                            double width) {
    vtkNew<vtkPolyDataMapper> mapper;
    mapper->SetInputConnection(source->GetOutputPort());
    return makeActor(mapper, color, width);
}
