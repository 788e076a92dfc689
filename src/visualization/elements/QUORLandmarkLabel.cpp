// SPDX-License-Identifier: MIT
#include "QUORLandmarkLabel.h"

#include <vtkActor.h>
#include <vtkCamera.h>
#include <vtkCoordinate.h>
#include <vtkMath.h>
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
/// Pixels from the landmark to its name, and from the marker's edge where that is farther.
constexpr double TEXT_OFFSET = 10.0;
constexpr double TEXT_GAP = 3.0;
/// Labels have 6 to 11 points: at the window's nominal 72 dots an inch nobody could read the small ones.
constexpr double DOTS_PER_POINT = 120.0 / 72.0;

/// Names have their stated size in pictures of this height, and keep at least that many pixels.
constexpr double STATED_HEIGHT = 1200.0;
constexpr double LEAST_FONT = 9.0;
/// The largest radius of a marker, in points of its name: a near one would hide its town.
constexpr double MOST_MARKER = 0.6;

constexpr int EDGE_WIDTH = 1; // pixels

double fontOf(int size, vtkRenderer* renderer) {
    const double stated = size * DOTS_PER_POINT;
    return std::max(stated * renderer->GetSize()[1] / STATED_HEIGHT,
                    std::min(stated, LEAST_FONT + 0.4 * size - 2.4));
}

/// What sets letters of a colour off from any ground.
double edgeShade(const std::array<double, 3>& color) {
    const double luminance = 0.2126 * color[0] + 0.7152 * color[1] + 0.0722 * color[2]; // ITU-R BT.709
    return luminance < 0.35 ? 0.95 : 0.05;
}

/// Metres in front of the camera.
double depthOf(const std::array<double, 3>& place, vtkCamera* camera) {
    const double* position = camera->GetPosition();
    const double* direction = camera->GetDirectionOfProjection();
    double depth = 0.0;
    for (std::size_t i = 0; i < place.size(); ++i) {
        depth += (place[i] - position[i]) * direction[i];
    }
    return depth;
}

double pixelsPerMetre(const std::array<double, 3>& place, vtkRenderer* renderer) {
    vtkCamera* camera = renderer->GetActiveCamera();
    const double halfHeight =
        camera->GetParallelProjection() != 0
            ? camera->GetParallelScale()
            : depthOf(place, camera) * std::tan(vtkMath::RadiansFromDegrees(0.5 * camera->GetViewAngle()));
    return 0.5 * renderer->GetSize()[1] / halfHeight;
}

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

void QUORLandmarkLabel::SetOpacity(double opacity) {
    Opacity = opacity;
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
        Opacity = other->Opacity;
    }
    Superclass::ShallowCopy(prop);
    Modified();
}

bool QUORLandmarkLabel::IsInView(vtkRenderer* renderer) const {
    if (renderer == nullptr) {
        return false;
    }
    const double depth = depthOf(WorldPosition, renderer->GetActiveCamera());
    if (!(depth > 0.0) || !std::isfinite(depth)) {
        return false; // behind the camera a point is projected mirrored
    }
    std::array<double, 3> view = WorldPosition;
    renderer->WorldToView(view[0], view[1], view[2]);
    return std::abs(view[0]) <= 1.0 && std::abs(view[1]) <= 1.0;
}

void QUORLandmarkLabel::PlaceParts(vtkRenderer* renderer) {
    const double font = fontOf(Size, renderer);
    const double perMetre = MARKER_RADIUS * pixelsPerMetre(WorldPosition, renderer);
    const double scale = std::min(Size * 0.2 + 1.0, MOST_MARKER * font / perMetre);
    Marker->SetPosition(WorldPosition.data());
    Marker->SetScale(scale);
    Marker->GetProperty()->SetColor(Color.data());
    Marker->GetProperty()->SetOpacity(Opacity);

    const double reach = perMetre * scale;
    WorldCoordinate->SetValue(WorldPosition[0], WorldPosition[1], WorldPosition[2]);
    PositionCoordinate->SetValue(0.0, std::max(TEXT_OFFSET, reach + TEXT_GAP), 0.0);
    TextProperty->SetFontSize(int(std::lround(font)));
    TextProperty->SetColor(Color[0], Color[1], Color[2]);
    TextProperty->SetOpacity(Opacity);
    TextActor->SetTextProperty(TextProperty);
    TextActor->SetInput(Text.toUtf8().constData());
    const double shade = edgeShade(Color);
    EdgeProperty->ShallowCopy(TextProperty);
    EdgeProperty->SetColor(shade, shade, shade);
    EdgeActor->SetTextProperty(EdgeProperty);
    EdgeActor->SetInput(TextActor->GetInput());
    const int* position = PositionCoordinate->GetComputedDisplayValue(renderer);
    TextActor->SetDisplayPosition(position[0], position[1]);
}

bool QUORLandmarkLabel::FindBox(vtkRenderer* renderer, std::array<double, 4>& marker,
                                std::array<double, 4>& name) {
    if (this->GetVisibility() == 0 || !IsInView(renderer)) {
        return false;
    }
    PlaceParts(renderer);
    std::array<double, 4> text{};
    TextActor->GetBoundingBox(renderer, text.data());
    const double* place = TextActor->GetPositionCoordinate()->GetValue();
    name = {place[0] + text[0] - EDGE_WIDTH, place[0] + text[1] + EDGE_WIDTH, place[1] + text[2] - EDGE_WIDTH,
            place[1] + text[3] + EDGE_WIDTH};
    const int* centre = WorldCoordinate->GetComputedDisplayValue(renderer);
    const double reach = MARKER_RADIUS * Marker->GetScale()[0] * pixelsPerMetre(WorldPosition, renderer);
    marker = {centre[0] - reach, centre[0] + reach, centre[1] - reach, centre[1] + reach};
    return true;
}

int QUORLandmarkLabel::RenderOpaqueGeometry(vtkViewport* viewport) {
    auto* renderer = vtkRenderer::SafeDownCast(viewport);
    if (LeftOut || !IsInView(renderer)) {
        return 0;
    }
    PlaceParts(renderer);
    return Marker->RenderOpaqueGeometry(viewport) + EdgeActor->RenderOpaqueGeometry(viewport) +
           TextActor->RenderOpaqueGeometry(viewport);
}

int QUORLandmarkLabel::RenderOverlay(vtkViewport* viewport) {
    if (LeftOut || !IsInView(vtkRenderer::SafeDownCast(viewport))) {
        return 0;
    }
    DrawEdge(viewport);
    return TextActor->RenderOverlay(viewport);
}

void QUORLandmarkLabel::DrawEdge(vtkViewport* viewport) {
    const double* place = TextActor->GetPositionCoordinate()->GetValue();
    for (const int y : {-EDGE_WIDTH, EDGE_WIDTH}) {
        for (const int x : {-EDGE_WIDTH, EDGE_WIDTH}) {
            EdgeActor->SetDisplayPosition(int(place[0]) + x, int(place[1]) + y);
            EdgeActor->RenderOverlay(viewport);
        }
    }
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
    EdgeActor->ReleaseGraphicsResources(window);
    vtkActor2D::ReleaseGraphicsResources(window);
}
