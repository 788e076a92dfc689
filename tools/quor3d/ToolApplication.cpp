// SPDX-License-Identifier: MIT
#include "ToolApplication.h"

#include <QCoreApplication>

ToolApplication::ToolApplication() {
    static int count = 1;
    static char name[] = "quor3d";
    static char* arguments[] = {name, nullptr};
    // The tests bring their own.
    if (QCoreApplication::instance() == nullptr) {
        _application = std::make_unique<QCoreApplication>(count, arguments);
    }
    QCoreApplication::setApplicationName(QStringLiteral("QUOR3D"));
}

ToolApplication::~ToolApplication() = default;
