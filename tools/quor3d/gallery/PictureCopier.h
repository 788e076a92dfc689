// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QString>

/// Makes copies of pictures that a browser can show. A copy carries the time stamp of its picture, so that
/// the next run sees which ones are still good.
class PictureCopier {
public:
    struct Form {
        /// Of the image library: "webp", "png", "jpg".
        const char* format;
        int quality;
        /// The largest width, pixels; 0 for the picture's own.
        int width;
    };

    /// Whether copies of that format can be written here.
    static bool canWrite(const QString& format);
    /// Whether the copy stands and belongs to the picture as it is now.
    static bool isCurrent(qint64 stamp, const QString& copy);

    /// The copy appears whole under its name. False when the picture cannot be read or the copy cannot be
    /// written: said on standard error, once for each state of the picture, which is not tried again.
    bool provide(const QString& picture, qint64 stamp, const QString& copy, const Form& form);
    /// How many pictures could not be copied in the state that they are in.
    qsizetype getFailures() const { return _failed.size(); }

private:
    bool fail(const QString& copy, qint64 stamp, const QString& text);

    QHash<QString, qint64> _failed;
};
