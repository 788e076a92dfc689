// SPDX-License-Identifier: MIT
#include "StatusCommand.h"

#include "ServiceStatus.h"
#include "ToolApplication.h"

#include <CLI/CLI.hpp>

#include <iostream>

std::string StatusCommand::examples() const {
    return "  quor3d status                  of the service on this machine\n"
           "  quor3d status --file FILE      as quor3dd --status=FILE names it\n"
           "  quor3d status --json           for a script; the exit status is 1 unless the service runs\n";
}

void StatusCommand::addOptions(CLI::App& app) {
    app.add_option("--file", _file, "The status file (default: below /run, or in the user's ~/.quor3d)");
    _user.addOption(app);
    _json.addOption(app);
}

ExitStatus StatusCommand::run() {
    const ToolApplication application;
    _user.become();
    const QString file = _file.empty() ? ServiceStatus::findDefaultFile() : QString::fromStdString(_file);
    ServiceStatus status;
    QString error;
    if (!status.read(file, error)) {
        std::cerr << "quor3d status: " << file.toStdString() << ": " << error.toStdString() << '\n';
        return ExitStatus::Found;
    }
    if (_json.isWanted()) {
        JsonOutput::print(status.toJson());
    } else {
        status.print();
    }
    return status.getState() == ServiceStatus::State::Running ? ExitStatus::Success : ExitStatus::Found;
}
