// SPDX-License-Identifier: MIT
#include "CommandLineTool.h"

#include "QUORVersion.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>

CommandLineTool::CommandLineTool() = default;

CommandLineTool::~CommandLineTool() = default;

void CommandLineTool::add(std::unique_ptr<Subcommand> subcommand) {
    _subcommands.push_back(std::move(subcommand));
}

int CommandLineTool::run(int argc, const char* const* argv) {
    CLI::App app("Tools around the weather-radar image service quor3dd.", "quor3d");
    app.set_version_flag("--version", std::string("quor3d ") + QUOR_VERSION);
    app.footer(
        "quor3d SUBCOMMAND --help tells more. Exit status: 0 success, 1 something was found or failed, "
        "2 wrong use.");
    // Not required by the parser: it would complain of a missing subcommand where one is misspelt.
    app.require_subcommand(0, 1);
    Subcommand* chosen = nullptr;
    for (const auto& subcommand : _subcommands) {
        CLI::App* const group = app.add_subcommand(subcommand->name(), subcommand->summary());
        group->footer("Examples:\n" + subcommand->examples());
        subcommand->addOptions(*group);
        group->callback([&chosen, &subcommand] { chosen = subcommand.get(); });
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return int(app.exit(error, std::cout, std::cerr) == 0 ? ExitStatus::Success : ExitStatus::WrongUse);
    }
    if (chosen == nullptr) {
        std::cerr << "A subcommand is required\nRun with --help for more information.\n";
        return int(ExitStatus::WrongUse);
    }
    try {
        return int(chosen->run());
    } catch (const std::exception& error) {
        std::cerr << "quor3d: " << error.what() << '\n';
        return int(ExitStatus::Found);
    }
}
