// SPDX-License-Identifier: MIT
#include "QUORCompassInteractionCallback.h"

#include "QUORCameraInteractor.h"
#include "QUORUnits.h"

#include <vtkCompassWidget.h>

void QUORCompassInteractionCallback::Execute(vtkObject* caller, unsigned long event, void* /*callData*/) {
    auto* widget = vtkCompassWidget::SafeDownCast(caller);
    if (event != vtkCommand::InteractionEvent || widget == nullptr || _camera == nullptr) {
        return;
    }
    const double heading = widget->GetHeading() * QUORUnits::FULL_TURN;
    const double pitch = widget->GetTilt() * QUORUnits::RADIANS_PER_DEGREE;
    _camera->setCameraByHPD(heading, pitch, widget->GetDistance());
    _camera->applyCamera(false);
    _camera->render();
}
