// SPDX-License-Identifier: MIT
#pragma once

#include "QUORConfig.h"
#include "QUORDisplayState.h"
#include "QUORViewAngle.h"

#include <QList>
#include <QStringList>

/// The stored form of the preset lists in the main settings file. Element 0 of each array is the current,
/// unnamed selection, the presets follow in list order. The file is held for each operation.
namespace QUORPresetStore {

/// Appends the stored presets and applies the stored selection to `current`, which keeps its name.
/// Nothing changes without a stored array.
void load(QUORDisplayState& current, QList<QUORDisplayState::Ptr>& presets);
void load(QUORViewAngle& current, QList<QUORViewAngle::Ptr>& presets);

/// False, with an error line in the log, when they could not be stored.
bool save(const QUORDisplayState& current, const QList<QUORDisplayState::Ptr>& presets);
bool save(const QUORViewAngle& current, const QList<QUORViewAngle::Ptr>& presets);

/// The translated name of the built-in one, then those of the presets.
template <class List>
QStringList getNames(const List& presets) {
    QStringList names{QUORConfig::defaultValueTranslated()};
    for (const auto& preset : presets) {
        names.append(preset->getName());
    }
    return names;
}

} // namespace QUORPresetStore
