// SPDX-License-Identifier: MIT
#include "QUORCompassRepresentation.h"

#include "QUORCameraInteractor.h"
#include "QUORLog.h"
#include "QUORUnits.h"

#include <QCoreApplication>

#include <vtkActor2D.h>
#include <vtkCenteredSliderRepresentation.h>
#include <vtkCoordinate.h>
#include <vtkObjectFactory.h>
#include <vtkProperty2D.h>
#include <vtkRenderer.h>
#include <vtkTextActor.h>
#include <vtkTextProperty.h>

#include <array>

namespace {

constexpr double UNKNOWN_DISTANCE = 9999.9;
/// Of the arrows and the "N", in radii.
constexpr double REACH = 1.1;

/// Holds a highlight state for the length of a call to the base class.
class ForcedHighlight {
public:
    ForcedHighlight(int& state, int forced) : _state(state), _previous(state) { _state = forced; }
    ~ForcedHighlight() { _state = _previous; }
    ForcedHighlight(const ForcedHighlight&) = delete;
    ForcedHighlight& operator=(const ForcedHighlight&) = delete;

private:
    int& _state;
    int _previous;
};

QString statusText(bool known, double heading) {
    if (!known) {
        return QCoreApplication::translate("VTK", "N");
    }
    const double degrees = heading * QUORUnits::FULL_TURN * QUORUnits::DEGREES_PER_RADIAN;
    return QCoreApplication::translate("VTK", "Heading") + QLatin1Char(' ') +
           QString::number(degrees, 'f', 0);
}

void paint(vtkProperty2D* property, const QUORPoint3D& color, double opacity) {
    property->SetColor(color.x, color.y, color.z);
    property->SetOpacity(opacity);
}

void paint(vtkTextProperty* property, const QUORPoint3D& color, double opacity) {
    property->SetColor(color.x, color.y, color.z);
    property->SetOpacity(opacity);
}

void paint(vtkCenteredSliderRepresentation* slider, const QUORPoint3D& color, double opacity) {
    paint(slider->GetTubeProperty(), color, opacity);
    paint(slider->GetSliderProperty(), color, opacity);
    paint(slider->GetSelectedProperty(), color, opacity);
    paint(slider->GetLabelProperty(), color, opacity);
}

} // namespace

QUORCompassRepresentation::QUORCompassRepresentation() : _style("COMPASS") {
    QUORLog::Instance().logDebug(QStringLiteral("QUORCompassRepresentation::QUORCompassRepresentation()"));
    this->DistanceRepresentation->SetTitleText("zoom");
    this->LabelProperty->SetFontFamilyToArial();
    this->LabelProperty->BoldOn();
    this->LabelProperty->ItalicOff();
    this->LabelProperty->ShadowOff();
    loadStyle(true);
    updateForegroundColor(_foregroundColor, _nonHighlightedOpacity);
}

void QUORCompassRepresentation::cameraMoved(QUORCameraInteractor* camera) {
    if (!camera) {
        return;
    }
    this->SetHeading(camera->getHeading() / QUORUnits::FULL_TURN);
    this->SetTilt(camera->getPitch() >= 0.0 ? camera->getPitch() * QUORUnits::DEGREES_PER_RADIAN : 0.0);
    this->SetDistance(camera->getTargetDistance() > 0.0 ? camera->getTargetDistance() : UNKNOWN_DISTANCE);
}

void QUORCompassRepresentation::cameraReset(QUORCameraInteractor* camera) {
    cameraMoved(camera);
}

void QUORCompassRepresentation::loadStyle(bool night) {
    const QUORLogScope scope("QUORCompassRepresentation::loadStyle");
    _style.load(night);
    const QUORStyleGroup::Color& color = _style.color("compass/color");
    _foregroundColor = {color[0], color[1], color[2]};
    _highlightedOpacity = _style.number("compass/opacity/highlighted");
    _nonHighlightedOpacity = _style.number("compass/opacity/nonhighlighted");
}

void QUORCompassRepresentation::toggleDisplayMode(bool night) {
    _day = !night;
    loadStyle(night);
}

