// SPDX-License-Identifier: MIT
#pragma once

#include <string>

/// Colours for people: empty texts where standard output is no terminal, or NO_COLOR is set.
namespace Terminal {

enum class Color { Red, Yellow, Dim, Bold };

/// The text in that colour.
std::string paint(Color color, const std::string& text);

} // namespace Terminal
