// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

/// A warning for each of many files: 20 lines of an interval, and one more with the number of the rest.
/// Belongs to one thread.
class QUORCappedLines {
public:
    /// What each line begins with.
    explicit QUORCappedLines(QString text) : _text(std::move(text)) {}

    void log(const QString& name);
    /// Writes how many more there were, and begins anew.
    void endInterval();
    /// An interval of its own.
    static void log(const QString& text, const QStringList& names);

private:
    QString _text;
    int _lines = 0;
    int _rest = 0;
};
