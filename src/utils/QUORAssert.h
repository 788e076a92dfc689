// SPDX-License-Identifier: MIT
#pragma once

/// Writes the failed expression, the source file and the function to the log, as an error line. When
/// `fatal` is set it also prints them to standard error, and ends the process.
void quorAssertionFailed(const char* expression, const char* file, const char* function, bool fatal);

/// For programming errors only: ends the process when the expression is false, in every build type.
#define QUOR_ASSERT(expression)                                                                              \
    (static_cast<bool>(expression)                                                                           \
         ? static_cast<void>(0)                                                                              \
         : quorAssertionFailed(#expression, __FILE__, static_cast<const char*>(__func__), true))

/// For what a file, a disk, a setting or a race with a deleting process can cause: writes the same line
/// to the log and yields false, so that the caller fails the operation and the service goes on.
#define QUOR_VERIFY(expression)                                                                              \
    (static_cast<bool>(expression)                                                                           \
         ? true                                                                                              \
         : (quorAssertionFailed(#expression, __FILE__, static_cast<const char*>(__func__), false), false))
