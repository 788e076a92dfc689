// SPDX-License-Identifier: MIT
#include "QUORExportSettings.h"

#include "QUORConfig.h"
#include "QUORSettingsReader.h"
#include "QUORSettingsWriter.h"

#include <QFileInfo>

const QString QUORExportSettings::GROUP = QStringLiteral("EXPORT");
const QString QUORExportSettings::COLOR_BAR = QStringLiteral("colorbar");
const QString QUORExportSettings::LEGEND = QStringLiteral("legend");
const QString QUORExportSettings::COMPASS = QStringLiteral("compass");
const QString QUORExportSettings::HEIGHT = QStringLiteral("height");
const QString QUORExportSettings::WIDTH = QStringLiteral("width");
const QString QUORExportSettings::OUTPUT_FORMAT = QStringLiteral("outputformat");
const QString QUORExportSettings::OUTPUT_PATH = QStringLiteral("outputpath");

namespace {

struct FormatRow {
    QUORExportSettings::OutputFormat format;
    const char* name;
    const char* extension;
};

constexpr FormatRow FORMATS[] = {
    {QUORExportSettings::Tiff, "TIFF", "tiff"},
    {QUORExportSettings::Png, "PNG", "png"},
    {QUORExportSettings::Jpeg, "JPEG", "jpg"},
};

const FormatRow* findFormat(int format) {
    for (const FormatRow& row : FORMATS) {
        if (row.format == format) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace

QUORExportSettings::QUORExportSettings() {
    load();
}

void QUORExportSettings::load() {
    const QUORConfig::Access settings;
    QUORSettingsReader reader(*settings);
    reader.beginGroup(GROUP);
    _colorBar = reader.readBool(COLOR_BAR, true);
    _legend = reader.readBool(LEGEND, true);
    _compass = reader.readBool(COMPASS, true);
    _height = reader.readInt(HEIGHT, 0, 0, MAXIMUM_IMAGE_SIDE);
    _width = reader.readInt(WIDTH, 0, 0, MAXIMUM_IMAGE_SIDE);
    _outputFormat = getOutputFormatFromString(reader.readText(OUTPUT_FORMAT, getOutputFormatString()));
    _path = reader.readText(OUTPUT_PATH, QStringLiteral("."));
}

void QUORExportSettings::save() const {
    const QUORConfig::Access settings;
    QUORSettingsWriter writer(*settings, GROUP);
    writer.write(COLOR_BAR, _colorBar);
    writer.write(LEGEND, _legend);
    writer.write(COMPASS, _compass);
    writer.write(HEIGHT, _height);
    writer.write(WIDTH, _width);
    writer.write(OUTPUT_FORMAT, getOutputFormatString());
    writer.write(OUTPUT_PATH, _path);
    writer.commit();
}

void QUORExportSettings::reset() {
    _colorBar = true;
    _legend = true;
    _compass = true;
    _height = 0;
    _width = 0;
    _outputFormat = Tiff;
}

void QUORExportSettings::setPath(const QString& path) {
    _path = QFileInfo(path).absolutePath();
}

QString QUORExportSettings::getOutputFormatString(int format) {
    const FormatRow* row = findFormat(format);
    return row != nullptr ? QString::fromLatin1(row->name) : QString();
}

QString QUORExportSettings::getOutputFileExtension(int format) {
    const FormatRow* row = findFormat(format);
    return QLatin1Char('.') + (row != nullptr ? QString::fromLatin1(row->extension) : QString());
}

QString QUORExportSettings::getDefaultOutputFormatString() {
    return getOutputFormatString(Tiff);
}

QUORExportSettings::OutputFormat QUORExportSettings::getOutputFormatFromString(const QString& text) {
    for (const FormatRow& row : FORMATS) {
        if (text == QLatin1String(row.name)) {
            return row.format;
        }
    }
    return UnknownFormat;
}

QStringList QUORExportSettings::getSupportedOutputFormats() {
    QStringList names;
    for (const FormatRow& row : FORMATS) {
        names.append(QString::fromLatin1(row.name));
    }
    return names;
}

QStringList QUORExportSettings::getImageSizePresets() {
    return {QStringLiteral("1900x1200"), QStringLiteral("1600x1200"), QStringLiteral("1280x768"),
            QStringLiteral("1024x768")};
}
