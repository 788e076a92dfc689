// SPDX-License-Identifier: MIT
#pragma once

#include "QUORExportSettings.h"
#include "QUORSystem.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <memory>

/// What the service renders: output directory, format and size of the images, the presets by name and the
/// 2D product for each kind of 3D product. Kept in a settings file of its own that belongs to a designated
/// background user and is opened by name; what it leaves open a packaged file of its name says, key by key,
/// among the packaged settings of the system. Used by one thread.
class QUORBackgroundSettings {
public:
    using Ptr = std::shared_ptr<QUORBackgroundSettings>;
    using CPtr = std::shared_ptr<const QUORBackgroundSettings>;

    /// Environment variable that names the settings file itself.
    static constexpr auto FILE_VARIABLE = "QUOR3D_BG_SETTINGS";

    static const QString GROUP;
    static const QString ACTIVATED;
    static const QString DIRECTORY;
    static const QString OUTPUT_FORMAT;
    static const QString VIEW_ANGLE;
    static const QString DISPLAY_STATE;
    static const QString HEIGHT;
    static const QString WIDTH;
    static const QString WAIT_2D;
    static const QString PRODUCT_ARRAY;
    static const QString PRODUCT;
    static const QString SITES;
    static const QString VIEW_ARRAY;

    /// How one picture of a scene is seen.
    struct View {
        QString viewAngle;
        QString displayState;
        /// Pixels.
        int width = 0;
        int height = 0;

        bool operator==(const View&) const = default;
    };

    /// Finds the file and loads it.
    QUORBackgroundSettings();

    /// Of a damaged file (see QUORGuardedSettings) what was read last of it whole; of one that has never been
    /// whole what can be read, and the defaults.
    void load();
    /// Whether the last load met a whole file.
    bool isRead() const { return _isRead; }
    /// What becomes of images where the file says nothing, which then go to that folder.
    QString describeDefaults(const QString& folder) const;
    void save() const;
    void reset();
    /// 0 when the file can be opened for reading and writing, which creates it when it is missing; 1 when
    /// it can only be read; 2 otherwise.
    int status() const;

    /// The user named by the system configuration, or the default one, with a warning at every call.
    static QString getBgUsername();
    /// The user that the text of a system configuration file names; empty for none. Comments do not count.
    static QString findBgUser(const QString& configuration);
    static QString getBgHomeDirectory();
    static QString getBgSettingsDirectory();
    /// What FILE_VARIABLE names, or the service's file in the background user's settings directory.
    static QString getBgSettingsFileName();
    static QString getPackagedFileName();
    static QStringList getAllConfigurations();
    static QStringList getAll2DProducts();
    /// Whether a 2D product's name means that none is wanted: the plain text or a translation.
    static bool isNoProduct(const QString& product);

    bool isActivated() const { return _activated; }
    void setActivated(bool on) { _activated = on; }
    /// Of the images; "~" is expanded.
    QString getDirectory() const { return QUORSystem::toPath(_directory); }
    void setDirectory(const QString& directory) { _directory = directory; }
    QUORExportSettings::OutputFormat getOutputFormat() const { return _outputFormat; }
    void setOutputFormat(int format) { _outputFormat = QUORExportSettings::OutputFormat(format); }
    /// The default format's name for an unknown format.
    QString getOutputFormatString() const;
    QString getOutputFileExtension() const;
    /// Pixels, within the sides of an image.
    int getHeight() const { return _height; }
    int getWidth() const { return _width; }
    /// Empty for none; "~" is expanded.
    QString getMetricsFile() const { return QUORSystem::toPath(_metricsFile); }
    /// Seconds after which a job counts as stuck.
    int getJobLimit() const { return _jobLimit; }
    /// Seconds after its arrival at which a 3D product is drawn without its 2D product; negative for never.
    int getWait2D() const { return _wait2d; }
    /// Empty for a configuration that is not known.
    QString get2DProduct(const QString& configuration) const { return _products.value(configuration); }
    void set2DProduct(const QString& configuration, const QString& product);
    /// The built-in preset goes by its translated name; both of its names are stored as "Default".
    QString getDisplayStateName() const;
    void setDisplayStateName(const QString& name);
    QString getViewAngleName() const;
    void setViewAngleName(const QString& name);
    /// The pictures of every product: the one that the settings above describe and the further ones, none
    /// twice.
    QList<View> getViews() const;
    /// Whether products of that site are drawn here; others are left to another service over the same files.
    bool isSiteDrawn(const QString& site) const;
    QString getSettingsFileName() const { return _fileName; }

private:
    void read(class QSettings& settings);
    void readPackaged();
    void readViews(class QUORSettingsReader& reader);
    void readFormat(const class QUORSettingsReader& reader);

    bool _isRead = false;
    bool _activated = false;
    QString _directory;
    QUORExportSettings::OutputFormat _outputFormat = QUORExportSettings::Tiff;
    QString _viewAngleName;
    QString _displayStateName;
    QString _metricsFile;
    int _jobLimit = 0;
    QString _sites;
    int _height = 0;
    int _width = 0;
    int _wait2d = -1;
    QMap<QString, QString> _products;
    /// As stored: empty texts and zeros stand for what the first picture has.
    QList<View> _furtherViews;
    QString _fileName;
};
