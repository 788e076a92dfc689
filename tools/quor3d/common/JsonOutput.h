// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>

namespace CLI {
class App;
}

/// The `--json` of a subcommand that prints data.
class JsonOutput {
public:
    void addOption(CLI::App& app);
    bool isWanted() const { return _isWanted; }

    static void print(const QJsonObject& object);
    static void print(const QJsonArray& array);

private:
    bool _isWanted = false;
};
