// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>
#include <QTemporaryDir>

/// Sends the log to a file of its own at debug level while it lives, and reads it back.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// The lines so far, without their timestamps.
    QStringList lines() const;
    /// How many lines contain the text.
    int count(const QString& text) const;
    bool contains(const QString& text) const { return count(text) > 0; }
    /// Waits until a line contains the text; false after the deadline. Delivers posted events meanwhile.
    bool waitFor(const QString& text, int milliseconds = 10000) const;
    void clear();

private:
    QTemporaryDir _dir;
    int _previousLevel;
};
