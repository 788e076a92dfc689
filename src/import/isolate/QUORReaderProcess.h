// SPDX-License-Identifier: MIT
#pragma once

#include "QUORRadarData.h"

#include <chrono>

/// Reads one file in a process of its own, with limits of time and memory: what a damaged or hostile file
/// does to the libraries that read it ends that process and is the reason of this file alone.
///
/// The process is forked without a new program: call from a process that has no other thread at that moment.
class QUORReaderProcess {
public:
    struct Limits {
        std::size_t memory = std::size_t(2) << 30; ///< bytes of address space beside what the program has
        int processorSeconds = 60;
        std::chrono::milliseconds wall{120000};
    };

    QUORReaderProcess() = default;
    explicit QUORReaderProcess(const Limits& limits) : _limits(limits) {}

    /// A signal that ends the program waits to be taken: no reading goes on then.
    static bool isEnding();

    /// Throws a QUORImportError with the reader's reason, or with what became of the process.
    QUORRadarData read(const QString& path) const;

private:
    Limits _limits;
};
