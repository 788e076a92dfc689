// SPDX-License-Identifier: MIT
#pragma once

class QThread;

namespace QUORThreadStart {

/// Starts a thread with the inherited priority. Throws std::runtime_error, which names it, when the system
/// has none left for this user or process: a service without one of its threads would look alive and never
/// answer.
void start(QThread& thread, const char* name);

} // namespace QUORThreadStart
