// SPDX-License-Identifier: MIT
#pragma once

#include "SceneOptions.h"
#include "Subcommand.h"

#include <QSize>
#include <QStringList>

class LoopEncoder;

/// `quor3d loop`: a moving picture of the last pictures in a folder, or of a flight round one scene.
class LoopCommand : public Subcommand {
public:
    std::string name() const override { return "loop"; }
    std::string summary() const override {
        return "Make a moving picture of the last pictures, or of a flight round a scene.";
    }
    std::string examples() const override;
    void addOptions(CLI::App& app) override;
    ExitStatus run() override;

private:
    ExitStatus loopPictures() const;
    ExitStatus fly();
    ExitStatus encode(const QStringList& frames, double dwell) const;
    QSize frameSize(const QSize& picture) const;

    std::string _source;
    std::string _output;
    std::string _site;
    std::string _configuration;
    std::string _view;
    int _last = 24;
    int _step = 0;
    double _rate = 6.0;
    double _dwell = 1.0;
    int _width = 0;
    int _quality = 75;
    bool _isOrbit = false;
    int _frames = 120;
    double _pitch = 25.0;
    double _distance = 0.0;
    int _jobs = 1;
    SceneOptions _scene;
};
