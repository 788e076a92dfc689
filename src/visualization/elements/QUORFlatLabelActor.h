// SPDX-License-Identifier: MIT
#pragma once

#include <vtkOpenGLActor.h>

#include <array>

class vtkRenderer;

/// A text that lies flat in the scene, or the halo round one. A halo is drawn no wider than the letters'
/// height on the screen allows: seen from a low camera it would else turn them into dashes.
class QUORFlatLabelActor : public vtkOpenGLActor {
public:
    static QUORFlatLabelActor* New();
    vtkTypeMacro(QUORFlatLabelActor, vtkOpenGLActor)

    /// Makes it a halo of that width in pixels at the most, with a property of its own.
    void SetHaloWidth(double pixels) { HaloWidth = pixels; }
    /// The pixels that the text takes in the renderer's picture: left, right, bottom, top. False where a part
    /// of it is behind the camera.
    bool FindBox(vtkRenderer* renderer, std::array<double, 4>& box);

    int RenderOpaqueGeometry(vtkViewport* viewport) override;

    QUORFlatLabelActor(const QUORFlatLabelActor&) = delete;
    QUORFlatLabelActor& operator=(const QUORFlatLabelActor&) = delete;

protected:
    QUORFlatLabelActor();
    ~QUORFlatLabelActor() override;

private:
    using Corners = std::array<std::array<double, 2>, 4>;
    bool FindCorners(vtkRenderer* renderer, Corners& corners);

    double HaloWidth = 0.0;
};
