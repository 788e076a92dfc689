// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QHash>
#include <QSet>
#include <QString>

/// What has been imported from a folder, kept in a file so that a restart neither repeats nor forgets. A file
/// is known by name, size and time of change, or, renamed or copied, by its content.
class QUORImportRecord {
public:
    struct Stamp {
        qint64 size = -1;
        qint64 changed = 0; ///< nanoseconds since 1970
        quint64 inode = 0;
        bool operator==(const Stamp&) const = default;
    };
    /// Of a regular file; of size -1 when there is none.
    static Stamp stampOf(const QString& path);
    /// Of the whole content; empty when it cannot be read.
    static QByteArray digestOf(const QString& path);

    /// Loads the record. `isNew` tells that there was none.
    explicit QUORImportRecord(const QString& path);

    bool isNew() const { return _isNew; }
    /// Makes the file, so that the next start is not the first. An empty text, or why it cannot be made.
    QString begin() { return append({}); }
    bool hasFile(const QString& name, const Stamp& stamp) const;
    bool hasContent(const QByteArray& digest) const { return _digests.contains(digest); }
    /// Remembers a file, at once also on the disk; without a digest it is known by its stamp alone. An empty
    /// text, or why it could not be kept.
    QString add(const QString& name, const Stamp& stamp, const QByteArray& digest);

private:
    void take(const QByteArray& line);
    QString append(const QByteArray& lines);

    QString _path;
    bool _isNew;
    bool _isCutOff = false; ///< the last line has no end
    QHash<QString, Stamp> _files;
    QSet<QByteArray> _digests;
};
