// SPDX-License-Identifier: MIT
#include "QUORCompassInteractionCallback.h"

#include "QUORCameraInteractor.h"

#include <vtkCompassWidget.h>

void QUORCompassInteractionCallback::Execute(vtkObject* caller, unsigned long event, void* /*callData*/) {
    auto* widget = vtkCompassWidget::SafeDownCast(caller);
    if (event != vtkCommand::InteractionEvent || widget == nullptr || _camera == nullptr) {
        return;
    }
    const double heading = widget->GetHeading() * 2.0 * double(3.1415927F);
    const double pitch = widget->GetTilt() * 3.14159265 / 180.0;
    _camera->setCameraByHPD(heading, pitch, widget->GetDistance());
    _camera->applyCamera(false);
    _camera->render();
}
