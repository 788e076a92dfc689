// SPDX-License-Identifier: MIT
#pragma once

#include "QUORSettingsKey.h"

#include <QString>

/// What a row of the table says about values, in words, and whether a text is a value of it. The words are
/// those of the settings guide.
namespace QUORSettingsValue {

/// "bool", "int", "double", "text" or "colour".
QString describeType(const QUORSettingsKey& key);
/// As a settings file would hold it, or what it is computed from; empty for none.
QString describeDefault(const QUORSettingsKey& key);
/// Such as "0 or more", "1 to 16384" or "TIFF, PNG or JPEG"; empty where every value of the type counts.
QString describeRange(const QUORSettingsKey& key);

/// What is wrong with a text as the value of a key, or of one component of a colour, as a clause such as
/// "is not a whole number"; empty when it counts as it stands.
QString findProblem(const QUORSettingsKey& key, const QString& text);

} // namespace QUORSettingsValue
