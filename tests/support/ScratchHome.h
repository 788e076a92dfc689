// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QTemporaryDir>

/// A temporary home directory with empty user and system settings scopes; the organisation is "QUOR" and
/// the application "QUOR3D". They end with it, and the home before it counts again.
class ScratchHome {
public:
    ScratchHome();
    ~ScratchHome();
    ScratchHome(const ScratchHome&) = delete;
    ScratchHome& operator=(const ScratchHome&) = delete;

    QString path() const { return _dir.path(); }
    /// The directory of the user's settings files.
    static QString settingsDirectory();
    /// Writes a file below the user's settings directory, making it where needed.
    static void writeSettings(const QString& name, const QString& text);
    /// The same in the system's scope, which the user's files come before.
    static void writePackaged(const QString& name, const QString& text);
    static void removeSettings(const QString& name);

private:
    void enter() const;

    QTemporaryDir _dir;
    const ScratchHome* _previous;
};
