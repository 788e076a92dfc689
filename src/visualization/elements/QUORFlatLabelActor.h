// SPDX-License-Identifier: MIT
#pragma once

#include <vtkOpenGLActor.h>

#include <QString>

#include <array>

class vtkCamera;
class vtkRenderer;

/// A text that lies flat in the scene until it is told to lean, or the halo round one. A halo is drawn no
/// wider than the letters' height on the screen allows: seen from a low camera it would else turn them into
/// dashes.
class QUORFlatLabelActor : public vtkOpenGLActor {
public:
    static QUORFlatLabelActor* New();
    vtkTypeMacro(QUORFlatLabelActor, vtkOpenGLActor)

    /// In pixels: lower left, lower right, upper right and upper left of the text as it is read.
    using Corners = std::array<std::array<double, 2>, 4>;

    /// Makes it a halo of that width in pixels at the most, with a property of its own.
    void SetHaloWidth(double pixels) { HaloWidth = pixels; }
    bool IsHalo() const { return HaloWidth > 0.0; }
    void SetText(const QString& text) { Text = text; }
    const QString& GetText() const { return Text; }
    /// Turns the text about its base line, as far as a camera that stands low needs to read it; one that
    /// looks down on it finds it flat. It is drawn over the scene then: half under a shell, "170km" would
    /// read "0km".
    void LeanTowards(vtkCamera* camera);
    /// Back to where it was, in the order of the scene.
    void LieFlat();
    /// Where the text lies in the renderer's picture. False where a part of it is behind the camera.
    bool FindCorners(vtkRenderer* renderer, Corners& corners);
    /// Whether letters with these corners are high and wide enough on the screen to be read.
    bool IsLegible(const Corners& corners) const;

    int RenderOpaqueGeometry(vtkViewport* viewport) override;
    int RenderOverlay(vtkViewport* viewport) override;

    QUORFlatLabelActor(const QUORFlatLabelActor&) = delete;
    QUORFlatLabelActor& operator=(const QUORFlatLabelActor&) = delete;

protected:
    QUORFlatLabelActor();
    ~QUORFlatLabelActor() override;

private:
    int Draw(vtkViewport* viewport);

    double HaloWidth = 0.0;
    bool OnTop = false;
    QString Text;
};
