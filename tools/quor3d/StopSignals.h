// SPDX-License-Identifier: MIT
#pragma once

#include <csignal>

/// While it lives, SIGINT and SIGTERM do not end the process but make a descriptor readable. One at a time,
/// for programs of one thread.
class StopSignals {
public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    int descriptor() const { return _descriptor; }
    /// Of a child that was started meanwhile: it is ended by SIGTERM as usual. SIGINT, which a terminal sends
    /// to all, is left to its parent.
    static void unblockInChild();

private:
    sigset_t _previous{};
    int _descriptor;
};
