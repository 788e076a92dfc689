// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// A pattern for whole names, without case: "*" stands for any text and "?" for any one character, "/"
/// included; every other character stands for itself.
class QUORWildcard {
public:
    explicit QUORWildcard(const QString& pattern);
    /// Matches that very name, whatever characters it holds.
    static QUORWildcard literal(const QString& name);

    bool matches(const QString& name) const;

private:
    QString _pattern;
    bool _isLiteral = false;
};
