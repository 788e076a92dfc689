// SPDX-License-Identifier: MIT
#pragma once

/// Sends what the libraries would print on standard error (toolkit, VTK, projections) to the log, one line
/// for each message with the name of its library in front. Any thread may cause such a message; a message
/// caused by writing a log line is dropped there.
namespace QUORToolMessages {

/// To be called once, on the main thread, when the log is open.
void install();

} // namespace QUORToolMessages
