// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDisplayState.h"
#include "QUORVisualizationPipelineItem.h"

#include <vtkSmartPointer.h>

class vtkActor;
class vtkPiecewiseFunction;
class vtkProp;
class vtkVolume;
class vtkVolumeProperty;

/// Makes layers of a scene as translucent as a display state says, over what they are by themselves. The
/// scene need not be built again. Belongs to the rendering thread.
class QUORSceneOpacity {
public:
    QUORSceneOpacity();
    ~QUORSceneOpacity();
    QUORSceneOpacity(const QUORSceneOpacity&) = delete;
    QUORSceneOpacity& operator=(const QUORSceneOpacity&) = delete;

    void apply(const QUORVisualizationPipelineItem& item, const QUORDisplayState& state);

private:
    void applyTo(vtkProp* prop, double opacity, bool flat);
    void applyToVolume(vtkVolume* volume, double opacity);

    /// The volume that was changed last, and the opacities that it has by itself.
    vtkSmartPointer<vtkVolumeProperty> _property;
    vtkSmartPointer<vtkPiecewiseFunction> _ramp;
};
