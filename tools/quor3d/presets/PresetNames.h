// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>

#include <memory>

/// What the lists of named presets have in common.
namespace PresetNames {

/// Null, after a message that names the nearest one, when the list has no preset of that name.
template <class Preset>
std::shared_ptr<Preset> find(const QList<std::shared_ptr<Preset>>& presets, const QString& name);

/// Whether a new preset may have that name; a message says why not.
template <class Preset>
bool isFree(const QList<std::shared_ptr<Preset>>& presets, const QString& name);

void reportMissing(const QString& name, const QStringList& known);
void reportTaken(const QString& name);
/// Whether a name can be told from the built-in ones; a message says why not.
bool isUsable(const QString& name);

template <class Preset>
std::shared_ptr<Preset> find(const QList<std::shared_ptr<Preset>>& presets, const QString& name) {
    QStringList known;
    for (const auto& preset : presets) {
        if (preset->getName() == name) {
            return preset;
        }
        known.append(preset->getName());
    }
    reportMissing(name, known);
    return nullptr;
}

template <class Preset>
bool isFree(const QList<std::shared_ptr<Preset>>& presets, const QString& name) {
    if (!isUsable(name)) {
        return false;
    }
    for (const auto& preset : presets) {
        if (preset->getName() == name) {
            reportTaken(name);
            return false;
        }
    }
    return true;
}

} // namespace PresetNames
