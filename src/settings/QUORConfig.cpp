// SPDX-License-Identifier: MIT
#include "QUORConfig.h"

#include "QUORLog.h"
#include "QUORSettingsFile.h"
#include "QUORSettingsReader.h"
#include "QUORSystem.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>

const QString QUORConfig::VALUE_DEFAULT = QStringLiteral("Default");
const QString QUORConfig::VALUE_CUSTOM = QStringLiteral("Custom");
const QString QUORConfig::GENERAL_GROUP = QStringLiteral("GENERAL");
const QString QUORConfig::GENERAL_CLOCK = QStringLiteral("clock24hours");
const QString QUORConfig::GENERAL_UNITS = QStringLiteral("metricunits");
const QString QUORConfig::GENERAL_LATLON_UNITS = QStringLiteral("latlonunits");
const QString QUORConfig::GENERAL_GEOLAYER_URL = QStringLiteral("geolayer");
const QString QUORConfig::GENERAL_DATA3D_URL = QStringLiteral("data3d");
const QString QUORConfig::GENERAL_DATA2D_URL = QStringLiteral("data2d");
const QString QUORConfig::GENERAL_VERTICALSCALING = QStringLiteral("verticalscaling");
const QString QUORConfig::PRODUCT_GROUP = QStringLiteral("PRODUCT");
const QString QUORConfig::PRODUCT_RENDERING_TYPE = QStringLiteral("rendering");
const QString QUORConfig::PRODUCT_SURFACE_ARRAY = QStringLiteral("surface");
const QString QUORConfig::PRODUCT_SURFACE_VALUE = QStringLiteral("isovalue");
const QString QUORConfig::PRODUCT_SURFACE_OPACITY = QStringLiteral("opacity");
const QString QUORConfig::PRODUCT_VOLUME_VALUE_LOW = QStringLiteral("volumevaluelow");
const QString QUORConfig::PRODUCT_VOLUME_OPACITY_LOW = QStringLiteral("volumeopacitylow");
const QString QUORConfig::PRODUCT_VOLUME_VALUE_HIGH = QStringLiteral("volumevaluehigh");
const QString QUORConfig::PRODUCT_VOLUME_OPACITY_HIGH = QStringLiteral("volumeopacityhigh");
const QString QUORConfig::HELP_GROUP = QStringLiteral("HELP");
const QString QUORConfig::HELP_COMMAND = QStringLiteral("command");
const QString QUORConfig::HELP_FILE = QStringLiteral("file");
const QString QUORConfig::DIALOG_GROUP = QStringLiteral("DIALOG");
const QString QUORConfig::DIALOG_MAINWINDOW_POS = QStringLiteral("mainwindowpos");
const QString QUORConfig::DIALOG_CURSORTOOL_POS = QStringLiteral("cursortoolpos");
const QString QUORConfig::DIALOG_CURSORTOOL_EXPANDED = QStringLiteral("cursortoolexpanded");
const QString QUORConfig::DIALOG_PRODUCTINFO_POS = QStringLiteral("productinfopos");
const QString QUORConfig::DIALOG_PRODUCTINFO_EXPANDED = QStringLiteral("productinfoexpanded");
const QString QUORConfig::DIALOG_EXTRAWIN_POS = QStringLiteral("extrawinpos");
const QString QUORConfig::DISPLAY_STATE_GROUP = QStringLiteral("DISPLAYSTATE");
const QString QUORConfig::DISPLAY_STATE_ARRAY = QStringLiteral("DISPLAYSTATES");
const QString QUORConfig::DISPLAY_STATE_NAME = QStringLiteral("displayStateName");
const QString QUORConfig::DISPLAY_STATE_LAYER_VISIBLE = QStringLiteral("displayStateLayerVisible");
const QString QUORConfig::DISPLAY_STATE_LAYER_OPACITY = QStringLiteral("displayStateLayerOpacity");
const QString QUORConfig::VIEW_ANGLE_GROUP = QStringLiteral("VIEWANGLE");
const QString QUORConfig::VIEW_ANGLE_ARRAY = QStringLiteral("VIEWANGLES");
const QString QUORConfig::VIEW_ANGLE_NAME = QStringLiteral("viewAngleName");
const QString QUORConfig::VIEW_ANGLE_CAMPOS_X = QStringLiteral("viewAngleCamPosX");
const QString QUORConfig::VIEW_ANGLE_CAMPOS_Y = QStringLiteral("viewAngleCamPosY");
const QString QUORConfig::VIEW_ANGLE_CAMPOS_Z = QStringLiteral("viewAngleCamPosZ");
const QString QUORConfig::VIEW_ANGLE_CAMDIR_X = QStringLiteral("viewAngleCamDirX");
const QString QUORConfig::VIEW_ANGLE_CAMDIR_Y = QStringLiteral("viewAngleCamDirY");
const QString QUORConfig::VIEW_ANGLE_CAMDIR_Z = QStringLiteral("viewAngleCamDirZ");

