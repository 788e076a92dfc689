// SPDX-License-Identifier: MIT
#pragma once

#include "ServiceUser.h"
#include "Subcommand.h"

/// `quor3d unset`: removes one value of the user, so that the packaged one or the default counts.
class UnsetCommand : public Subcommand {
public:
    std::string name() const override { return "unset"; }
    std::string summary() const override { return "Remove a setting, so that its default counts"; }
    std::string examples() const override;
    void addOptions(CLI::App& app) override;
    ExitStatus run() override;

private:
    ServiceUser _user;
    std::string _key;
};
