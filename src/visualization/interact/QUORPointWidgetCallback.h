// SPDX-License-Identifier: MIT
#pragma once

#include <vtkCommand.h>

/// Updates the point widget that sent the event.
class QUORPointWidgetCallback : public vtkCommand {
public:
    static QUORPointWidgetCallback* New() { return new QUORPointWidgetCallback; }
    void Execute(vtkObject* caller, unsigned long event, void* callData) override;
    vtkTypeMacro(QUORPointWidgetCallback, vtkCommand)
};
