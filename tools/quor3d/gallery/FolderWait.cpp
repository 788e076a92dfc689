// SPDX-License-Identifier: MIT
#include "FolderWait.h"

#include <QFile>

#include <array>
#include <poll.h>
#include <sys/inotify.h>
#include <thread>
#include <unistd.h>

namespace {

/// Within it, pictures of one burst become one change.
constexpr std::chrono::milliseconds SETTLING{150};

void drain(int descriptor) {
    std::array<char, 4096> bytes;
    while (::read(descriptor, bytes.data(), bytes.size()) > 0) {
    }
}

} // namespace

FolderWait::FolderWait(const QString& folder) : _folder(folder) {
    follow();
}

FolderWait::~FolderWait() {
    if (_changes >= 0) {
        ::close(_changes);
    }
}

void FolderWait::follow() {
    const auto identity = QUORDirectoryListing::identify(_folder);
    if (identity == _identity) {
        return;
    }
    if (_changes >= 0) {
        ::close(_changes);
    }
    _changes = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    const bool followed =
        _changes >= 0 &&
        ::inotify_add_watch(_changes, QFile::encodeName(_folder).constData(),
                            IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_ONLYDIR) >= 0;
    _identity = followed ? identity : QUORDirectoryListing::Identity{};
}

FolderWait::Reason FolderWait::wait(std::chrono::milliseconds most) {
    follow();
    Reason reason = Reason::TimedOut;
    if (poll(most, reason) && reason == Reason::Changed) {
        std::this_thread::sleep_for(SETTLING);
        drain(_changes);
        poll(std::chrono::milliseconds(0), reason);
    }
    return reason;
}

/// Whether something has come; the reason is then set.
bool FolderWait::poll(std::chrono::milliseconds most, Reason& reason) {
    std::array<pollfd, 2> watched{{{_signals.descriptor(), POLLIN, 0}, {_changes, POLLIN, 0}}};
    ::poll(watched.data(), watched.size(), int(most.count()));
    if ((watched[0].revents & POLLIN) != 0) {
        drain(_signals.descriptor());
        reason = Reason::AskedToEnd;
        return true;
    }
    if ((watched[1].revents & POLLIN) != 0) {
        reason = Reason::Changed;
        return true;
    }
    return false;
}
