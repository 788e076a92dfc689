// SPDX-License-Identifier: MIT
#pragma once

#include "JsonOutput.h"
#include "ServiceUser.h"
#include "Subcommand.h"

#include "QUORColorScales.h"

#include <optional>
#include <vector>

/// `quor3d scales`: the colour scales that product settings may name.
class ScalesCommand : public Subcommand {
public:
    std::string name() const override { return "scales"; }
    std::string summary() const override { return "List, show, import, rename and remove colour scales"; }
    std::string examples() const override;
    void addOptions(CLI::App& app) override;
    ExitStatus run() override;

private:
    enum class Action { List, Preview, Import, Rename, Remove };

    ExitStatus list();
    ExitStatus preview();
    ExitStatus importPalette();
    ExitStatus rename();
    ExitStatus remove();
    /// The scale of that name, or number, and kind of data; nothing, after a message, for none or several.
    std::optional<QUORColorScales::Scale> find() const;

    ServiceUser _user;
    JsonOutput _json;
    Action _action = Action::List;
    std::string _name;
    std::string _newName;
    std::string _file;
    std::string _configuration;
    std::string _units;
    std::vector<double> _range;
};
