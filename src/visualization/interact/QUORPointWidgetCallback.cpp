// SPDX-License-Identifier: MIT
#include "QUORPointWidgetCallback.h"

#include "QUORPointWidget.h"

void QUORPointWidgetCallback::Execute(vtkObject* caller, unsigned long /*event*/, void* /*callData*/) {
    if (auto* widget = QUORPointWidget::SafeDownCast(caller)) {
        widget->update();
    }
}
