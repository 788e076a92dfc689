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
    : size(info.st_size),
      inode(info.st_ino),
      modified(toNanoseconds(info.st_mtim)),
      changed(toNanoseconds(info.st_ctim)) {}

QUORFileStamp QUORFileStamp::of(const QString& path) {
    struct stat info {};
    return ::lstat(QFile::encodeName(path).constData(), &info) == 0 ? QUORFileStamp(info) : QUORFileStamp();
}

bool QUORFileStamp::isWrittenSince(const QUORFileStamp& before) const {
    return size != before.size ||
           (modified != before.modified && (inode != before.inode || modified > before.changed));
}
