// SPDX-License-Identifier: MIT
#include "QUORFilePublisher.h"

#include "QUORSystem.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int LEFTOVER_AGE_S = 3600;

QString temporaryName(const QFileInfo& target) {
    static std::atomic<unsigned> counter{0};
    return target.absolutePath() + QStringLiteral("/.") + target.fileName().left(200) + QLatin1Char('.') +
           QString::number(::getpid()) + QLatin1Char('.') + QString::number(counter++) +
           QStringLiteral(".tmp");
}

} // namespace

QUORFilePublisher::QUORFilePublisher(const QString& target) : _target(QFileInfo(target).absoluteFilePath()) {
    const QString name = temporaryName(QFileInfo(_target));
    const QByteArray path = QFile::encodeName(name);
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    int fd = ::open(path.constData(), flags, 0644);
    if (fd < 0 && errno == EEXIST && ::unlink(path.constData()) == 0) {
        fd = ::open(path.constData(), flags, 0644);
    }
    if (fd < 0) {
        _error = QUORSystem::errorText();
        return;
    }
    ::fchmod(fd, 0644);
    ::close(fd);
    _temporary = name;
}

QUORFilePublisher::~QUORFilePublisher() {
    if (!_temporary.isEmpty()) {
        ::unlink(QFile::encodeName(_temporary).constData());
    }
}

bool QUORFilePublisher::reserve(qint64 bytes) {
    const int fd = ::open(QFile::encodeName(_temporary).constData(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
    const bool good = fd >= 0 && (::fallocate(fd, 0, 0, bytes) == 0 || errno == EOPNOTSUPP);
    if (!good) {
        _error = QUORSystem::errorText();
    }
    if (fd >= 0) {
        ::close(fd);
    }
    return good;
}

bool QUORFilePublisher::copyFrom(int source) {
    const int fd = ::open(QFile::encodeName(_temporary).constData(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
    struct stat info = {};
    bool good = fd >= 0 && ::fstat(source, &info) == 0;
    off_t done = 0;
    while (good && done < info.st_size) {
        const ssize_t copied = ::sendfile(fd, source, &done, std::size_t(info.st_size - done));
        good = copied > 0 || (copied < 0 && errno == EINTR);
    }
    if (!good) {
        _error = QUORSystem::errorText();
    } else {
        // On its way to the disk before the name is: a power cut then hardly finds an empty file.
        ::sync_file_range(fd, 0, 0, SYNC_FILE_RANGE_WRITE);
    }
    if (fd >= 0 && ::close(fd) != 0 && good) {
        _error = QUORSystem::errorText(); // where a remote file system tells of a full disk
        good = false;
    }
    return good;
}

void QUORFilePublisher::removeLeftovers(const QString& folder) {
    static const QRegularExpression name(QStringLiteral("^\\..+\\.(\\d+)\\.\\d+\\.tmp$"));
    const QDir directory(folder);
    for (const QString& entry : directory.entryList({QStringLiteral(".*.tmp")}, QDir::Files | QDir::Hidden)) {
        const pid_t process = name.match(entry).captured(1).toInt();
        const QFileInfo file(directory.filePath(entry));
        // No process writes for an hour: not one of another machine or container, which cannot be asked for,
        // nor this one, whose number may be that of the one before it.
        const bool old = file.lastModified() < QDateTime::currentDateTime().addSecs(-LEFTOVER_AGE_S);
        const auto isDead = [process] { return ::kill(process, 0) != 0 && errno == ESRCH; };
        if (old && process > 0 && (process == ::getpid() || isDead())) {
            ::unlink(QFile::encodeName(directory.filePath(entry)).constData());
        }
    }
}

bool QUORFilePublisher::publish(bool sync) {
    if (_temporary.isEmpty()) {
        return false;
    }
    const QByteArray from = QFile::encodeName(_temporary);
    const int fd = ::open(from.constData(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    struct stat info = {};
    const bool whole = fd >= 0 && ::fstat(fd, &info) == 0 && info.st_size > 0;
    bool good = whole;
    if (fd < 0) {
        _error = QUORSystem::errorText();
    } else {
        if (!whole) {
            _error = QStringLiteral("nothing was written");
        } else if (sync && ::fsync(fd) != 0) {
            _error = QUORSystem::errorText();
            good = false;
        }
        ::close(fd);
    }
    if (good && ::rename(from.constData(), QFile::encodeName(_target).constData()) != 0) {
        _error = QUORSystem::errorText();
        good = false;
    }
    if (!good) {
        ::unlink(from.constData());
    }
    _temporary.clear();
    return good;
}
