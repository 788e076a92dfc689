// SPDX-License-Identifier: MIT
#include "QUORFileStamp.h"

#include <QFile>

#include <sys/stat.h>

namespace {

qint64 toNanoseconds(const timespec& time) {
    return qint64(time.tv_sec) * 1000000000 + time.tv_nsec;
}

} // namespace

QUORFileStamp::QUORFileStamp(const struct stat& info)
    : device(info.st_dev),
      inode(info.st_ino),
      size(info.st_size),
      modified(toNanoseconds(info.st_mtim)),
      changed(toNanoseconds(info.st_ctim)) {}

QUORFileStamp QUORFileStamp::of(const QString& path) {
    struct stat info {};
    return ::stat(QFile::encodeName(path).constData(), &info) == 0 ? QUORFileStamp(info) : QUORFileStamp();
}

QUORFileStamp QUORFileStamp::ofLink(const QString& path) {
    struct stat info {};
    return ::lstat(QFile::encodeName(path).constData(), &info) == 0 ? QUORFileStamp(info) : QUORFileStamp();
}

bool QUORFileStamp::isWrittenSince(const QUORFileStamp& before) const {
    // Some file systems number a file anew at any time; its times stay.
    const bool isOther = inode != before.inode && (modified != before.modified || changed != before.changed);
    return size != before.size || isOther || modified > before.changed;
}

QString QUORFileStamp::toText() const {
    QString text;
    for (const qint64 number : {qint64(device), qint64(inode), size, modified, changed}) {
        text += QString::number(number) + QLatin1Char(' ');
    }
    return text;
}
