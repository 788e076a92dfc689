// SPDX-License-Identifier: MIT
#include "QUORStopwatch.h"

QUORStopwatch::QUORStopwatch() : _start(std::chrono::steady_clock::now()) {}

void QUORStopwatch::restart() {
    _start = std::chrono::steady_clock::now();
}

double QUORStopwatch::elapsed() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - _start).count();
}

QString QUORStopwatch::seconds() const {
    return QString::number(elapsed(), 'f', 3);
}
