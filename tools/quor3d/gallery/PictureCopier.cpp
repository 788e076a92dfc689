// SPDX-License-Identifier: MIT
#include "PictureCopier.h"

#include "QUORFilePublisher.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>

#include <iostream>

namespace {

/// Enough for the largest picture that the service draws.
constexpr int MOST_MEGABYTES = 1100;

} // namespace

bool PictureCopier::canWrite(const QString& format) {
    return QImageWriter::supportedImageFormats().contains(format.toLatin1());
}

bool PictureCopier::isCurrent(qint64 stamp, const QString& copy) {
    const QFileInfo file(copy);
    return file.isFile() && file.lastModified().toMSecsSinceEpoch() == stamp;
}

bool PictureCopier::fail(const QString& copy, qint64 stamp, const QString& text) {
    _failed.insert(copy, stamp);
    std::cerr << "quor3d gallery: " << text.toStdString() << '\n';
    return false;
}

bool PictureCopier::provide(const QString& picture, qint64 stamp, const QString& copy, const Form& form) {
    if (isCurrent(stamp, copy)) {
        return true;
    }
    if (_failed.value(copy, -1) == stamp) {
        return false;
    }
    QImageReader reader(picture);
    QImageReader::setAllocationLimit(MOST_MEGABYTES);
    QImage image = reader.read();
    if (image.isNull()) {
        return fail(copy, stamp, picture + QStringLiteral(": ") + reader.errorString());
    }
    if (form.width > 0 && image.width() > form.width) {
        image = image.scaledToWidth(form.width, Qt::SmoothTransformation);
    }
    QUORFilePublisher publisher(copy);
    QFile file(publisher.getTemporaryPath());
    if (!publisher.isReady() || !file.open(QIODevice::WriteOnly)) {
        return fail(copy, stamp, copy + QStringLiteral(": ") + publisher.getError());
    }
    QImageWriter writer(&file, form.format);
    writer.setQuality(form.quality);
    const bool written = writer.write(image) && file.flush() &&
                         file.setFileTime(QDateTime::fromMSecsSinceEpoch(stamp), QFile::FileModificationTime);
    file.close();
    if (!written || file.error() != QFile::NoError || !publisher.publish(false)) {
        return fail(copy, stamp,
                    copy + QStringLiteral(": ") + (written ? publisher.getError() : writer.errorString()));
    }
    _failed.remove(copy);
    return true;
}
