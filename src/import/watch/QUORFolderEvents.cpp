// SPDX-License-Identifier: MIT
#include "QUORFolderEvents.h"

#include "QUORDirectoryListing.h"

#include <QFile>

#include <array>
#include <csignal>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/signalfd.h>
#include <unistd.h>

QUORFolderEvents::QUORFolderEvents(const QString& folder)
    : _folder(folder), _notifier(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGINT);
    sigaddset(&ending, SIGTERM);
    ::sigprocmask(SIG_BLOCK, &ending, nullptr);
    _signals = ::signalfd(-1, &ending, SFD_NONBLOCK | SFD_CLOEXEC);
    watchFolder();
}

QUORFolderEvents::~QUORFolderEvents() {
    ::close(_notifier);
    ::close(_signals);
}

/// Another folder under the same path is silent until it is watched anew.
void QUORFolderEvents::watchFolder() {
    const QUORDirectoryListing::Identity found = QUORDirectoryListing::identify(_folder);
    const std::pair<quint64, quint64> identity{found.device, found.inode};
    if (identity == _identity) {
        return;
    }
    if (_watch >= 0) {
        ::inotify_rm_watch(_notifier, _watch);
    }
    _watch = ::inotify_add_watch(_notifier, QFile::encodeName(_folder).constData(),
                                 IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_CREATE | IN_DELETE |
                                     IN_ONLYDIR);
    _identity = _watch >= 0 ? identity : std::pair<quint64, quint64>{0, 0};
}

QSet<QString> QUORFolderEvents::wait(std::chrono::milliseconds most) {
    watchFolder();
    std::array<pollfd, 2> sources{{{_notifier, POLLIN, 0}, {_signals, POLLIN, 0}}};
    if (::poll(sources.data(), sources.size(), int(most.count())) <= 0) {
        return {};
    }
    signalfd_siginfo signal{};
    if (::read(_signals, &signal, sizeof signal) == ssize_t(sizeof signal)) {
        _stopped = true;
    }
    return readEvents();
}

QSet<QString> QUORFolderEvents::readEvents() {
    QSet<QString> closed;
    alignas(inotify_event) std::array<char, 65536> buffer;
    for (;;) {
        const ssize_t count = ::read(_notifier, buffer.data(), buffer.size());
        if (count <= 0) {
            return closed;
        }
        for (ssize_t at = 0; at + ssize_t(sizeof(inotify_event)) <= count;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
            if ((event->mask & IN_IGNORED) != 0 && event->wd == _watch) {
                // Deleted. What takes its place may have the same identity.
                _watch = -1;
                _identity = {0, 0};
            }
            if ((event->mask & (IN_CLOSE_WRITE | IN_MOVED_TO)) != 0 && event->len > 0) {
                closed.insert(QString::fromUtf8(static_cast<const char*>(event->name)));
            }
            at += ssize_t(sizeof(inotify_event)) + event->len;
        }
    }
}
