// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

/// The options that a program knows and the arguments that it was given. An option is one or two dashes and
/// a name of the letters a to z, "|" and "_"; its value follows "=" and ends at white space. Element 0, the
/// program, is never looked at, and words without a dash are ignored.
class QUORCommandLine {
public:
    /// An option that is already known keeps its first help text.
    void addOption(const QString& name, const QString& helpText);
    void setArguments(const QStringList& arguments) { _arguments = arguments; }

    /// The names of the options that are not known, in the order given.
    QStringList findInvalidOptions() const;
    /// Of the first argument with that option name; -1 when there is none.
    int findOption(const QString& name) const;
    /// Of the last argument that gives one; empty when there is none.
    QString findValue(const QString& name) const;

    QString getExeName() const;
    /// The options by name, each on a line of its own.
    QString getHelpText() const;

private:
    QStringList _arguments;
    QMap<QString, QString> _options;
};
