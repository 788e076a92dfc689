// SPDX-License-Identifier: MIT
#include "UnsetCommand.h"

#include "QUORLog.h"
#include "QUORSettingsEditor.h"
#include "QUORSettingsInForce.h"
#include "SettingNames.h"
#include "ToolApplication.h"

#include <CLI/CLI.hpp>

#include <iostream>

std::string UnsetCommand::examples() const {
    return "  quor3d unset timewindow\n"
           "  quor3d unset BACKGROUND/width\n";
}

void UnsetCommand::addOptions(CLI::App& app) {
    app.add_option("KEY", _key, "A key, or GROUP/KEY")->required()->type_name("");
    _user.addOption(app);
}

ExitStatus UnsetCommand::run() {
    const ToolApplication application;
    const auto target = SettingNames::find(_key);
    if (!target) {
        return ExitStatus::WrongUse;
    }
    QString file;
    _user.becomeToChange([&] { return file = QUORSettingsInForce::getFiles(target->file).constFirst(); });
    QUORLog::Instance().logOpen({});
    if (!QUORSettingsEditor::unset(file, *target)) {
        return ExitStatus::Found;
    }
    const QUORSettingsInForce::Value value = QUORSettingsInForce::find(*target);
    std::cout << target->path().toStdString() << '=' << value.text.toStdString()
              << (value.source == QUORSettingsInForce::Source::Packaged ? " (packaged)" : " (built in)")
              << '\n';
    return ExitStatus::Success;
}
