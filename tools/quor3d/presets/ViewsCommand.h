// SPDX-License-Identifier: MIT
#pragma once

#include "JsonOutput.h"
#include "ServiceUser.h"
#include "Subcommand.h"

#include "QUORViewPlan.h"

#include <vector>

/// `quor3d views`: the view angles that the background settings may name.
class ViewsCommand : public Subcommand {
public:
    std::string name() const override { return "views"; }
    std::string summary() const override { return "List, add, rename and remove view angles"; }
    std::string examples() const override;
    void addOptions(CLI::App& app) override;
    ExitStatus run() override;

private:
    enum class Action { List, Add, Rename, Remove };

    ExitStatus list();
    ExitStatus add();
    ExitStatus rename();
    ExitStatus remove();
    /// Of the options; distance 0 where each product is to fit.
    QUORViewPlan makePlan() const;

    ServiceUser _user;
    JsonOutput _json;
    Action _action = Action::List;
    std::string _name;
    std::string _newName;
    double _heading = 0.0;
    double _pitch = 40.0;
    double _distance = 0.0;
    bool _fits = false;
    std::vector<double> _extent;
};
