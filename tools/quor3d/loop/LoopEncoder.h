// SPDX-License-Identifier: MIT
#pragma once

#include "QUORFilePublisher.h"

#include <QImage>
#include <QProcess>
#include <QString>

/// Writes pictures as the frames of one moving picture, through the program ffmpeg. The file appears whole or
/// not at all. WebP, MP4 (H.264) or GIF, by the ending.
class LoopEncoder {
public:
    /// Frames have that size; `quality` is 1 (small) to 100. A rate is pictures a second.
    LoopEncoder(const QString& path, const QSize& size, double rate, int quality);
    ~LoopEncoder();
    LoopEncoder(const LoopEncoder&) = delete;
    LoopEncoder& operator=(const LoopEncoder&) = delete;

    static bool isKnownFormat(const QString& path);

    /// A picture of another size is fitted into the frame. False when the program has ended.
    bool add(const QImage& picture, int times = 1);
    /// Waits for the end and gives the file its name. False on any failure.
    bool finish();
    /// Why the last call failed.
    QString getError() const { return _error; }

private:
    bool fail();

    QUORFilePublisher _publisher;
    QSize _size;
    QProcess _process;
    QString _error;
};
