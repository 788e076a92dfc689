// SPDX-License-Identifier: MIT
#include "QUORPointWidget.h"

#include "QUORAssert.h"
#include "QUORLog.h"
#include "QUORPointWidgetCallback.h"
#include "QUORPointWidgetObserver.h"

#include <QCoreApplication>

#include <vtkActor.h>
#include <vtkCaptionActor2D.h>
#include <vtkObjectFactory.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>
#include <vtkPropAssembly.h>
#include <vtkProperty.h>
#include <vtkSphereSource.h>
#include <vtkTextActor.h>
#include <vtkTextProperty.h>

#include <algorithm>
#include <cmath>

namespace {

void dressLine(vtkProperty* property, const QUORStyleGroup::Color& color, double width) {
    property->SetLineWidth(static_cast<float>(width));
    property->SetColor(color[0], color[1], color[2]);
}

bool isZero(double value) {
    return static_cast<float>(value) == 0.0F;
}

} // namespace

QUORPointWidget::QUORPointWidget() : _style("CURSORTOOL") {
    const QUORLogScope scope("QUORPointWidget::QUORPointWidget");
}

QUORPointWidget::~QUORPointWidget() {
    const QUORLogScope scope("QUORPointWidget::~QUORPointWidget");
    destroy();
}

void QUORPointWidget::init(QUORPointWidgetObserver* observer) {
    QUOR_ASSERT(!_parts);
    loadStyle(false);
    _observer = observer;
    _callback = QUORPointWidgetCallback::New();
    _pointData = vtkSmartPointer<vtkPolyData>::New();
    makeMarkers();
    makeCaption();
    _parts = vtkSmartPointer<vtkPropAssembly>::New();
    _parts->AddPart(this->Actor);
    _parts->AddPart(_pointMarker);
    _parts->AddPart(_homeMarker);
    _parts->AddPart(_homeCaption);
    this->AddObserver(vtkCommand::InteractionEvent, _callback);
    dressCursor();
}

void QUORPointWidget::makeMarkers() {
    _sphere = vtkSmartPointer<vtkSphereSource>::New();
    _sphere->SetRadius(_style.number("marker/radius"));
    _mapper = vtkSmartPointer<vtkPolyDataMapper>::New();
    _mapper->SetInputConnection(_sphere->GetOutputPort());
    for (auto* marker : {&_pointMarker, &_homeMarker}) {
        *marker = vtkSmartPointer<vtkActor>::New();
        (*marker)->SetMapper(_mapper);
        (*marker)->VisibilityOn();
    }
}

void QUORPointWidget::makeCaption() {
    _homeCaption = vtkSmartPointer<vtkCaptionActor2D>::New();
    _homeCaption->SetAttachmentPoint(0.0, 0.0, 0.0);
    _homeCaption->BorderOff();
    _homeCaption->LeaderOff();
    _homeCaption->ThreeDimensionalLeaderOff();
    _homeCaption->GetTextActor()->SetTextScaleModeToNone();
    vtkTextProperty* text = _homeCaption->GetCaptionTextProperty();
    text->SetFontFamilyToArial();
    text->BoldOff();
    text->ItalicOff();
    text->ShadowOff();
    const QUORStyleGroup::Color& color = _style.color("home/label/color");
    text->SetColor(color[0], color[1], color[2]);
    text->SetFontSize(static_cast<int>(std::lround(_style.number("home/label/fontsize"))));
}

void QUORPointWidget::dressCursor() {
    this->Cursor3D->AllOff();
    this->Cursor3D->AxesOn();
    this->Cursor3D->WrapOff();
    this->Cursor3D->TranslationModeOff();
    dressLine(this->Property, _style.color("line/unselected/color"), _style.number("line/unselected/width"));
    dressLine(this->SelectedProperty, _style.color("line/selected/color"),
              _style.number("line/selected/width"));
}

void QUORPointWidget::destroy() {
    if (!_parts) {
        return;
    }
    this->RemoveAllObservers();
    _callback->Delete();
    _callback = nullptr;
    _parts = nullptr;
}

void QUORPointWidget::loadStyle(bool night) {
    const QUORLogScope scope("QUORPointWidget::loadStyle");
    _style.load(night);
}

void QUORPointWidget::update() {
    if (!_parts) {
        return;
    }
    this->Cursor3D->Update();
    this->GetPolyData(_pointData);
    vtkPoints* points = _pointData->GetPoints();
    QUOR_ASSERT(points);
    if (points->GetNumberOfPoints() == 0) {
        return;
    }
    const double* point = points->GetPoint(0);
    QUOR_ASSERT(point);
    _point = {point[0], point[1], point[2]};
    if (_observer) {
        _observer->pointMoved(this, _point);
    }
    _pointMarker->VisibilityOn();
    _homeMarker->VisibilityOn();
    showPointColor();
    placePointMarker(_point);
    placeHome();
    const QString caption = QCoreApplication::translate("VTK", "Home: ") + _homeLabel;
    _homeCaption->SetCaption(caption.toUtf8().constData());
}

void QUORPointWidget::setBounds(const double* bounds) {
    const std::array<double, 6> old = _bounds;
    std::copy_n(bounds, _bounds.size(), _bounds.begin());
    this->Cursor3D->SetModelBounds(_bounds.data());
    if (std::ranges::all_of(_bounds, isZero)) {
        _point = {};
    } else {
        const double* focus = this->Cursor3D->GetFocalPoint();
        const double oldHeight = std::abs(old[5] - old[4]);
        const double share = oldHeight > 0.0 ? std::abs(focus[2] - old[4]) / oldHeight : 0.0;
        _point = {focus[0], focus[1], share * (_bounds[5] - _bounds[4]) + _bounds[4]};
    }
    this->Cursor3D->SetFocalPoint(_point.x, _point.y, _point.z);
    placePointMarker(_point);
    placeHome();
}

void QUORPointWidget::resetActors() {
    if (!_parts) {
        return;
    }
    showPointColor();
    _pointMarker->GetProperty()->SetAmbient(1.0);
    _pointMarker->GetProperty()->SetOpacity(0.4);
    const QUORStyleGroup::Color& home = _style.color("home/marker/color");
    _homeMarker->GetProperty()->SetColor(home[0], home[1], home[2]);
    _homeMarker->GetProperty()->SetAmbient(1.0);
    _homeMarker->GetProperty()->SetOpacity(1.0);
    placePointMarker(
        {0.5 * (_bounds[0] + _bounds[1]), 0.5 * (_bounds[2] + _bounds[3]), 0.5 * (_bounds[4] + _bounds[5])});
}

void QUORPointWidget::SetEnabled(int enabling) {
    this->Superclass::SetEnabled(enabling);
    if (_parts) {
        _pointMarker->SetVisibility(enabling);
    }
}

vtkPropAssembly* QUORPointWidget::getParts() const {
    return _parts;
}

void QUORPointWidget::showPointColor() {
    const auto part = [this](std::size_t i) { return static_cast<float>(_pointColor[i]) / 255.0F; };
    _pointMarker->GetProperty()->SetColor(part(0), part(1), part(2));
}

void QUORPointWidget::placePointMarker(const QUORPoint3D& position) {
    if (_parts) {
        _pointMarker->SetPosition(position.x, position.y, position.z);
    }
}

void QUORPointWidget::placeHome() {
    if (!_parts) {
        return;
    }
    const double z = _homePosition.z * _verticalScale;
    _homeMarker->SetPosition(_homePosition.x, _homePosition.y, z);
    _homeCaption->SetAttachmentPoint(_homePosition.x, _homePosition.y, z);
}

vtkStandardNewMacro(QUORPointWidget)
