// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

class QCoreApplication;

/// The application object that the library's plugins and timers need, for a subcommand that uses them:
/// without a display, its arguments of no interest to the library. On the main thread, one at a time.
class ToolApplication {
public:
    /// Text can be drawn into pictures only by one that draws.
    enum Kind { Plain, Drawing };

    explicit ToolApplication(Kind kind = Plain);
    ~ToolApplication();
    ToolApplication(const ToolApplication&) = delete;
    ToolApplication& operator=(const ToolApplication&) = delete;

private:
    std::unique_ptr<QCoreApplication> _application;
};
