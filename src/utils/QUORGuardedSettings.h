// SPDX-License-Identifier: MIT
#pragma once

#include "QUORFileStamp.h"

#include <QByteArray>
#include <QSettings>
#include <QString>

#include <functional>
#include <memory>

/// A settings file of which what was last read whole stays in force while the file is damaged: it is
/// missing, empty, unreadable, cut off inside a line, has a line that cannot be understood, or lacks its
/// group. Editors that save by rename leave such a file for a moment, a full disk for longer; defaults in
/// its place would send images elsewhere. One error line says so, and again when the damage changes.
///
/// A file that has never been whole is read as far as it can be. Used under its owner's lock.
class QUORGuardedSettings {
public:
    enum class Group {
        Required, ///< its absence is damage
        Optional, ///< its absence is damage once it was there
    };
    using Opener = std::function<std::unique_ptr<QSettings>()>;

    QUORGuardedSettings(const QString& group, Group need) : _group(group), _need(need) {}
    QUORGuardedSettings(const QUORGuardedSettings&) = delete;
    QUORGuardedSettings& operator=(const QUORGuardedSettings&) = delete;

    /// The settings to read now, until `release`: what `opener` makes, or what it made last of a whole file.
    /// Null when it makes nothing. `consequence` completes the error line about a required file that has
    /// never been whole: what follows from it. Another file name starts anew.
    QSettings* open(const QString& fileName, const Opener& opener,
                    const std::function<QString()>& consequence = {});
    /// Pending changes are written.
    void release() { _settings.reset(); }
    /// Whether the file was damaged at the last `open`.
    bool isDamaged() const { return !_damage.isEmpty(); }

    /// Whether settings that `open` returned stand in for a damaged file: nothing may be saved to it.
    static bool isStandIn(const QSettings& settings);

private:
    QString findDamage(const QByteArray& content) const;
    void report(const std::function<QString()>& consequence) const;

    QString _group;
    Group _need;
    QString _fileName;
    QUORFileStamp _stamp; ///< of the file when it was opened last
    QByteArray _content;  ///< of the last whole file
    QString _damage;
    std::unique_ptr<QSettings> _settings;
    /// Over the last whole file. Objects of one file share what they have read, and nobody opens a damaged
    /// one while this lives.
    std::unique_ptr<QSettings> _lastGood;
};