namespace {

constexpr int COPY_TIMEOUT_MS = 30000;

/// How often the thread holds the main settings file.
thread_local int holds = 0;

QString settingsFolder() {
    return QFileInfo(QUORSettingsReader::findUserFile(QCoreApplication::applicationName())).path();
}

void setSettingsPath(const QString& path) {
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, path);
}

} // namespace

QUORConfig* QUORConfig::_instance = nullptr;

QUORConfig* QUORConfig::instance() {
    if (_instance == nullptr) {
        _instance = new QUORConfig;
    }
    return _instance;
}

void QUORConfig::destroy() {
    delete _instance;
    _instance = nullptr;
}

QSettings* QUORConfig::get() {
    const QString application = QCoreApplication::applicationName();
    if (holds == 0) {
        // Before the lock, which nobody shall hold for seconds.
        QUORSettingsFile::awaitSave(QUORSettingsReader::findUserFile(application));
    }
    _mutex.lock();
    if (++holds == 1) {
        _open = _settings.open(QUORSettingsReader::findUserFile(application),
                               [&application] { return QUORSettingsReader::open(application); });
    }
    return _open;
}

bool QUORConfig::isDamaged() {
    const std::lock_guard lock(_mutex);
    return _settings.isDamaged();
}

void QUORConfig::release() {
    if (--holds == 0) {
        _open = nullptr;
        _settings.release();
    }
    _mutex.unlock();
}

QString QUORConfig::getSettingsPath() {
    static const QRegularExpression expression(QStringLiteral("^(\\S+\\.config)/") +
                                               QRegularExpression::escape(QUORSystem::ORGANIZATION_NAME) +
                                               QStringLiteral("$"));
    return expression.match(settingsFolder()).captured(1);
}

bool QUORConfig::copy(const QString& targetDirectory) {
    const Access settings;
    const QString source = (*settings).fileName();
    const QString target = targetDirectory + QLatin1Char('/') + QFileInfo(source).fileName();
    QUORLog::Instance().logDebug(QStringLiteral("Make copy of ") + source + QStringLiteral(" ..."));
    QUORLog::Instance().logDebug(QStringLiteral("... to ") + target);
    QProcess process;
    process.start(QStringLiteral("cp"), {source, target});
    const bool good = process.waitForFinished(COPY_TIMEOUT_MS) &&
                      process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    QUORLog::Instance().logDebug(good ? QStringLiteral("SUCCESS") : QStringLiteral("FAILED"));
    return good;
}

void QUORConfig::changeUser(const QString& user) {
    // A base directory of another form than the promised one must be found again all the same.
    const QString path = getSettingsPath();
    instance()->_rememberedPath = path.isEmpty() ? QFileInfo(settingsFolder()).path() : path;
    QUORLog::Instance().logDebug(QStringLiteral("Remember settings path: ") + path);
    setSettingsPath(QUORSystem::getUserHomeDirectory(user) + QStringLiteral("/.config"));
}

void QUORConfig::restoreUser() {
    const QString path = instance()->_rememberedPath;
    if (path.isEmpty()) {
        return;
    }
    setSettingsPath(path);
    QUORLog::Instance().logDebug(QStringLiteral("Restored settings path to: ") + path);
}

QString QUORConfig::defaultValueTranslated() {
    return QCoreApplication::translate("Config", "Default");
}

bool QUORConfig::isDefaultName(const QString& name) {
    return name == VALUE_DEFAULT || name == defaultValueTranslated();
}
