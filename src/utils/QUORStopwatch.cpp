// SPDX-License-Identifier: MIT
#include "QUORStopwatch.h"

QUORStopwatch::QUORStopwatch() : _start(std::chrono::steady_clock::now()) {}

void QUORStopwatch::restart() {
    _start = std::chrono::steady_clock::now();
}

QString QUORStopwatch::seconds() const {
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - _start;
    return QString::number(passed.count(), 'f', 3);
}
