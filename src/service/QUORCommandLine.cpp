// SPDX-License-Identifier: MIT
#include "QUORCommandLine.h"

#include <QRegularExpression>

#include <optional>

namespace {

constexpr int SHORT_OPTION_LENGTH = 5;

std::optional<QString> optionName(const QString& argument) {
    static const QRegularExpression expression(QStringLiteral("^-{1,2}([a-z|_]*)"));
    const QRegularExpressionMatch match = expression.match(argument);
    return match.hasMatch() ? std::optional(match.captured(1)) : std::nullopt;
}

} // namespace

void QUORCommandLine::addOption(const QString& name, const QString& helpText) {
    if (!_options.contains(name)) {
        _options.insert(name, helpText);
    }
}

QStringList QUORCommandLine::findInvalidOptions() const {
    QStringList invalid;
    for (const QString& argument : _arguments.mid(1)) {
        const std::optional<QString> name = optionName(argument);
        if (name && !_options.contains(*name)) {
            invalid.append(*name);
        }
    }
    return invalid;
}

int QUORCommandLine::findOption(const QString& name) const {
    for (qsizetype i = 1; i < _arguments.size(); ++i) {
        if (optionName(_arguments[i]) == name) {
            return int(i);
        }
    }
    return -1;
}

QString QUORCommandLine::findValue(const QString& name) const {
    static const QRegularExpression expression(QStringLiteral("^-{1,2}([a-z|_]*)=(\\S*)"));
    QString value;
    for (const QString& argument : _arguments.mid(1)) {
        const QRegularExpressionMatch match = expression.match(argument);
        if (match.hasMatch() && match.captured(1) == name) {
            value = match.captured(2);
        }
    }
    return value;
}

QString QUORCommandLine::getExeName() const {
    static const QRegularExpression separator(QStringLiteral("[\\|/]"));
    return _arguments.isEmpty() ? QString() : _arguments.first().split(separator).last();
}

QString QUORCommandLine::getHelpText() const {
    QString text = QStringLiteral("Usage: ") + getExeName() + QStringLiteral(" [options]\nOptions:\n");
    for (auto option = _options.cbegin(); option != _options.cend(); ++option) {
        const QString gap(option.key().size() <= SHORT_OPTION_LENGTH ? 2 : 1, QLatin1Char('\t'));
        text += QStringLiteral("\t--") + option.key() + gap + option.value() + QLatin1Char('\n');
    }
    return text;
}
