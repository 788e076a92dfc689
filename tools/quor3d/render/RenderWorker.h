// SPDX-License-Identifier: MIT
#pragma once

/// The process that draws: takes tasks from standard input and answers on standard output, a line of JSON
/// each. The first line says where the settings stand. Drawing happens on the main thread, as in the service.
///
/// A bad file may end this process; the one that started it knows what it was at and starts another.
class RenderWorker {
public:
    /// Until standard input ends. The exit status of the process.
    static int run();
};
