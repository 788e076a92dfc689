// SPDX-License-Identifier: MIT
#pragma once

#include "QUORSettingsSearch.h"

#include <optional>
#include <string>

/// Keys as people type them, for the subcommands that take one.
namespace SettingNames {

/// The key that a text names; nothing, after a message that names the nearest ones, when there is none or
/// more than one.
std::optional<QUORSettingsSearch::Target> find(const std::string& text);

} // namespace SettingNames
