// SPDX-License-Identifier: MIT
#include "QUORSettingsValue.h"

#include "QUORSettingsReader.h"

#include <QStringList>

#include <optional>

namespace {

using Type = QUORSettingsKey::Type;

constexpr double UNBOUNDED = std::numeric_limits<double>::max();
constexpr double LARGEST_WHOLE = std::numeric_limits<int>::max();

QStringList getChoices(const QUORSettingsKey& key) {
    return QString::fromUtf8(key.choices.data(), qsizetype(key.choices.size())).split(QLatin1Char('|'));
}

bool isBounded(const QUORSettingsKey& key, double bound) {
    return bound > -UNBOUNDED && bound < UNBOUNDED &&
           (key.type != Type::Whole || (bound >= -LARGEST_WHOLE && bound < LARGEST_WHOLE));
}

QString findNumberProblem(const QUORSettingsKey& key, const QString& text) {
    std::optional<double> value = QUORSettingsReader::toDouble(text);
    if (key.type == Type::Whole) {
        const std::optional<int> whole = QUORSettingsReader::toInt(text);
        value = whole ? std::optional(double(*whole)) : std::nullopt;
    }
    if (!value) {
        return key.type == Type::Whole ? QStringLiteral("is not a whole number")
                                       : QStringLiteral("is not a number");
    }
    return *value < key.minimum || *value > key.maximum
               ? QStringLiteral("is out of range, which is ") + QUORSettingsValue::describeRange(key)
               : QString();
}

} // namespace

namespace QUORSettingsValue {

QString describeType(const QUORSettingsKey& key) {
    switch (key.type) {
    case Type::Flag:
        return QStringLiteral("bool");
    case Type::Whole:
        return QStringLiteral("int");
    case Type::Number:
        return QStringLiteral("double");
    case Type::Color:
        return QStringLiteral("colour");
    case Type::Text:
    case Type::Choice:
    case Type::Directory:
        break;
    }
    return QStringLiteral("text");
}

QString describeDefault(const QUORSettingsKey& key) {
    if (!key.computed.empty()) {
        return QString::fromUtf8(key.computed.data(), qsizetype(key.computed.size()));
    }
    QStringList components;
    switch (key.type) {
    case Type::Flag:
        return key.flag() ? QStringLiteral("true") : QStringLiteral("false");
    case Type::Whole:
    case Type::Number:
        return QString::number(key.number[0], 'g', 15);
    case Type::Color:
        for (const double component : key.number) {
            components.append(QString::number(component));
        }
        return components.join(QStringLiteral(", "));
    case Type::Text:
    case Type::Choice:
    case Type::Directory:
        break;
    }
    return key.defaultText();
}

QString describeRange(const QUORSettingsKey& key) {
    if (key.type == Type::Choice) {
        QStringList choices = getChoices(key);
        const QString last = choices.takeLast();
        return choices.join(QStringLiteral(", ")) + QStringLiteral(" or ") + last;
    }
    const QString minimum = QString::number(key.minimum, 'g', 15);
    const QString maximum = QString::number(key.maximum, 'g', 15);
    if (isBounded(key, key.minimum) && isBounded(key, key.maximum)) {
        return minimum + QStringLiteral(" to ") + maximum;
    }
    return isBounded(key, key.minimum) ? minimum + QStringLiteral(" or more") : QString();
}

QString findProblem(const QUORSettingsKey& key, const QString& text) {
    switch (key.type) {
    case Type::Flag:
        return QUORSettingsReader::toBool(text) ? QString() : QStringLiteral("is neither true nor false");
    case Type::Whole:
    case Type::Number:
    case Type::Color:
        return findNumberProblem(key, text);
    case Type::Choice:
        return getChoices(key).contains(text) ? QString() : QStringLiteral("is not ") + describeRange(key);
    case Type::Text:
    case Type::Directory:
        break;
    }
    return {};
}

} // namespace QUORSettingsValue
