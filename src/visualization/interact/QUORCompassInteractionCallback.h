// SPDX-License-Identifier: MIT
#pragma once

#include <vtkCommand.h>

class QUORCameraInteractor;

/// Turns the camera when the compass is dragged.
class QUORCompassInteractionCallback : public vtkCommand {
public:
    static QUORCompassInteractionCallback* New() { return new QUORCompassInteractionCallback; }
    vtkTypeMacro(QUORCompassInteractionCallback, vtkCommand)

    /// Not owned; must outlive the compass widget's last event.
    void setCamera(QUORCameraInteractor* camera) { _camera = camera; }
    void Execute(vtkObject* caller, unsigned long event, void* callData) override;

private:
    QUORCameraInteractor* _camera = nullptr;
};
