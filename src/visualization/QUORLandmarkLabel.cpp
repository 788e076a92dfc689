// SPDX-License-Identifier: MIT
#include "QUORLandmarkLabel.h"

#include <vtkActor.h>
#include <vtkCamera.h>
#include <vtkCoordinate.h>
#include <vtkObjectFactory.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkRenderer.h>
#include <vtkSphereSource.h>
#include <vtkTextActor.h>
#include <vtkTextProperty.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr double MARKER_RADIUS = 1000.0;
constexpr int MARKER_THETA_RESOLUTION = 12;
constexpr int MARKER_PHI_RESOLUTION = 6;
constexpr double TEXT_OFFSET = 10.0;
/// Labels have 6 to 11 points: at the window's nominal 72 dots an inch nobody could read the small ones.
constexpr double DOTS_PER_POINT = 120.0 / 72.0;

} // namespace

vtkStandardNewMacro(QUORLandmarkLabel)

    QUORLandmarkLabel::QUORLandmarkLabel() {
    Sphere->SetRadius(MARKER_RADIUS);
    Sphere->SetThetaResolution(MARKER_THETA_RESOLUTION);
    Sphere->SetPhiResolution(MARKER_PHI_RESOLUTION);
    MarkerMapper->SetInputConnection(Sphere->GetOutputPort());
    MarkerMapper->ScalarVisibilityOff();
    Marker->SetMapper(MarkerMapper);
    Marker->GetProperty()->LightingOff();
    WorldCoordinate->SetCoordinateSystemToWorld();
    PositionCoordinate->SetCoordinateSystemToDisplay();
    PositionCoordinate->SetReferenceCoordinate(WorldCoordinate);
    PositionCoordinate->SetValue(0.0, TEXT_OFFSET, 0.0);
    TextProperty->SetFontFamilyToTimes();
    TextProperty->BoldOn();
    TextProperty->ItalicOff();
    TextProperty->ShadowOff();
    TextProperty->SetJustificationToCentered();
    TextProperty->SetVerticalJustificationToBottom();
}

QUORLandmarkLabel::~QUORLandmarkLabel() = default;

void QUORLandmarkLabel::SetWorldPosition(double x, double y, double z) {
    WorldPosition = {x, y, z};
    Modified();
}

void QUORLandmarkLabel::SetText(const QString& text) {
    Text = text;
    Modified();
}

void QUORLandmarkLabel::SetColor(double r, double g, double b) {
    Color = {std::clamp(r, 0.0, 1.0), std::clamp(g, 0.0, 1.0), std::clamp(b, 0.0, 1.0)};
    Modified();
}

void QUORLandmarkLabel::SetSize(int size) {
    Size = size;
    Modified();
}

vtkActor* QUORLandmarkLabel::GetMarker() const {
    return Marker;
}

vtkTextActor* QUORLandmarkLabel::GetTextActor() const {
    return TextActor;
}

void QUORLandmarkLabel::ShallowCopy(vtkProp* prop) {
    if (const auto* other = QUORLandmarkLabel::SafeDownCast(prop)) {
        WorldPosition = other->WorldPosition;
        Text = other->Text;
        Color = other->Color;
        Size = other->Size;
    }
    vtkProp::ShallowCopy(prop);
    Modified();
}

bool QUORLandmarkLabel::IsInView(vtkViewport* viewport) const {
    auto* renderer = vtkRenderer::SafeDownCast(viewport);
    if (renderer == nullptr) {
        return false;
    }
    vtkCamera* camera = renderer->GetActiveCamera();
    const double* position = camera->GetPosition();
    const double* direction = camera->GetDirectionOfProjection();
    double depth = 0.0;
    for (std::size_t i = 0; i < WorldPosition.size(); ++i) {
        depth += (WorldPosition[i] - position[i]) * direction[i];
    }
    if (!(depth > 0.0) || !std::isfinite(depth)) {
        return false; // behind the camera a point is projected mirrored
    }
    double x = WorldPosition[0];
    double y = WorldPosition[1];
    double z = WorldPosition[2];
    renderer->WorldToView(x, y, z);
    return std::abs(x) <= 1.0 && std::abs(y) <= 1.0;
}

void QUORLandmarkLabel::PlaceParts(vtkViewport* viewport) {
    WorldCoordinate->SetValue(WorldPosition[0], WorldPosition[1], WorldPosition[2]);
    TextProperty->SetFontSize(int(std::lround(Size * DOTS_PER_POINT)));
    TextProperty->SetColor(Color[0], Color[1], Color[2]);
    TextActor->SetTextProperty(TextProperty);
    TextActor->SetInput(Text.toUtf8().constData());
    const int* position = PositionCoordinate->GetComputedDisplayValue(viewport);
    TextActor->SetDisplayPosition(position[0], position[1]);
    Marker->SetPosition(WorldPosition.data());
    Marker->SetScale(Size * 0.2 + 1.0);
    Marker->GetProperty()->SetColor(Color.data());
}

int QUORLandmarkLabel::RenderOpaqueGeometry(vtkViewport* viewport) {
    if (!IsInView(viewport)) {
        return 0;
    }
    PlaceParts(viewport);
    return Marker->RenderOpaqueGeometry(viewport) + TextActor->RenderOpaqueGeometry(viewport);
}

int QUORLandmarkLabel::RenderOverlay(vtkViewport* viewport) {
    return IsInView(viewport) ? TextActor->RenderOverlay(viewport) : 0;
}

int QUORLandmarkLabel::RenderTranslucentPolygonalGeometry(vtkViewport* /*viewport*/) {
    return 0;
}

vtkTypeBool QUORLandmarkLabel::HasTranslucentPolygonalGeometry() {
    return 0;
}

void QUORLandmarkLabel::ReleaseGraphicsResources(vtkWindow* window) {
    Marker->ReleaseGraphicsResources(window);
    TextActor->ReleaseGraphicsResources(window);
    vtkActor2D::ReleaseGraphicsResources(window);
}
