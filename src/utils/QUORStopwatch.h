// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <chrono>

/// Measures one step for the log; a change of the wall clock does not touch it.
class QUORStopwatch {
public:
    /// Starts at once.
    QUORStopwatch();

    void restart();
    /// Seconds since the start.
    double elapsed() const;
    /// Seconds since the start with three decimals.
    QString seconds() const;

private:
    std::chrono::steady_clock::time_point _start;
};
