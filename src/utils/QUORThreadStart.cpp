// SPDX-License-Identifier: MIT
#include "QUORThreadStart.h"

#include <QThread>

#include <stdexcept>
#include <string>

void QUORThreadStart::start(QThread& thread, const char* name) {
    thread.start(QThread::InheritPriority);
    if (!thread.isRunning() && !thread.isFinished()) {
        throw std::runtime_error(std::string("the system refuses the ") + name +
                                 " thread (limits of processes, tasks or memory)");
    }
}
