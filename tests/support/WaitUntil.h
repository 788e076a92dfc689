// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

/// Delivers events until it is reached; false after the deadline.
bool waitUntil(const std::function<bool()>& reached, int milliseconds = 10000);
