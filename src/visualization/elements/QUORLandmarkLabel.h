// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <vtkActor2D.h>
#include <vtkNew.h>

#include <array>

class vtkActor;
class vtkCoordinate;
class vtkPolyDataMapper;
class vtkRenderer;
class vtkSphereSource;
class vtkTextActor;
class vtkTextProperty;

/// One landmark: a small sphere in the scene, drawn with the opaque geometry, and its name above it on the
/// screen, drawn with the overlay. Both are placed anew at every render, and the name goes with the picture's
/// height; a label behind the camera or outside
/// the view is left out. A thin edge, dark round a light name and light round a dark one, keeps it readable
/// over land, sea and rain. It has no bounds, so no camera takes it into account.
///
/// Built on the pipeline's thread, drawn and released on the main thread.
class QUORLandmarkLabel : public vtkActor2D {
public:
    static QUORLandmarkLabel* New();
    vtkTypeMacro(QUORLandmarkLabel, vtkActor2D)

    /// The marker's centre in scene metres.
    void SetWorldPosition(double x, double y, double z);
    const std::array<double, 3>& GetWorldPosition() const { return WorldPosition; }
    void SetText(const QString& text);
    QString GetText() const { return Text; }
    /// Components 0 to 1; what lies outside is clamped.
    void SetColor(double r, double g, double b);
    const std::array<double, 3>& GetColor() const { return Color; }
    /// Text size in points; the marker grows with it.
    void SetSize(int size);
    int GetSize() const { return Size; }
    /// Of marker and name, 0 to 1.
    void SetOpacity(double opacity);

    /// A label that has been left out of this picture; the layout of the picture decides. In view otherwise.
    void SetLeftOut(bool leftOut) { LeftOut = leftOut; }
    bool IsLeftOut() const { return LeftOut; }
    /// The pixels that marker and name take in the renderer's picture: left, right, bottom, top. False for a
    /// label that is not in view.
    bool FindBox(vtkRenderer* renderer, std::array<double, 4>& marker, std::array<double, 4>& name);

    vtkActor* GetMarker() const;
    vtkTextActor* GetTextActor() const;

    void ShallowCopy(vtkProp* prop) override;
    int RenderOpaqueGeometry(vtkViewport* viewport) override;
    int RenderOverlay(vtkViewport* viewport) override;
    int RenderTranslucentPolygonalGeometry(vtkViewport* viewport) override;
    vtkTypeBool HasTranslucentPolygonalGeometry() override;
    void ReleaseGraphicsResources(vtkWindow* window) override;

    QUORLandmarkLabel(const QUORLandmarkLabel&) = delete;
    QUORLandmarkLabel& operator=(const QUORLandmarkLabel&) = delete;

protected:
    QUORLandmarkLabel();
    ~QUORLandmarkLabel() override;

private:
    bool IsInView(vtkRenderer* renderer) const;
    void PlaceParts(vtkRenderer* renderer);
    void DrawEdge(vtkViewport* viewport);

    std::array<double, 3> WorldPosition{};
    QString Text;
    std::array<double, 3> Color{};
    int Size = 1;
    double Opacity = 1.0;
    bool LeftOut = false;
    vtkNew<vtkCoordinate> WorldCoordinate;
    vtkNew<vtkSphereSource> Sphere;
    vtkNew<vtkPolyDataMapper> MarkerMapper;
    vtkNew<vtkActor> Marker;
    vtkNew<vtkTextProperty> TextProperty;
    vtkNew<vtkTextActor> TextActor;
    vtkNew<vtkTextProperty> EdgeProperty;
    vtkNew<vtkTextActor> EdgeActor;
};
