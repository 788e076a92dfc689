// SPDX-License-Identifier: MIT
#pragma once

/// Prints the failed expression, the source file and the function to the log and to standard error.
/// Ends the process when `fatal` is set.
void quorAssertionFailed(const char* expression, const char* file, const char* function, bool fatal);

/// For programming errors only: ends the process when the expression is false, in every build type.
#define QUOR_ASSERT(expression)                                                                              \
    (static_cast<bool>(expression)                                                                           \
         ? static_cast<void>(0)                                                                              \
         : quorAssertionFailed(#expression, __FILE__, static_cast<const char*>(__func__), true))

/// For what a file, a disk, a setting or a race with a deleting process can cause: prints the same
/// text and yields false, so that the caller fails the operation and the service goes on.
#define QUOR_VERIFY(expression)                                                                              \
    (static_cast<bool>(expression)                                                                           \
         ? true                                                                                              \
         : (quorAssertionFailed(#expression, __FILE__, static_cast<const char*>(__func__), false), false))
