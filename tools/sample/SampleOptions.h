// SPDX-License-Identifier: MIT
#pragma once

#include "ProductWriter.h"

#include <QString>
#include <QStringList>

#include <cstdint>

/// What the command line of quor3d-sample asks for.
struct SampleOptions {
    enum class Command { Products, Terrain, Landmarks };

    /// `arguments` begin with the program's name. Where they are wrong, `error` says why in one line and the
    /// rest does not count.
    static SampleOptions parse(const QStringList& arguments);
    static QString helpText();

    QString error;
    bool help = false;
    Command command = Command::Products;
    QString output = QStringLiteral(".");
    /// Site, place, time of the first step and grid; the radar stands in the middle.
    SampleProduct frame;
    int steps = 1;
    std::uint32_t seed = 1;
};