void QUORCompassRepresentation::updateColors() {
    updateForegroundColor(_foregroundColor,
                          this->HighlightState ? _highlightedOpacity : _nonHighlightedOpacity);
}

void QUORCompassRepresentation::updateForegroundColor(const QUORPoint3D& color, double opacity) {
    paint(this->RingProperty, color, opacity);
    paint(this->SelectedProperty, color, opacity);
    paint(this->LabelProperty, color, opacity);
    paint(this->StatusProperty, color, opacity);
    paint(this->TiltRepresentation.Get(), color, opacity);
    paint(this->DistanceRepresentation.Get(), color, opacity);
}

QUORPictureArea QUORCompassRepresentation::getArea() {
    std::array<int, 2> middle{};
    double radius = 0.0;
    this->GetCenterAndUnitRadius(middle.data(), radius);
    const int* size = this->Renderer->GetSize();
    const double reach = radius * REACH;
    return {(middle[0] - reach) / size[0], (middle[1] - reach) / size[1], (middle[0] + reach) / size[0],
            (middle[1] + reach) / size[1]};
}

void QUORCompassRepresentation::BuildRepresentation() {
    const bool known = hasStatusText(); // the base class clears it
    {
        const ForcedHighlight highlight(this->HighlightState, 1);
        this->Modified(); // the base class does not count a new heading as a reason to build
        this->Superclass::BuildRepresentation();
    }
    this->StatusActor->SetInput(statusText(known, this->Heading).toUtf8().constData());
    updateColors();
}

bool QUORCompassRepresentation::hasStatusText() const {
    const char* text = this->StatusActor->GetInput();
    return text && *text;
}

int QUORCompassRepresentation::RenderOpaqueGeometry(vtkViewport* viewport) {
    return renderParts(viewport, &vtkProp::RenderOpaqueGeometry);
}

int QUORCompassRepresentation::RenderOverlay(vtkViewport* viewport) {
    return renderParts(viewport, &vtkProp::RenderOverlay);
}

int QUORCompassRepresentation::renderParts(vtkViewport* viewport, int (vtkProp::*pass)(vtkViewport*)) {
    BuildRepresentation();
    int rendered = (this->RingActor->*pass)(viewport) + (this->LabelActor->*pass)(viewport);
    if (!this->HighlightState) {
        return rendered;
    }
    rendered += (this->DistanceRepresentation.Get()->*pass)(viewport);
    if (hasStatusText()) {
        rendered += (this->StatusActor->*pass)(viewport);
    }
    return rendered;
}

int QUORCompassRepresentation::ComputeInteractionState(int x, int y, int modify) {
    const ForcedHighlight highlight(this->HighlightState, 1);
    const int state = this->Superclass::ComputeInteractionState(x, y, modify);
    if (state == TiltDown || state == TiltUp || state == TiltAdjusting) {
        this->InteractionState = Inside; // the tilt slider is never drawn, so it must not react either
    }
    return this->InteractionState;
}

void QUORCompassRepresentation::StartWidgetInteraction(double position[2]) {
    this->Superclass::StartWidgetInteraction(position);
}

void QUORCompassRepresentation::WidgetInteraction(double position[2]) {
    const ForcedHighlight highlight(this->HighlightState, 0);
    this->Superclass::WidgetInteraction(position);
}

void QUORCompassRepresentation::TiltWidgetInteraction(double /*position*/[2]) {}

void QUORCompassRepresentation::DistanceWidgetInteraction(double position[2]) {
    this->Superclass::DistanceWidgetInteraction(position);
}

void QUORCompassRepresentation::Highlight(int highlight) {
    this->Superclass::Highlight(highlight);
}

void QUORCompassRepresentation::GetActors(vtkPropCollection* actors) {
    this->Superclass::GetActors(actors);
}

void QUORCompassRepresentation::ReleaseGraphicsResources(vtkWindow* window) {
    this->Superclass::ReleaseGraphicsResources(window);
}

vtkStandardNewMacro(QUORCompassRepresentation)
