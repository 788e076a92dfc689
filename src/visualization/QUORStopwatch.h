// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Measures one step with VTK's timer, for the log.
class QUORStopwatch {
public:
    /// Starts at once.
    QUORStopwatch();

    void restart();
    /// Seconds since the start with three decimals.
    QString seconds() const;

private:
    double _start;
};
