// SPDX-License-Identifier: MIT
#pragma once

#include "JsonOutput.h"
#include "ServiceUser.h"
#include "Subcommand.h"

/// `quor3d show`: the values in force, and where each comes from.
class ShowCommand : public Subcommand {
public:
    std::string name() const override { return "show"; }
    std::string summary() const override { return "Print the settings in force, and where they come from"; }
    std::string examples() const override;
    void addOptions(CLI::App& app) override;
    ExitStatus run() override;

private:
    ServiceUser _user;
    JsonOutput _json;
    std::string _name;
    bool _explains = false;
};
