// SPDX-License-Identifier: MIT
#include "QUORCameraInteractorCallback.h"

#include "QUORCameraInteractor.h"
#include "QUORCameraInteractorObserver.h"

void QUORCameraInteractorCallback::Execute(vtkObject* caller, unsigned long /*event*/, void* callData) {
    if (callData == nullptr || _observer == nullptr) {
        return;
    }
    const bool known = caller != nullptr && caller->IsA("QUORCameraInteractor");
    auto* camera = known ? static_cast<QUORCameraInteractor*>(caller) : nullptr;
    switch (*static_cast<const int*>(callData)) {
    case QUORCameraInteractor::Moved:
        _observer->cameraMoved(camera);
        break;
    case QUORCameraInteractor::Reset:
        _observer->cameraReset(camera);
        break;
    default:
        break;
    }
}
