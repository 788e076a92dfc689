// SPDX-License-Identifier: MIT
#include "QUORExportSettings.h"

#include "QUORConfig.h"
#include "QUORSettingsReader.h"
#include "QUORSettingsTable.h"
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
    using namespace QUORSettingsTable;
    QUORSettingsReader reader(*settings);
    reader.beginGroup(GROUP);
    _colorBar = readFlag(reader, row("EXPORT", "colorbar"));
    _legend = readFlag(reader, row("EXPORT", "legend"));
    _compass = readFlag(reader, row("EXPORT", "compass"));
    _height = readWhole(reader, row("EXPORT", "height"));
    _width = readWhole(reader, row("EXPORT", "width"));
    _outputFormat = getOutputFormatFromString(readText(reader, row("EXPORT", "outputformat")));
    _path = readText(reader, row("EXPORT", "outputpath"));
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
    using QUORSettingsTable::row;
    _colorBar = row("EXPORT", "colorbar").flag();
    _legend = row("EXPORT", "legend").flag();
    _compass = row("EXPORT", "compass").flag();
    _height = row("EXPORT", "height").whole();
    _width = row("EXPORT", "width").whole();
    _outputFormat = getOutputFormatFromString(row("EXPORT", "outputformat").defaultText());
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
