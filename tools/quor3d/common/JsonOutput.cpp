// SPDX-License-Identifier: MIT
#include "JsonOutput.h"

#include <CLI/CLI.hpp>

#include <QJsonDocument>

#include <iostream>

void JsonOutput::addOption(CLI::App& app) {
    app.add_flag("--json", _isWanted, "Print JSON, for scripts");
}

void JsonOutput::print(const QJsonObject& object) {
    std::cout << QJsonDocument(object).toJson(QJsonDocument::Indented).toStdString();
}

void JsonOutput::print(const QJsonArray& array) {
    std::cout << QJsonDocument(array).toJson(QJsonDocument::Indented).toStdString();
}
