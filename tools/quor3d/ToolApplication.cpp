// SPDX-License-Identifier: MIT
#include "ToolApplication.h"

#include <QGuiApplication>
#include <QLoggingCategory>

ToolApplication::ToolApplication(Kind kind) {
    static int count = 1;
    static char name[] = "quor3d";
    static char* arguments[] = {name, nullptr};
    // The tests bring their own.
    if (QCoreApplication::instance() == nullptr) {
        if (kind == Drawing) {
            qputenv("QT_QPA_PLATFORM", "offscreen");
            // Nothing is kept there, and its absence is no concern of whoever wants a picture.
            QLoggingCategory::setFilterRules(QStringLiteral("*.warning=false"));
            _application = std::make_unique<QGuiApplication>(count, arguments);
        } else {
            _application = std::make_unique<QCoreApplication>(count, arguments);
        }
    }
    QCoreApplication::setApplicationName(QStringLiteral("QUOR3D"));
}

ToolApplication::~ToolApplication() = default;
