// SPDX-License-Identifier: MIT
#include "Terminal.h"

#include <cstdlib>
#include <unistd.h>

namespace Terminal {

std::string paint(Color color, const std::string& text) {
    static const bool colored = ::isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr;
    if (!colored) {
        return text;
    }
    const char* code = "1";
    switch (color) {
    case Color::Red:
        code = "31";
        break;
    case Color::Yellow:
        code = "33";
        break;
    case Color::Dim:
        code = "2";
        break;
    case Color::Bold:
        break;
    }
    return std::string("\033[") + code + "m" + text + "\033[0m";
}

} // namespace Terminal
