// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <cerrno>

/// Look-ups about the system that lower layers need; the application object forwards to them.
namespace QUORSystem {

/// The organisation that names every settings directory, and its domain.
inline const QString ORGANIZATION_NAME = QStringLiteral("QUOR");
inline const QString ORGANIZATION_DOMAIN = QStringLiteral("quor3d.local");
/// The service's name: names the system configuration file and the background settings file.
inline const QString BG_SERVICE_NAME = QStringLiteral("quor3dd");

/// The user's home from the password file; "/home/" + user when the file cannot be read, and for a user
/// that neither it nor the system's user database knows; "/" when there is no password file.
QString getUserHomeDirectory(const QString& user);
/// Home of the user + "/.config/" + organisation name.
QString getUserSettingsDirectory(const QString& user);
/// "/etc/sysconfig" or "/etc/default", the first that exists, or empty.
QString getSystemConfigurationDirectory();
/// What the system says to an error number.
QString errorText(int error = errno);
/// A path whose leading "~" stands for the home directory of the process, expanded.
QString expandHome(const QString& path);
/// The path that a setting or the environment means: "~" expanded, and a name that begins with ":" is that of
/// a file in the working directory, where the toolkit would see one of its built-in resources.
QString toPath(const QString& text);
/// The folders that the settings layer looks for packaged settings in, first come first served.
QStringList getSystemSettingsFolders();
/// Packaged settings are looked for in the configuration folder of this installation, also of one that was
/// moved, unless XDG_CONFIG_DIRS is set. Called once, before any settings are read.
void useConfiguredSystemScope();

} // namespace QUORSystem
