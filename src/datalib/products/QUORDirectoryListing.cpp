// SPDX-License-Identifier: MIT
#include "QUORDirectoryListing.h"

#include <QByteArrayView>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

QUORDirectoryListing::Identity QUORDirectoryListing::identify(const QString& path) {
    struct stat info {};
    if (path.isEmpty() || ::stat(QFile::encodeName(path).constData(), &info) != 0 || !S_ISDIR(info.st_mode)) {
        return {};
    }
    return {info.st_dev, info.st_ino};
}

bool QUORDirectoryListing::hasVanished(const QString& path) {
    struct stat info {};
    if (::lstat(QFile::encodeName(path).constData(), &info) == 0) {
        return !S_ISREG(info.st_mode);
    }
    return errno == ENOENT || errno == ENOTDIR;
}

QUORDirectoryListing::QUORDirectoryListing(const QString& path) {
    struct Closer {
        void operator()(DIR* directory) const { ::closedir(directory); }
    };
    const std::unique_ptr<DIR, Closer> directory(::opendir(QFile::encodeName(path).constData()));
    if (!directory) {
        _error = errno;
        return;
    }
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(directory.get());
        if (entry == nullptr) {
            _error = errno;
            break;
        }
        take(::dirfd(directory.get()), static_cast<const char*>(entry->d_name), entry->d_type);
    }
    std::sort(_names.begin(), _names.end());
}

bool QUORDirectoryListing::isGone() const {
    return _error == ENOENT || _error == ENOTDIR;
}

void QUORDirectoryListing::take(int directory, const char* name, unsigned char type) {
    if (name[0] == '.' || (type != DT_REG && type != DT_UNKNOWN)) {
        return;
    }
    if (type == DT_UNKNOWN) {
        struct stat info {};
        if (::fstatat(directory, name, &info, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISREG(info.st_mode)) {
            return;
        }
    }
    const QByteArrayView bytes(name, qsizetype(std::strlen(name)));
    if (bytes.isValidUtf8()) {
        _names.append(QString::fromUtf8(bytes));
    } else {
        ++_unreadableNames;
    }
}
