// SPDX-License-Identifier: MIT
#pragma once

#include "QUORSettingsSearch.h"

#include <QString>

/// Changes single keys of a settings file by hand, through the writer that the programs save with: comments
/// and order stay, the file appears whole, and one that cannot be understood is left alone.
namespace QUORSettingsEditor {

/// Stores a value that the table allows; of an array's element also the array's size, and its packaged
/// elements, where the file has none of it.
/// False, with an error line in the log, when it could not be stored.
bool set(const QString& fileName, const QUORSettingsSearch::Target& target, const QString& value);
/// Removes the key, so that the packaged value or the default counts. True when it was not there.
bool unset(const QString& fileName, const QUORSettingsSearch::Target& target);

} // namespace QUORSettingsEditor
