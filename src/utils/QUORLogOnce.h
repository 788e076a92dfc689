// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Lines about a lasting state that is met again at every load or job. A line is logged when its text
/// differs from the last one of the same subject, and again after the subject was forgotten because the
/// state has ended. Any thread may call.
namespace QUORLogOnce {

void logError(const QString& subject, const QString& text);
void logWarning(const QString& subject, const QString& text);
void forget(const QString& subject);

} // namespace QUORLogOnce
