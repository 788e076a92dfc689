// SPDX-License-Identifier: MIT
#include "QUORDirectoryNotifier.h"

#include <QFile>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <cstring>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

constexpr std::size_t BUFFER_SIZE = 65536;
constexpr std::uint32_t ENDED = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;
constexpr std::uint32_t WATCHED = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_MODIFY |
                                  IN_CLOSE_WRITE | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

} // namespace

QUORDirectoryNotifier::QUORDirectoryNotifier() = default;

QUORDirectoryNotifier::~QUORDirectoryNotifier() {
    delete _readable;
    if (_queue >= 0) {
        ::close(_queue);
    }
}

bool QUORDirectoryNotifier::open() {
    if (_queue >= 0) {
        return true;
    }
    _queue = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (_queue < 0) {
        return false;
    }
    _readable = new QSocketNotifier(_queue, QSocketNotifier::Read);
    connect(_readable, &QSocketNotifier::activated, this, &QUORDirectoryNotifier::read);
    return true;
}

int QUORDirectoryNotifier::watch(const QString& path) {
    if (_watch >= 0) {
        ::inotify_rm_watch(_queue, _watch);
        _watch = -1;
    }
    _modified.clear();
    if (!open()) {
        return errno;
    }
    _watch = ::inotify_add_watch(_queue, QFile::encodeName(path).constData(), WATCHED);
    return _watch < 0 ? errno : 0;
}

/// Whether this closes what was written. A file that goes is forgotten.
bool QUORDirectoryNotifier::isWritten(const QString& name, quint32 event) {
    if ((event & IN_MODIFY) != 0) {
        _modified.insert(name);
    }
    return (event & (IN_CLOSE_WRITE | IN_DELETE | IN_MOVED_FROM)) != 0 && _modified.remove(name) &&
           (event & IN_CLOSE_WRITE) != 0;
}

void QUORDirectoryNotifier::read() {
    alignas(inotify_event) std::array<char, BUFFER_SIZE> buffer;
    QStringList names;
    QStringList written;
    bool news = false;
    bool lost = false;
    ssize_t length = 0;
    while ((length = ::read(_queue, buffer.data(), buffer.size())) > 0) {
        for (ssize_t at = 0; at < length;) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + at, sizeof event);
            const char* name = buffer.data() + at + sizeof event;
            at += ssize_t(sizeof event + event.len);
            if ((event.mask & IN_Q_OVERFLOW) != 0) {
                lost = news = true;
            } else if (event.wd != _watch || _watch < 0) {
                continue; // of a directory before
            } else if ((event.mask & ENDED) != 0) {
                // What is moved away is still watched, under a path that is not ours any more.
                ::inotify_rm_watch(_queue, _watch);
                _watch = -1;
                news = true;
            } else if (event.len == 0) {
                news = true; // the directory's own rights
            } else if (name[0] != '.' && (event.mask & IN_ISDIR) == 0) {
                const QString file = QFile::decodeName(name);
                if (isWritten(file, event.mask)) {
                    written.append(file);
                }
                if (event.mask != IN_MODIFY) {
                    names.append(file);
                    news = true;
                }
            }
        }
    }
    if (news) {
        Q_EMIT changed(names, written, lost);
    }
}
