// SPDX-License-Identifier: MIT
#pragma once

#include "ServiceUser.h"
#include "Subcommand.h"

/// `quor3d set`: stores one value, checked, in the file that its group belongs to.
class SetCommand : public Subcommand {
public:
    std::string name() const override { return "set"; }
    std::string summary() const override { return "Store a setting"; }
    std::string examples() const override;
    void addOptions(CLI::App& app) override;
    ExitStatus run() override;

private:
    ServiceUser _user;
    std::string _key;
    std::string _value;
};
