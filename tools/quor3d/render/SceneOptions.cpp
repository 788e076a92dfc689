// SPDX-License-Identifier: MIT
#include "SceneOptions.h"

#include "QUORBackgroundSettings.h"
#include "RenderSettings.h"

#include <CLI/CLI.hpp>

#include <QFileInfo>
#include <QRegularExpression>

namespace {

constexpr int LARGEST_SIDE = 16384;

} // namespace

void SceneOptions::addTo(CLI::App& app) {
    app.add_option("--size", _size, "WIDTHxHEIGHT in pixels; that of the settings without it.");
    app.add_option("--with", _with,
                   "The 2D product under the scene: a file, auto (what the service would take) or none.")
        ->capture_default_str();
    app.add_option("--terrain", _terrain,
                   "The folder of the terrain tiles, in place of that of the settings.");
    app.add_option("--set", _set, "KEY=VALUE or GROUP/KEY=VALUE over the settings, which stay as they are.")
        ->take_all()
        ->expected(1);
}

QString SceneOptions::applySettings(const QString& folder) const {
    const RenderSettings settings(folder);
    QString problem = settings.copyUsers();
    for (const std::string& assignment : _set) {
        if (problem.isEmpty()) {
            problem = settings.set(QString::fromStdString(assignment));
        }
    }
    if (problem.isEmpty() && !_terrain.empty()) {
        problem = settings.set(QStringLiteral("GENERAL/geolayer=") +
                               QFileInfo(QString::fromStdString(_terrain)).absoluteFilePath());
    }
    settings.apply();
    return problem;
}

QString SceneOptions::findProblem() {
    if (getWith() != QString::fromStdString(_with) && !QFileInfo::exists(getWith())) {
        return QStringLiteral("--with ") + getWith() + QStringLiteral(": there is no such file");
    }
    const QUORBackgroundSettings background;
    _pixels = {background.getWidth(), background.getHeight()};
    if (_size.empty()) {
        return {};
    }
    static const QRegularExpression form(QStringLiteral("^([0-9]{1,5})x([0-9]{1,5})$"));
    const auto match = form.match(QString::fromStdString(_size));
    _pixels = {match.captured(1).toInt(), match.captured(2).toInt()};
    const bool isGood = std::min(_pixels.width(), _pixels.height()) >= 1 &&
                        std::max(_pixels.width(), _pixels.height()) <= LARGEST_SIDE;
    return isGood ? QString()
                  : QStringLiteral("--size %1: WIDTHxHEIGHT is wanted, each from 1 to %2")
                        .arg(QString::fromStdString(_size))
                        .arg(LARGEST_SIDE);
}

QString SceneOptions::getWith() const {
    const QString with = QString::fromStdString(_with);
    return _with == "auto" || _with == "none" ? with : QFileInfo(with).absoluteFilePath();
}
