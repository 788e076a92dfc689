// SPDX-License-Identifier: MIT
#include "QUORFilePublisher.h"

#include <QFile>
#include <QFileInfo>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString temporaryName(const QFileInfo& target) {
    static std::atomic<unsigned> counter{0};
    return target.absolutePath() + QStringLiteral("/.") + target.fileName().left(200) + QLatin1Char('.') +
           QString::number(::getpid()) + QLatin1Char('.') + QString::number(counter++) +
           QStringLiteral(".tmp");
}

QString systemError() {
    return QString::fromLocal8Bit(std::strerror(errno));
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
        _error = systemError();
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
        _error = systemError();
    } else {
        if (!whole) {
            _error = QStringLiteral("nothing was written");
        } else if (sync && ::fsync(fd) != 0) {
            _error = systemError();
            good = false;
        }
        ::close(fd);
    }
    if (good && ::rename(from.constData(), QFile::encodeName(_target).constData()) != 0) {
        _error = systemError();
        good = false;
    }
    if (!good) {
        ::unlink(from.constData());
    }
    _temporary.clear();
    return good;
}
