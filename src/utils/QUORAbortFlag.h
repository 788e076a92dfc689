// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>

/// A request to stop long work early. Its owner sets it from any thread; the work gets it as a const
/// reference and tests it (`if (abort)`) at each step.
class QUORAbortFlag {
public:
    QUORAbortFlag() = default;
    QUORAbortFlag(const QUORAbortFlag&) = delete;
    QUORAbortFlag& operator=(const QUORAbortFlag&) = delete;

    void set() { _flag.store(true); }
    explicit operator bool() const { return _flag.load(); }

private:
    std::atomic<bool> _flag{false};
};
