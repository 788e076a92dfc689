// SPDX-License-Identifier: MIT
#include "QUORSettingsEditor.h"

#include "QUORBackgroundSettings.h"
#include "QUORSettingsReader.h"
#include "QUORSettingsWriter.h"
#include "QUORSystem.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QSettings>

#include <algorithm>

namespace {

const QString SIZE = QStringLiteral("size");

QUORSettingsWriter::Value toValue(const QUORSettingsSearch::Target& target, const QString& text) {
    if (target.row != nullptr && target.row->type == QUORSettingsKey::Type::Flag) {
        return QUORSettingsReader::toBool(text).value_or(false);
    }
    return text;
}

/// An array comes from one file: the first element in the user's one would hide the packaged ones.
void copyPackaged(const QString& fileName, QUORSettingsWriter& writer,
                  const QUORSettingsSearch::Target& target, const QString& array, int& size) {
    QSettings packaged(QSettings::NativeFormat, QSettings::SystemScope, QUORSystem::ORGANIZATION_NAME,
                       QFileInfo(fileName).completeBaseName());
    packaged.beginGroup(target.group + QLatin1Char('/') + array);
    const QStringList keys = packaged.allKeys();
    packaged.endGroup();
    QUORSettingsReader reader(packaged);
    reader.beginGroup(target.group);
    for (const QString& key : keys) {
        const QString path = array + QLatin1Char('/') + key;
        if (key == SIZE) {
            size = QUORSettingsReader::toInt(reader.findText(path).value_or(QString())).value_or(0);
        } else if (path != target.key) {
            writer.write(path, reader.findText(path).value_or(QString()));
        }
    }
}

/// Stores what makes an element of an array count: the array's size, and its packaged elements.
void writeArray(QSettings& settings, QUORSettingsWriter& writer, const QUORSettingsSearch::Target& target) {
    static const QRegularExpression element(QStringLiteral("^([^/]+)/(\\d{1,9})/"));
    const QRegularExpressionMatch match = element.match(target.key);
    if (!match.hasMatch()) {
        return;
    }
    const QString array = match.captured(1);
    const QString sizeKey = array + QLatin1Char('/') + SIZE;
    QUORSettingsReader reader(settings);
    reader.beginGroup(target.group);
    const std::optional<QString> stored = reader.findText(sizeKey);
    int size = stored ? QUORSettingsReader::toInt(*stored).value_or(0) : 0;
    if (!stored && target.file != QUORSettingsKey::File::Background) {
        copyPackaged(settings.fileName(), writer, target, array, size);
    }
    const bool products = array == QUORBackgroundSettings::PRODUCT_ARRAY;
    const int least =
        products ? int(QUORBackgroundSettings::getAllConfigurations().size()) : match.captured(2).toInt();
    if (!stored || size < least) {
        writer.write(sizeKey, std::max(size, least));
    }
}

} // namespace

namespace QUORSettingsEditor {

bool set(const QString& fileName, const QUORSettingsSearch::Target& target, const QString& value) {
    QSettings settings(fileName, QSettings::NativeFormat);
    QUORSettingsWriter writer(settings, target.group);
    writeArray(settings, writer, target);
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
