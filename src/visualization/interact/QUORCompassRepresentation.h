// SPDX-License-Identifier: MIT
#pragma once

#include "QUORCameraInteractorObserver.h"
#include "QUORPictureArea.h"
#include "QUORPoint3D.h"
#include "QUORStyleGroup.h"

#include <vtkCompassRepresentation.h>

/// The heading dial in a corner of the view. It shows the heading of the camera that it observes and takes
/// its colour from the styles file; the tilt cannot be changed from it, and the zoom slider and the status
/// text show only while the pointer is over it. Main thread only.
class QUORCompassRepresentation : public vtkCompassRepresentation, public QUORCameraInteractorObserver {
public:
    static QUORCompassRepresentation* New();

    /// Both show the camera's heading, tilt and distance; nothing happens without a camera.
    void cameraMoved(QUORCameraInteractor* camera) override;
    void cameraReset(QUORCameraInteractor* camera) override;

    void loadStyle(bool night);
    void toggleDisplayMode(bool night);
    bool isDay() const { return _day; }
    void updateColors();
    /// Gives every part of the compass the colour (red, green and blue as x, y and z) and the opacity.
    void updateForegroundColor(const QUORPoint3D& color, double opacity);

    /// Where the dial lies in its renderer.
    QUORPictureArea getArea();

    void BuildRepresentation() override;
    int RenderOpaqueGeometry(vtkViewport* viewport) override;
    int RenderOverlay(vtkViewport* viewport) override;
    int ComputeInteractionState(int x, int y, int modify = 0) override;
    void StartWidgetInteraction(double position[2]) override;
    void WidgetInteraction(double position[2]) override;
    void TiltWidgetInteraction(double position[2]) override;
    void DistanceWidgetInteraction(double position[2]) override;
    void Highlight(int highlight) override;
    void GetActors(vtkPropCollection* actors) override;
    void ReleaseGraphicsResources(vtkWindow* window) override;

    QUORCompassRepresentation(const QUORCompassRepresentation&) = delete;
    QUORCompassRepresentation& operator=(const QUORCompassRepresentation&) = delete;
    vtkTypeMacro(QUORCompassRepresentation, vtkCompassRepresentation)

protected:
    QUORCompassRepresentation();
    ~QUORCompassRepresentation() override = default;

private:
    int renderParts(vtkViewport* viewport, int (vtkProp::*pass)(vtkViewport*));
    bool hasStatusText() const;

    bool _day = true;
    QUORPoint3D _foregroundColor;
    double _highlightedOpacity = 1.0;
    double _nonHighlightedOpacity = 1.0;
    QUORStyleGroup _style;
};
