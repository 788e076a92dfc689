// SPDX-License-Identifier: MIT
#include "QUORCfTime.h"

#include "QUORNetcdfFile.h"

#include <QRegularExpression>

#include <cmath>

QDateTime QUORCfTime::parse(const QString& text) {
    static const QRegularExpression pattern(
        QStringLiteral("(\\d{4})-(\\d{1,2})-(\\d{1,2})(?:[T ]+(\\d{1,2}):(\\d{2})(?::(\\d{2}))?)?"));
    const QRegularExpressionMatch match = pattern.match(text);
    const auto number = [&match](int part) { return match.captured(part).toInt(); };
    const QDate date(number(1), number(2), number(3));
    const QTime time(number(4), number(5), number(6));
    return match.hasMatch() && date.isValid() && time.isValid() ? QDateTime(date, time, Qt::UTC)
                                                                : QDateTime();
}

QDateTime QUORCfTime::first(const QUORNetcdfGroup& group, const char* variable) {
    const auto found = group.findVariable(variable);
    const auto value = found ? group.findNumber(variable) : std::nullopt;
    if (!value || std::abs(*value) > 1e12) {
        return {};
    }
    const QString unit = found->text("units");
    const double seconds = unit.startsWith(QLatin1String("min"))    ? 60.0
                           : unit.startsWith(QLatin1String("hour")) ? 3600.0
                           : unit.startsWith(QLatin1String("day"))  ? 86400.0
                                                                    : 1.0;
    const QDateTime epoch = parse(unit);
    return epoch.isValid() ? epoch.addMSecs(std::llround(*value * seconds * 1000.0)) : epoch;
}
