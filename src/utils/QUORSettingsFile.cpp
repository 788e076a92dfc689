// SPDX-License-Identifier: MIT
#include "QUORSettingsFile.h"

#include "QUORSettingsText.h"
#include "QUORSystem.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QList>
#include <QMutex>
#include <QMutexLocker>
#include <QSettings>
#include <QThread>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr qint64 MAXIMUM_SIZE = 64 << 20; // holds some 300,000 landmarks
// Values that begin with "@", which may be written as an escape, can be lists in lists, read recursively.
constexpr qsizetype MAXIMUM_SERIALISED = 32768;
constexpr qint64 SAVE_PAUSE_MS = 1000;
constexpr qint64 SAVE_TIMEOUT_MS = 3000;
constexpr unsigned long SAVE_STEP_MS = 20;

int openToRead(const QString& fileName) {
    return ::open(QFile::encodeName(fileName).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
}

QString findRefusal(int fd) {
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        return QStringLiteral("it is not a regular file");
    }
    return info.st_size > MAXIMUM_SIZE ? QStringLiteral("it is too large") : QString();
}

int findOverlongValue(const QByteArray& content) {
    if (content.size() <= MAXIMUM_SERIALISED) {
        return 0;
    }
    const QUORSettingsText text(content);
    const auto found = std::ranges::find_if(text.getLines(), [](const QUORSettingsText::Line& line) {
        return line.text.size() > MAXIMUM_SERIALISED && (line.text.contains('@') || line.text.contains('\\'));
    });
    return found == text.getLines().cend() ? 0 : found->number;
}

bool isInSave(const QFileInfo& file) {
    const qint64 age = file.lastModified().msecsTo(QDateTime::currentDateTime());
    return file.exists() && age >= 0 && age <= SAVE_PAUSE_MS &&
           (file.size() == 0 || QUORSettingsFile::isBeingWritten(file.filePath()));
}

/// Since when the saves of a file that have not ended are waited for: all who wait share the patience.
class Patience {
public:
    bool isLeft(const QString& fileName) {
        const QMutexLocker lock(&_mutex);
        QElapsedTimer& since = _since[fileName];
        if (!since.isValid()) {
            since.start();
        }
        return since.elapsed() < SAVE_TIMEOUT_MS;
    }
    void renew(const QString& fileName) {
        const QMutexLocker lock(&_mutex);
        _since.remove(fileName);
    }

private:
    QMutex _mutex;
    QHash<QString, QElapsedTimer> _since;
};

} // namespace

std::optional<QByteArray> QUORSettingsFile::read(const QString& fileName, QString& error) {
    error.clear();
    const int fd = openToRead(fileName);
    if (fd < 0) {
        error = errno == ENOENT ? QString() : QUORSystem::errorText();
        return error.isEmpty() ? std::optional(QByteArray()) : std::nullopt;
    }
    error = findRefusal(fd);
    QFile file;
    if (!error.isEmpty() || !file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        error = error.isEmpty() ? file.errorString() : error;
        ::close(fd);
        return std::nullopt;
    }
    const QByteArray content = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        error = file.errorString();
    } else if (content.size() != file.size()) {
        error = QStringLiteral("it could not be read as a whole");
    } else if (const int line = findOverlongValue(content); line > 0) {
        error =
            QStringLiteral("the value in line ") + QString::number(line) + QStringLiteral(" is too large");
    }
    return error.isEmpty() ? std::optional(content) : std::nullopt;
}

void QUORSettingsFile::forgetParsed() {
    // There is room for 100, of which a small file takes 10: so many others push out what is kept.
    constexpr QByteArrayView CONTENT("a=1\n");
    static QMutex mutex;
    const QMutexLocker lock(&mutex);
    std::array<int, 11> files{};
    for (int& fd : files) {
        fd = ::memfd_create("settings", MFD_CLOEXEC);
        if (fd >= 0 && ::write(fd, CONTENT.data(), std::size_t(CONTENT.size())) == CONTENT.size()) {
            const QSettings other(QStringLiteral("/proc/self/fd/") + QString::number(fd),
                                  QSettings::NativeFormat);
        }
    }
    for (const int fd : files) {
        ::close(fd);
    }
}

bool QUORSettingsFile::hasKeys(const QByteArray& content) {
    return !QUORSettingsText(content).getKeys().isEmpty();
}

bool QUORSettingsFile::hasGroup(const QByteArray& content, const QString& group) {
    const bool isGeneral = group.compare(QLatin1String("general"), Qt::CaseInsensitive) == 0;
    const QList<QUORSettingsText::Entry> keys = QUORSettingsText(content).getKeys();
    return std::ranges::any_of(keys, [&](const QUORSettingsText::Entry& entry) {
        const bool general = entry.section.isEmpty() || entry.section == QLatin1String("General");
        return isGeneral ? general : entry.section == group;
    });
}

bool QUORSettingsFile::isBeingWritten(const QString& fileName) {
    const int fd = openToRead(fileName);
    if (fd < 0) {
        return false;
    }
    // The system gives no lease on what is open for writing. Who opens it now is told by a signal, which
    // must not be the usual one, because that one ends the process.
    const bool refused =
        ::fcntl(fd, F_SETSIG, SIGURG) == 0 && ::fcntl(fd, F_SETLEASE, F_RDLCK) != 0 && errno == EAGAIN;
    ::close(fd);
    return refused;
}

void QUORSettingsFile::awaitSave(const QString& fileName) {
    static Patience patience;
    while (isInSave(QFileInfo(fileName))) {
        if (!patience.isLeft(fileName)) {
            return;
        }
        QThread::msleep(SAVE_STEP_MS);
    }
    patience.renew(fileName);
}

int QUORSettingsFile::findBadLine(const QByteArray& content) {
    const QUORSettingsText text(content);
    const auto bad = std::ranges::find_if(text.getLines(), &QUORSettingsText::Line::isBad);
    return bad == text.getLines().cend() ? 0 : bad->number;
}
