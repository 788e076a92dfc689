// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDisplayState.h"
#include "QUORViewAngle.h"
#include "QUORViewGeometry.h"

#include <QStringList>

#include <optional>

/// The presets in the settings file that the service reads. One name stands for a view angle, a display state
/// or both. The file is read anew for each operation, so that what others have stored meanwhile stays, and
/// appears whole.
namespace QUORViewerPresets {

struct Preset {
    std::optional<QUORViewGeometry::View> view;
    std::optional<QUORViewAngle::Fit> fit; ///< in place of the view, of one that fits every product
    QUORDisplayState::Ptr state;           ///< null when only a view has the name
};

enum class Result { Done, NoSuchName, NameTaken, BadName, NotStored };

/// Views first, then the states without one.
QStringList getNames();
Preset find(const QString& name);
/// Stores both under the name, in place of what has it.
Result save(const QString& name, const QUORViewGeometry::View& view, const QUORDisplayState& state);
Result rename(const QString& name, const QString& newName);
Result remove(const QString& name);

} // namespace QUORViewerPresets
