// SPDX-License-Identifier: MIT
#include "StopSignals.h"

#include <initializer_list>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {

sigset_t makeSet(std::initializer_list<int> numbers) {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : numbers) {
        sigaddset(&set, number);
    }
    return set;
}

} // namespace

StopSignals::StopSignals() {
    const sigset_t ends = makeSet({SIGINT, SIGTERM});
    ::sigprocmask(SIG_BLOCK, &ends, &_previous);
    _descriptor = ::signalfd(-1, &ends, SFD_NONBLOCK | SFD_CLOEXEC);
}

StopSignals::~StopSignals() {
    if (_descriptor >= 0) {
        ::close(_descriptor);
    }
    ::sigprocmask(SIG_SETMASK, &_previous, nullptr);
}

void StopSignals::unblockInChild() {
    const sigset_t ends = makeSet({SIGTERM});
    ::sigprocmask(SIG_UNBLOCK, &ends, nullptr);
}
