// SPDX-License-Identifier: MIT
#include "QUORFlatLabels.h"

#include "QUOR2DLayerActor.h"

#include <vtkActor.h>
#include <vtkNew.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkVectorText.h>

QUORFlatLabels::QUORFlatLabels(QUOR2DLayerActor& layer, const QUORStyleGroup::Color& color, double scale)
    : _layer(layer), _scale(scale), _property(vtkSmartPointer<vtkProperty>::New()) {
    _property->SetColor(color[0], color[1], color[2]);
    _property->SetOpacity(1.0);
    _property->LightingOff();
}

QUORFlatLabels::~QUORFlatLabels() = default;

void QUORFlatLabels::setText(const QString& text) {
    vtkNew<vtkVectorText> geometry;
    geometry->SetText(text.toLatin1().constData());
    geometry->Update();
    _mapper = vtkSmartPointer<vtkPolyDataMapper>::New();
    _mapper->SetInputData(geometry->GetOutput());
}

QUORFlatLabels::Size QUORFlatLabels::measure() const {
    vtkNew<vtkActor> unscaled;
    unscaled->SetMapper(_mapper);
    const double* bounds = unscaled->GetBounds();
    return {bounds[1] - bounds[0], bounds[3] - bounds[2]};
}

void QUORFlatLabels::addAt(double x, double y) {
    vtkNew<vtkActor> label;
    label->SetMapper(_mapper);
    label->SetProperty(_property);
    label->SetScale(_scale, _scale, 1.0);
    label->SetPosition(x, y, 0.0);
    _layer.AddPart(label);
}
