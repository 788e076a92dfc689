// SPDX-License-Identifier: MIT
#include "InfoCommand.h"

#include "ProductReport.h"
#include "QUOR2DTop.h"
#include "QUORBackgroundSettings.h"
#include "QUORGeneralSettings.h"
#include "ToolApplication.h"

#include <CLI/CLI.hpp>

#include <iostream>

std::string InfoCommand::examples() const {
    return "  quor3d info /data/products/3d/*          what they are\n"
           "  quor3d info FILE --pair /data/products/2d which 2D product a volume is drawn with\n"
           "  quor3d info FILE --json\n"
           "The 2D product and the time window are those of the settings. Exit status 1 when a file cannot "
           "be drawn.\n";
}

void InfoCommand::addOptions(CLI::App& app) {
    app.add_option("FILE", _files, "Product files")->required()->type_name("");
    app.add_option("--pair", _directory2d, "A directory of 2D products (default: the configured one)")
        ->type_name("DIR");
    app.add_option("--product", _product2d, "The 2D product to look for (default: the configured one)")
        ->type_name("NAME");
    _json.addOption(app);
}

ExitStatus InfoCommand::run() {
    const ToolApplication application;
    const QUORGeneralSettings general;
    const QUORBackgroundSettings background;
    const QString directory =
        _directory2d.empty() ? general.get2DDir() : QString::fromStdString(_directory2d);
    std::unique_ptr<QUOR2DTop> top; // reads a directory once, for the first volume
    bool good = true;
    QJsonArray reports;
    for (const std::string& name : _files) {
        const QString path = QString::fromStdString(name);
        ProductReport report(path);
        const QUORFile file(path);
        if (file.getDimensions() == 3 && !directory.isEmpty()) {
            const QString configured = background.get2DProduct(file.getConfiguration());
            const QString product = _product2d.empty() ? configured : QString::fromStdString(_product2d);
            top = top ? std::move(top) : std::make_unique<QUOR2DTop>(directory);
            report.pair(*top, QUORBackgroundSettings::isNoProduct(product) ? QString() : product,
                        general.getTimeWindow());
        }
        good = good && report.isGood();
        if (_json.isWanted()) {
            reports.append(report.toJson());
        } else {
            report.print();
        }
    }
    if (_json.isWanted()) {
        JsonOutput::print(reports);
    }
    return good ? ExitStatus::Success : ExitStatus::Found;
}
