// SPDX-License-Identifier: MIT
#pragma once

#include "RenderPlan.h"
#include "SceneOptions.h"
#include "Subcommand.h"

#include <vector>

/// `quor3d render`: product files to pictures, with the classes of the service and without the service.
class RenderCommand : public Subcommand {
public:
    std::string name() const override { return "render"; }
    std::string summary() const override { return "Draw pictures of product files."; }
    std::string examples() const override;
    void addOptions(CLI::App& app) override;
    ExitStatus run() override;

private:
    QString makeOptions(RenderPlan::Options& options);
    ExitStatus draw(const RenderPlan& plan, const QString& folder) const;

    std::vector<std::string> _files;
    std::string _output;
    std::vector<std::string> _views;
    std::vector<std::string> _states;
    double _heading = 0.0;
    double _pitch = 40.0;
    double _distance = 0.0;
    bool _isFitted = false;
    std::string _format;
    SceneOptions _scene;
    std::string _name;
    int _jobs = 1;
    bool _resume = false;
    std::string _report;
    bool _isWorker = false;
    CLI::App* _app = nullptr;
};
