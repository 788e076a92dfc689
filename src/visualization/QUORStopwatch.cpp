// SPDX-License-Identifier: MIT
#include "QUORStopwatch.h"

#include <vtkTimerLog.h>

QUORStopwatch::QUORStopwatch() : _start(vtkTimerLog::GetUniversalTime()) {}

void QUORStopwatch::restart() {
    _start = vtkTimerLog::GetUniversalTime();
}

QString QUORStopwatch::seconds() const {
    return QString::number(vtkTimerLog::GetUniversalTime() - _start, 'f', 3);
}
