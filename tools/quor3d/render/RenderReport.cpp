// SPDX-License-Identifier: MIT
#include "RenderReport.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

RenderReport::RenderReport(const QString& path, bool append) {
    if (path.isEmpty()) {
        return;
    }
    _file.setFileName(path);
    if (!_file.open(QIODevice::WriteOnly | (append ? QIODevice::Append : QIODevice::Truncate))) {
        _error = path + QStringLiteral(": ") + _file.errorString();
    }
}

void RenderReport::add(const QString& input, const QString& output, double seconds, const QString& error) {
    if (!_file.isOpen()) {
        return;
    }
    const auto orNull = [](const QString& text) { return text.isEmpty() ? QJsonValue() : QJsonValue(text); };
    const QJsonObject line{{QStringLiteral("input"), input},
                           {QStringLiteral("output"), orNull(output)},
                           {QStringLiteral("seconds"), std::round(1000.0 * seconds) / 1000.0},
                           {QStringLiteral("error"), orNull(error)}};
    _file.write(QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n');
    _file.flush();
}
