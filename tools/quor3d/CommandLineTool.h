// SPDX-License-Identifier: MIT
#pragma once

#include "Subcommand.h"

#include <memory>
#include <vector>

/// The frame of `quor3d`: finds the subcommand, parses its options and runs it. The parser's own exit codes
/// are mapped to ours; "--" ends the options. What a subcommand throws is a message and `Found`.
class CommandLineTool {
public:
    CommandLineTool();
    ~CommandLineTool();
    CommandLineTool(const CommandLineTool&) = delete;
    CommandLineTool& operator=(const CommandLineTool&) = delete;

    /// Before `run`; the list in the help keeps this order.
    void add(std::unique_ptr<Subcommand> subcommand);

    /// The exit status of the process.
    int run(int argc, const char* const* argv);

private:
    std::vector<std::unique_ptr<Subcommand>> _subcommands;
};
