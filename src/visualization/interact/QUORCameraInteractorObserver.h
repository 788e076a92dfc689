// SPDX-License-Identifier: MIT
#pragma once

class QUORCameraInteractor;

/// Told on the main thread when the camera has moved or was reset. The argument may be null.
class QUORCameraInteractorObserver {
public:
    virtual ~QUORCameraInteractorObserver() = default;
    virtual void cameraMoved(QUORCameraInteractor* camera) = 0;
    virtual void cameraReset(QUORCameraInteractor* camera) = 0;
};
