// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

struct stat;

/// What the system says about a file that tells whether it was written, replaced or given other rights since.
/// Size and time of modification alone do not: a file can be replaced by one that has both alike.
struct QUORFileStamp {
    QUORFileStamp() = default;
    explicit QUORFileStamp(const struct stat& info);
    /// Of what stands under that path; unknown when that cannot be asked for.
    static QUORFileStamp of(const QString& path);
    /// The same without following a link.
    static QUORFileStamp ofLink(const QString& path);

    bool isKnown() const { return size >= 0; }
    /// Whether the content is another one than at `before`. A move, other rights and a time of modification
    /// that was set back, as transfers do at their end, are not; nor is a writing in place that set it back,
    /// which nothing here tells from them.
    bool isWrittenSince(const QUORFileStamp& before) const;
    bool operator==(const QUORFileStamp&) const = default;
    /// To be compared.
    QString toText() const;

    quint64 device = 0;
    quint64 inode = 0;
    qint64 size = -1;
    qint64 modified = 0; ///< nanoseconds since the epoch, as the next
    qint64 changed = 0;
};
