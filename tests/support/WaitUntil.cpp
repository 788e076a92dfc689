// SPDX-License-Identifier: MIT
#include "WaitUntil.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

bool waitUntil(const std::function<bool()>& reached, int milliseconds) {
    QElapsedTimer timer;
    timer.start();
    while (!reached()) {
        if (timer.elapsed() > milliseconds) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::msleep(1);
    }
    return true;
}
