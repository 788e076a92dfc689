// SPDX-License-Identifier: MIT
#include "SetCommand.h"

#include "QUORLog.h"
#include "QUORSettingsEditor.h"
#include "QUORSettingsInForce.h"
#include "QUORSettingsValue.h"
#include "SettingNames.h"
#include "ToolApplication.h"

#include <CLI/CLI.hpp>

#include <QDir>
#include <QFileInfo>

#include <iostream>

namespace {

QString findProblem(const QUORSettingsSearch::Target& target, const QString& value) {
    if (target.row == nullptr) {
        return QStringLiteral("is an array's size; it follows from the elements that are set");
    }
    return QUORSettingsValue::findProblem(*target.row, value);
}

} // namespace

std::string SetCommand::examples() const {
    return "  quor3d set data3d /data/products/3d\n"
           "  quor3d set BACKGROUND/directory /data/images\n"
           "  quor3d set outputformat PNG\n"
           "  quor3d set products/4/product '(none)'        no 2D product for Z\n"
           "  quor3d set 'PRODUCT CAPPI Z/surface/1/isovalue' -- 20\n"
           "As root the owner of the file changes it, or the background user, or who is named with --user.\n";
}

void SetCommand::addOptions(CLI::App& app) {
    app.add_option("KEY", _key, "A key, or GROUP/KEY")->required()->type_name("");
    app.add_option("VALUE", _value, "What to store; -- before one that begins with a minus sign")
        ->required()
        ->type_name("");
    _user.addOption(app);
}

ExitStatus SetCommand::run() {
    const ToolApplication application;
    const auto target = SettingNames::find(_key);
    if (!target) {
        return ExitStatus::WrongUse;
    }
    QString value = QString::fromStdString(_value);
    if (const QString problem = findProblem(*target, value); !problem.isEmpty()) {
        std::cerr << "quor3d: \"" << _value << "\" " << problem.toStdString() << '\n';
        return ExitStatus::WrongUse;
    }
    if (target->row->type == QUORSettingsKey::Type::Directory && !value.isEmpty() &&
        !value.startsWith(u'~')) {
        value = QDir::current().absoluteFilePath(value); // the service has another working directory
        value = QDir::cleanPath(value);
    }
    QString file;
    _user.becomeToChange([&] { return file = QUORSettingsInForce::getFiles(target->file).constFirst(); });
    QUORLog::Instance().logOpen({});
    if (!QUORSettingsEditor::set(file, *target, value)) {
        return ExitStatus::Found;
    }
    std::cout << target->path().toStdString() << '=' << value.toStdString() << " in " << file.toStdString()
              << '\n';
    if (target->row->type == QUORSettingsKey::Type::Directory && !value.startsWith(u'~') &&
        !QFileInfo(value).isDir()) {
        std::cerr << "quor3d: " << value.toStdString() << " is no directory yet\n";
    }
    return ExitStatus::Success;
}
