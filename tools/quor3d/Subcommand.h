// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace CLI {
class App;
}

/// How the tool ends, for scripts.
enum class ExitStatus {
    Success = 0,
    Found = 1,    ///< something is wrong with what was looked at, or a part of the work failed
    WrongUse = 2, ///< the command line cannot be understood
};

/// One word of `quor3d WORD ...`. Data go to standard output, messages to standard error.
class Subcommand {
public:
    Subcommand() = default;
    virtual ~Subcommand() = default;
    Subcommand(const Subcommand&) = delete;
    Subcommand& operator=(const Subcommand&) = delete;

    virtual std::string name() const = 0;
    /// One line for the list of subcommands.
    virtual std::string summary() const = 0;
    /// Lines of examples, the footer of its help.
    virtual std::string examples() const = 0;

    /// Adds options and arguments, which write to members of this object, and nested subcommands.
    virtual void addOptions(CLI::App& app) = 0;
    /// Called once, after a successful parse.
    virtual ExitStatus run() = 0;
};
