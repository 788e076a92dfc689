// SPDX-License-Identifier: MIT
#pragma once

#include "JsonOutput.h"
#include "ServiceUser.h"
#include "Subcommand.h"

class QUORSetupCheck;

/// `quor3d check`: what is wrong with the setup, most costly first, and what is there to be drawn.
class CheckCommand : public Subcommand {
public:
    std::string name() const override { return "check"; }
    std::string summary() const override {
        return "Say what is wrong with the setup, and what it would draw";
    }
    std::string examples() const override;
    void addOptions(CLI::App& app) override;
    ExitStatus run() override;

private:
    ServiceUser _user;
    JsonOutput _json;
};
