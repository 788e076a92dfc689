// SPDX-License-Identifier: MIT
#pragma once

#include "QUORSystem.h"

#include <QString>
#include <QStringList>

#include <memory>

/// Options of image export, kept in the main settings file; and the image formats, which background
/// rendering shares. No lock: an object belongs to one thread.
class QUORExportSettings {
public:
    using Ptr = std::shared_ptr<QUORExportSettings>;
    using CPtr = std::shared_ptr<const QUORExportSettings>;

    /// What an unknown text gives has no name and no extension; images are then written as PNG.
    enum OutputFormat { Tiff = 0, Png = 1, Jpeg = 2, UnknownFormat = 3 };

    /// Pixels of one side of an image.
    static constexpr int MINIMUM_IMAGE_SIDE = 1;
    static constexpr int MAXIMUM_IMAGE_SIDE = 16384;

    static const QString GROUP;
    static const QString COLOR_BAR;
    static const QString LEGEND;
    static const QString COMPASS;
    static const QString HEIGHT;
    static const QString WIDTH;
    static const QString OUTPUT_FORMAT;
    static const QString OUTPUT_PATH;

    QUORExportSettings();
    virtual ~QUORExportSettings() = default;

    void load();
    void save() const;
    /// Back to the defaults, except the path.
    void reset();

    bool isColorBar() const { return _colorBar; }
    void setColorBar(bool on) { _colorBar = on; }
    bool isLegend() const { return _legend; }
    void setLegend(bool on) { _legend = on; }
    bool isCompass() const { return _compass; }
    void setCompass(bool on) { _compass = on; }
    /// Pixels; 0 for none chosen.
    int getHeight() const { return _height; }
    void setHeight(int height) { _height = height; }
    int getWidth() const { return _width; }
    void setWidth(int width) { _width = width; }
    QString getPath() const { return QUORSystem::toPath(_path); }
    /// Keeps the absolute directory of a file's path.
    void setPath(const QString& path);
    OutputFormat getOutputFormat() const { return _outputFormat; }
    void setOutputFormat(int format) { _outputFormat = OutputFormat(format); }
    QString getOutputFormatString() const { return getOutputFormatString(_outputFormat); }
    /// With its leading ".".
    QString getOutputFileExtension() const { return getOutputFileExtension(_outputFormat); }

    static QString getOutputFormatString(int format);
    static QString getOutputFileExtension(int format);
    static QString getDefaultOutputFormatString();
    static OutputFormat getOutputFormatFromString(const QString& text);
    static QStringList getSupportedOutputFormats();
    static QStringList getImageSizePresets();

private:
    bool _colorBar = true;
    bool _legend = true;
    bool _compass = true;
    int _height = 0;
    int _width = 0;
    OutputFormat _outputFormat = Tiff;
    QString _path;
};
