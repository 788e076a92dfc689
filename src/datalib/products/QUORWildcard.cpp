// SPDX-License-Identifier: MIT
#include "QUORWildcard.h"

QUORWildcard::QUORWildcard(const QString& pattern) : _pattern(pattern.toCaseFolded()) {}

QUORWildcard QUORWildcard::literal(const QString& name) {
    QUORWildcard wildcard(name);
    wildcard._isLiteral = true;
    return wildcard;
}

bool QUORWildcard::matches(const QString& name) const {
    if (!_isLiteral && _pattern == QLatin1String("*")) {
        return true;
    }
    const QString text = name.toCaseFolded();
    if (_isLiteral) {
        return text == _pattern;
    }
    qsizetype p = 0;
    qsizetype t = 0;
    qsizetype star = -1;
    qsizetype resume = 0;
    while (t < text.size()) {
        if (p < _pattern.size() && _pattern[p] == QLatin1Char('*')) {
            star = p++;
            resume = t;
        } else if (p < _pattern.size() && (_pattern[p] == QLatin1Char('?') || _pattern[p] == text[t])) {
            ++p;
            ++t;
        } else if (star >= 0) {
            p = star + 1;
            t = ++resume;
        } else {
            return false;
        }
    }
    while (p < _pattern.size() && _pattern[p] == QLatin1Char('*')) {
        ++p;
    }
    return p == _pattern.size();
}
