// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <sys/types.h>

/// The names of the regular files of a directory at one moment, ascending: no symbolic links, no hidden
/// names, and none that is not valid UTF-8. A listing that failed says so and is not an empty one.
class QUORDirectoryListing {
public:
    /// Which directory stands under a path: another one after a remount, a replacement or a turned link.
    struct Identity {
        dev_t device = 0;
        ino_t inode = 0;
        bool operator==(const Identity&) const = default;
    };
    /// All zero when there is no directory under that path.
    static Identity identify(const QString& path);
    /// No regular file stands there any more. A file that cannot be asked for has not vanished.
    static bool hasVanished(const QString& path);

    /// Lists at once. An empty path is no directory.
    explicit QUORDirectoryListing(const QString& path);

    /// The system's error number, 0 when the listing is complete.
    int getError() const { return _error; }
    bool isComplete() const { return _error == 0; }
    /// There is no such directory: the only failure that means that its files are gone.
    bool isGone() const;
    const QStringList& getNames() const { return _names; }
    /// How many names were left out because they are not valid UTF-8.
    int getUnreadableNames() const { return _unreadableNames; }

private:
    void take(int directory, const char* name, unsigned char type);

    QStringList _names;
    int _error = 0;
    int _unreadableNames = 0;
};
