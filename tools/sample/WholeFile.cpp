// SPDX-License-Identifier: MIT
#include "WholeFile.h"

#include "QUORFilePublisher.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

QString writeWholeFile(const QString& path, const QByteArray& bytes) {
    const auto failure = [&](const QString& reason) { return path + QStringLiteral(": ") + reason; };
    if (!QDir().mkpath(QFileInfo(path).path())) {
        return failure(QStringLiteral("the folder cannot be made"));
    }
    QUORFilePublisher publisher(path);
    if (!publisher.isReady()) {
        return failure(publisher.getError());
    }
    QFile file(publisher.getTemporaryPath());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || file.write(bytes) != bytes.size()) {
        return failure(file.errorString());
    }
    file.close();
    return publisher.publish(false) ? QString() : failure(publisher.getError());
}
