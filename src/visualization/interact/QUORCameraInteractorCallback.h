// SPDX-License-Identifier: MIT
#pragma once

#include <vtkCommand.h>

class QUORCameraInteractorObserver;

/// Hands the camera interactor's user events on to one observer, which must outlive it.
class QUORCameraInteractorCallback : public vtkCommand {
public:
    static QUORCameraInteractorCallback* New() { return new QUORCameraInteractorCallback; }
    vtkTypeMacro(QUORCameraInteractorCallback, vtkCommand)

    void setObserver(QUORCameraInteractorObserver* observer) { _observer = observer; }
    /// `callData` points to an int: 0 for a move, 1 for a reset; nothing happens without it.
    void Execute(vtkObject* caller, unsigned long event, void* callData) override;

private:
    QUORCameraInteractorObserver* _observer = nullptr;
};
