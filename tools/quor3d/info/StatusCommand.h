// SPDX-License-Identifier: MIT
#pragma once

#include "JsonOutput.h"
#include "ServiceUser.h"
#include "Subcommand.h"

/// `quor3d status`: whether the service lives and what it does, from the status file that it writes.
class StatusCommand : public Subcommand {
public:
    std::string name() const override { return "status"; }
    std::string summary() const override { return "Say whether the service lives, and what it does"; }
    std::string examples() const override;
    void addOptions(CLI::App& app) override;
    ExitStatus run() override;

private:
    ServiceUser _user;
    JsonOutput _json;
    std::string _file;
};
