// SPDX-License-Identifier: MIT
#include "LoopEncoder.h"

#include <QFileInfo>
#include <QPainter>
#include <QStringList>

namespace {

QString endingOf(const QString& path) {
    return QFileInfo(path).suffix().toLower();
}

/// Of H.264: 0 is exact, 51 the worst.
int toConstantRate(int quality) {
    return 40 - quality * 28 / 100;
}

QStringList encoderArguments(const QString& ending, int quality) {
    if (ending == QStringLiteral("mp4")) {
        return {QStringLiteral("-c:v"),      QStringLiteral("libx264"),
                QStringLiteral("-crf"),      QString::number(toConstantRate(quality)),
                QStringLiteral("-preset"),   QStringLiteral("slow"),
                QStringLiteral("-pix_fmt"),  QStringLiteral("yuv420p"),
                QStringLiteral("-movflags"), QStringLiteral("+faststart"),
                QStringLiteral("-f"),        QStringLiteral("mp4")};
    }
    if (ending == QStringLiteral("gif")) {
        return {
            QStringLiteral("-filter_complex"),
            QStringLiteral(
                "split[a][b];[a]palettegen=stats_mode=diff[p];[b][p]paletteuse=dither=bayer:bayer_scale=4"),
            QStringLiteral("-loop"),
            QStringLiteral("0"),
            QStringLiteral("-f"),
            QStringLiteral("gif")};
    }
    return {QStringLiteral("-c:v"),
            QStringLiteral("libwebp_anim"),
            QStringLiteral("-lossless"),
            QStringLiteral("0"),
            QStringLiteral("-quality"),
            QString::number(quality),
            QStringLiteral("-compression_level"),
            QStringLiteral("5"),
            QStringLiteral("-loop"),
            QStringLiteral("0"),
            QStringLiteral("-f"),
            QStringLiteral("webp")};
}

} // namespace

bool LoopEncoder::isKnownFormat(const QString& path) {
    return QStringList{QStringLiteral("webp"), QStringLiteral("mp4"), QStringLiteral("gif")}.contains(
        endingOf(path));
}

LoopEncoder::LoopEncoder(const QString& path, const QSize& size, double rate, int quality)
    // The video formats halve the sides for their colours.
    : _publisher(path), _size(size.width() / 2 * 2, size.height() / 2 * 2) {
    if (!_publisher.isReady()) {
        _error = path + QStringLiteral(": ") + _publisher.getError();
        return;
    }
    QStringList arguments{QStringLiteral("-hide_banner"),
                          QStringLiteral("-loglevel"),
                          QStringLiteral("error"),
                          QStringLiteral("-f"),
                          QStringLiteral("rawvideo"),
                          QStringLiteral("-pix_fmt"),
                          QStringLiteral("rgb24"),
                          QStringLiteral("-s"),
                          QStringLiteral("%1x%2").arg(_size.width()).arg(_size.height()),
                          QStringLiteral("-r"),
                          QString::number(rate),
                          QStringLiteral("-i"),
                          QStringLiteral("-")};
    arguments += encoderArguments(endingOf(path), quality);
    arguments << QStringLiteral("-y") << _publisher.getTemporaryPath();
    _process.setStandardOutputFile(QProcess::nullDevice());
    _process.start(QStringLiteral("ffmpeg"), arguments);
    if (!_process.waitForStarted()) {
        _error = QStringLiteral("ffmpeg cannot be started, it is in the package ffmpeg: ") +
                 _process.errorString();
    }
}

LoopEncoder::~LoopEncoder() {
    if (_process.state() != QProcess::NotRunning) {
        _process.kill();
        _process.waitForFinished();
    }
}

bool LoopEncoder::fail() {
    if (_error.isEmpty()) {
        const QString said = QString::fromLocal8Bit(_process.readAllStandardError()).trimmed();
        _error = QStringLiteral("ffmpeg: ") +
                 (said.isEmpty() ? _process.errorString() : said.section(QLatin1Char('\n'), -1));
    }
    return false;
}

bool LoopEncoder::add(const QImage& picture, int times) {
    if (!_error.isEmpty()) {
        return false;
    }
    QImage frame(_size, QImage::Format_RGB888);
    frame.fill(Qt::black);
    const QImage fitted = picture.size() == _size
                              ? picture
                              : picture.scaled(_size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QPainter(&frame).drawImage((_size.width() - fitted.width()) / 2, (_size.height() - fitted.height()) / 2,
                               fitted);
    for (int i = 0; i < times; ++i) {
        for (int row = 0; row < frame.height(); ++row) {
            _process.write(reinterpret_cast<const char*>(frame.constScanLine(row)), 3 * frame.width());
        }
        while (_process.bytesToWrite() > 0) {
            if (!_process.waitForBytesWritten()) {
                return fail();
            }
        }
    }
    return true;
}

bool LoopEncoder::finish() {
    if (!_error.isEmpty()) {
        return false;
    }
    _process.closeWriteChannel();
    _process.waitForFinished(-1);
    if (_process.exitStatus() != QProcess::NormalExit || _process.exitCode() != 0) {
        return fail();
    }
    if (!_publisher.publish(false)) {
        _error = _publisher.getError();
        return false;
    }
    return true;
}
