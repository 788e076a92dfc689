// SPDX-License-Identifier: MIT
#include "QUORPidFile.h"

#include "QUORSystem.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

QUORPidFile::~QUORPidFile() {
    if (_written && isStillThere()) {
        ::unlink(QFile::encodeName(_path).constData());
    }
    if (_descriptor >= 0) {
        ::close(_descriptor);
    }
}

QUORPidFile::Result QUORPidFile::lock(const QString& path) {
    _path = path;
    // One that another daemon removes between these two steps is made again.
    do {
        if (_descriptor >= 0) {
            ::close(_descriptor);
        }
        _descriptor = ::open(QFile::encodeName(path).constData(),
                             O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0644);
        if (_descriptor < 0) {
            _error = QUORSystem::errorText();
            return Failed;
        }
        if (::flock(_descriptor, LOCK_EX | LOCK_NB) != 0) {
            const bool isTaken = errno == EWOULDBLOCK;
            _error = QUORSystem::errorText();
            return isTaken ? Taken : Failed;
        }
    } while (!isStillThere());
    return Locked;
}

bool QUORPidFile::write() {
    if (_descriptor < 0) {
        return false;
    }
    _written = true;
    ::fchmod(_descriptor, 0644);
    const QByteArray text = QByteArray::number(qint64(::getpid())) + '\n';
    const bool isWhole = ::ftruncate(_descriptor, 0) == 0 &&
                         ::pwrite(_descriptor, text.constData(), size_t(text.size()), 0) == text.size();
    if (!isWhole) {
        _error = QUORSystem::errorText();
    }
    return isWhole;
}

qint64 QUORPidFile::readPid() const {
    std::array<char, 32> text{};
    const ssize_t size = _descriptor < 0 ? 0 : ::pread(_descriptor, text.data(), text.size(), 0);
    return QByteArray(text.data(), size > 0 ? qsizetype(size) : 0).trimmed().toLongLong();
}

bool QUORPidFile::isStillThere() const {
    struct stat ours {};
    struct stat named {};
    return ::fstat(_descriptor, &ours) == 0 && ::lstat(QFile::encodeName(_path).constData(), &named) == 0 &&
           ours.st_dev == named.st_dev && ours.st_ino == named.st_ino;
}
