// SPDX-License-Identifier: MIT
#include "QUORSettingsEditor.h"

#include "QUORBackgroundSettings.h"
#include "QUORSettingsReader.h"
#include "QUORSettingsWriter.h"

#include <QRegularExpression>
#include <QSettings>

#include <algorithm>

namespace {

QUORSettingsWriter::Value toValue(const QUORSettingsSearch::Target& target, const QString& text) {
    if (target.row != nullptr && target.row->type == QUORSettingsKey::Type::Flag) {
        return QUORSettingsReader::toBool(text).value_or(false);
    }
    return text;
}

/// Stores the size of the array that an element belongs to, so that the element counts.
void writeSize(QSettings& settings, QUORSettingsWriter& writer, const QUORSettingsSearch::Target& target) {
    static const QRegularExpression element(QStringLiteral("^([^/]+)/(\\d{1,9})/"));
    const QRegularExpressionMatch match = element.match(target.key);
    if (!match.hasMatch()) {
        return;
    }
    const QString size = match.captured(1) + QStringLiteral("/size");
    QUORSettingsReader reader(settings);
    reader.beginGroup(target.group);
    const int stored = QUORSettingsReader::toInt(reader.findText(size).value_or(QString())).value_or(0);
    const bool products = match.captured(1) == QUORBackgroundSettings::PRODUCT_ARRAY;
    const int least = products ? int(QUORBackgroundSettings::getAllConfigurations().size()) : match.captured(2).toInt();
    if (stored < least) {
        writer.write(size, least);
    }
}

} // namespace

namespace QUORSettingsEditor {

bool set(const QString& fileName, const QUORSettingsSearch::Target& target, const QString& value) {
    QSettings settings(fileName, QSettings::NativeFormat);
    QUORSettingsWriter writer(settings, target.group);
    writeSize(settings, writer, target);
    writer.write(target.key, toValue(target, value));
    return writer.commit();
}

bool unset(const QString& fileName, const QUORSettingsSearch::Target& target) {
    QSettings settings(fileName, QSettings::NativeFormat);
    QUORSettingsWriter writer(settings, target.group);
    writer.remove(target.key);
    return writer.commit();
}

} // namespace QUORSettingsEditor
