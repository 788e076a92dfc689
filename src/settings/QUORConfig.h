// SPDX-License-Identifier: MIT
#pragma once

#include "QUORGuardedSettings.h"

#include <QObject>
#include <QSettings>
#include <QString>

#include <mutex>

/// Hands out the main settings file to one thread at a time, names its groups and keys, and can redirect
/// the user's settings to another user's directory. The instance is made on the main thread at start-up.
class QUORConfig : public QObject {
    Q_OBJECT

public:
    static const QString VALUE_DEFAULT;
    static const QString VALUE_CUSTOM;
    static const QString GENERAL_GROUP;
    static const QString GENERAL_CLOCK;
    static const QString GENERAL_UNITS;
    static const QString GENERAL_LATLON_UNITS;
    static const QString GENERAL_GEOLAYER_URL;
    static const QString GENERAL_DATA3D_URL;
    static const QString GENERAL_DATA2D_URL;
    static const QString GENERAL_VERTICALSCALING;
    static const QString PRODUCT_GROUP;
    static const QString PRODUCT_RENDERING_TYPE;
    static const QString PRODUCT_SURFACE_ARRAY;
    static const QString PRODUCT_SURFACE_VALUE;
    static const QString PRODUCT_SURFACE_OPACITY;
    static const QString PRODUCT_VOLUME_VALUE_LOW;
    static const QString PRODUCT_VOLUME_OPACITY_LOW;
    static const QString PRODUCT_VOLUME_VALUE_HIGH;
    static const QString PRODUCT_VOLUME_OPACITY_HIGH;
    static const QString HELP_GROUP;
    static const QString HELP_COMMAND;
    static const QString HELP_FILE;
    static const QString DIALOG_GROUP;
    static const QString DIALOG_MAINWINDOW_POS;
    static const QString DIALOG_CURSORTOOL_POS;
    static const QString DIALOG_CURSORTOOL_EXPANDED;
    static const QString DIALOG_PRODUCTINFO_POS;
    static const QString DIALOG_PRODUCTINFO_EXPANDED;
    static const QString DIALOG_EXTRAWIN_POS;
    static const QString DISPLAY_STATE_GROUP;
    static const QString DISPLAY_STATE_ARRAY;
    static const QString DISPLAY_STATE_NAME;
    static const QString DISPLAY_STATE_LAYER_VISIBLE;
    static const QString DISPLAY_STATE_LAYER_OPACITY;
    static const QString VIEW_ANGLE_GROUP;
    static const QString VIEW_ANGLE_ARRAY;
    static const QString VIEW_ANGLE_NAME;
    static const QString VIEW_ANGLE_CAMPOS_X;
    static const QString VIEW_ANGLE_CAMPOS_Y;
    static const QString VIEW_ANGLE_CAMPOS_Z;
    static const QString VIEW_ANGLE_CAMDIR_X;
    static const QString VIEW_ANGLE_CAMDIR_Y;
    static const QString VIEW_ANGLE_CAMDIR_Z;

    static QUORConfig* instance();
    static void destroy();

    /// Locks and returns a fresh object for the main settings file, or what was read last of it while it is
    /// damaged, and nothing can be saved; blocks while another thread holds it. A thread that holds it gets
    /// the same object again: records loaded under one hold come from one reading of the file. Every `get` is
    /// followed by one `release`, see Access.
    QSettings* get();
    /// Whether the file was damaged at the last `get`.
    bool isDamaged();
    /// The last one deletes the object, which writes its pending changes, and unlocks.
    void release();

    /// The base directory of user-scope settings, up to and including ".config"; empty when the main
    /// settings file does not lie in such a directory.
    static QString getSettingsPath();
    /// Copies the main settings file into a directory; may take up to 30 seconds.
    bool copy(const QString& targetDirectory);
    /// Redirects the user's settings of the whole process; no other thread may read settings meanwhile.
    static void changeUser(const QString& user);
    static void restoreUser();

    /// The name of the built-in display state and view angle as a user sees it.
    static QString defaultValueTranslated();
    /// Whether a name means the built-in one: the plain text or its translation.
    static bool isDefaultName(const QString& name);

    /// Holds the main settings file for a scope.
    class Access {
    public:
        Access() : _settings(instance()->get()) {}
        ~Access() { instance()->release(); }
        Access(const Access&) = delete;
        Access& operator=(const Access&) = delete;
        QSettings& operator*() const { return *_settings; }

    private:
        QSettings* _settings;
    };

private:
    QUORConfig() = default;

    static QUORConfig* _instance;

    QUORGuardedSettings _settings{GENERAL_GROUP, QUORGuardedSettings::Group::Optional};
    QSettings* _open = nullptr;  ///< for as long as somebody holds it
    std::recursive_mutex _mutex; // one that the thread sanitizer sees
    QString _rememberedPath;
};
