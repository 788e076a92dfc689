// SPDX-License-Identifier: MIT
#include "QUORFlatLabels.h"

#include "QUOR2DLayerActor.h"
#include "QUORFlatLabelActor.h"

#include <vtkActor.h>
#include <vtkNew.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkVectorText.h>

namespace {

vtkSmartPointer<vtkProperty> makeProperty(const QUORStyleGroup::Color& color) {
    auto property = vtkSmartPointer<vtkProperty>::New();
    property->SetColor(color[0], color[1], color[2]);
    property->SetOpacity(1.0);
    property->LightingOff();
    return property;
}

} // namespace

QUORFlatLabels::QUORFlatLabels(QUOR2DLayerActor& layer, const QUORStyleGroup& style, double scale)
    : _layer(layer), _scale(scale), _property(makeProperty(style.color("label/color"))) {
    _haloWidth = 2.0 * style.number("label/halo/width");
    if (_haloWidth <= 0.0) {
        return;
    }
    _haloProperty = makeProperty(style.color("label/halo/color"));
    _haloProperty->SetRepresentationToWireframe();
    _haloProperty->SetLineWidth(static_cast<float>(_haloWidth));
}

QUORFlatLabels::~QUORFlatLabels() = default;

void QUORFlatLabels::setText(const QString& text) {
    _text = text;
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
    if (_haloProperty) {
        // One each, for the width goes with the place.
        vtkNew<vtkProperty> property;
        property->DeepCopy(_haloProperty);
        addActor(property, x, y, _haloWidth);
    }
    addActor(_property, x, y, 0.0);
}

void QUORFlatLabels::addActor(vtkProperty* property, double x, double y, double haloWidth) {
    vtkNew<QUORFlatLabelActor> label;
    label->SetText(_text);
    label->SetHaloWidth(haloWidth);
    label->SetMapper(_mapper);
    label->SetProperty(property);
    label->SetScale(_scale, _scale, 1.0);
    label->SetPosition(x, y, 0.0);
    _layer.AddPart(label);
}
