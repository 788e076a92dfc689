// SPDX-License-Identifier: MIT
#pragma once

#include "JsonOutput.h"
#include "Subcommand.h"

#include <QString>

#include <vector>

class QUORFile;

/// `quor3d info`: what product files are, from their headers and grids.
class InfoCommand : public Subcommand {
public:
    std::string name() const override { return "info"; }
    std::string summary() const override { return "Say what product files are"; }
    std::string examples() const override;
    void addOptions(CLI::App& app) override;
    ExitStatus run() override;

private:
    JsonOutput _json;
    std::vector<std::string> _files;
    std::string _directory2d;
    std::string _product2d;
};
