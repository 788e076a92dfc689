// SPDX-License-Identifier: MIT
#include "QUORCappedLines.h"

#include "QUORLog.h"

namespace {

constexpr int MOST_LINES = 20;

} // namespace

void QUORCappedLines::log(const QString& name) {
    if (_lines < MOST_LINES) {
        ++_lines;
        logWarning(_text + name);
    } else {
        ++_rest;
    }
}

void QUORCappedLines::endInterval() {
    if (_rest > 0) {
        logWarning(_text + QString::number(_rest) + QStringLiteral(" more files"));
    }
    _lines = _rest = 0;
}

void QUORCappedLines::log(const QString& text, const QStringList& names) {
    QUORCappedLines lines(text);
    for (const QString& name : names) {
        lines.log(name);
    }
    lines.endInterval();
}
