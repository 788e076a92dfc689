// SPDX-License-Identifier: MIT
#include "PresetNames.h"

#include "QUORConfig.h"
#include "QUORSettingsSearch.h"

#include <iostream>

namespace PresetNames {

void reportMissing(const QString& name, const QStringList& known) {
    const QString near = QUORSettingsSearch::nearest(name, known);
    std::cerr << "quor3d: there is no \"" << name.toStdString() << '"';
    if (known.isEmpty()) {
        std::cerr << ", the list is empty\n";
    } else {
        std::cerr << (near.isEmpty() ? ", known: " + known.join(QStringLiteral(", ")).toStdString()
                                     : ", did you mean \"" + near.toStdString() + "\"?")
                  << '\n';
    }
}

void reportTaken(const QString& name) {
    std::cerr << "quor3d: there is \"" << name.toStdString() << "\" already, remove it first\n";
}

bool isUsable(const QString& name) {
    if (name.trimmed().isEmpty() || QUORConfig::isDefaultName(name) || name == QUORConfig::VALUE_CUSTOM) {
        std::cerr << "quor3d: \"" << name.toStdString() << "\" is no name for a preset\n";
        return false;
    }
    return true;
}

} // namespace PresetNames
