// SPDX-License-Identifier: MIT
#pragma once

#include "JsonOutput.h"
#include "ServiceUser.h"
#include "Subcommand.h"

#include <vector>

/// `quor3d states`: the display states that the background settings may name.
class StatesCommand : public Subcommand {
public:
    std::string name() const override { return "states"; }
    std::string summary() const override { return "List, add, change, rename and remove display states"; }
    std::string examples() const override;
    void addOptions(CLI::App& app) override;
    ExitStatus run() override;

private:
    enum class Action { List, Add, Set, Rename, Remove };

    ExitStatus list();
    ExitStatus change();
    ExitStatus rename();
    ExitStatus remove();

    ServiceUser _user;
    JsonOutput _json;
    Action _action = Action::List;
    std::string _name;
    std::string _newName;
    std::vector<std::string> _shown;
    std::vector<std::string> _hidden;
};
