// SPDX-License-Identifier: MIT
#pragma once

#include "QUORImporter.h"
#include "Subcommand.h"

#include <string>
#include <vector>

class ImportReport;

/// `quor3d import`: makes products of radar data in the public formats.
class ImportCommand : public Subcommand {
public:
    std::string name() const override { return "import"; }
    std::string summary() const override;
    std::string examples() const override;
    void addOptions(CLI::App& app) override;
    ExitStatus run() override;

private:
    void addGridOptions(CLI::App& app);
    void addProductOptions(CLI::App& app);
    ExitStatus importFiles();
    ExitStatus watchFolder();

    QUORImportOptions _options;
    std::vector<std::string> _files;
    std::string _output;
    std::string _output3d;
    std::string _output2d;
    std::string _watched;
    std::string _record;
    bool _existing = false;
    int _join = 600;
    int _quiet = 60;
    bool _dryRun = false;
    bool _json = false;
};
