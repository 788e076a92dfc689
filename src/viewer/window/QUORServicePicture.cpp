// SPDX-License-Identifier: MIT
#include "QUORServicePicture.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QImageReader>

namespace {

constexpr int PATIENCE_MS = 2000;
const QString TOOL = QStringLiteral("quor3d");

} // namespace

QUORServicePicture::QUORServicePicture() {
    connect(&_process, &QProcess::finished, this, &QUORServicePicture::onFinished);
    connect(&_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            Q_EMIT failed(tr("The tool “%1” cannot be started: %2").arg(findTool(), _process.errorString()));
        }
    });
}

QUORServicePicture::~QUORServicePicture() {
    disconnect(&_process, nullptr, this, nullptr);
    cancel();
}

QString QUORServicePicture::findTool() {
    const QString beside = QCoreApplication::applicationDirPath() + QLatin1Char('/') + TOOL;
    return QFileInfo(beside).isExecutable() ? beside : TOOL;
}

void QUORServicePicture::draw(const QString& file, const QString& view, const QString& state,
                              const QStringList& options) {
    const QString output = _folder.filePath(QStringLiteral("picture.png"));
    QFile::remove(output);
    QStringList arguments{QStringLiteral("render"), file, QStringLiteral("-o"), output};
    if (!view.isEmpty()) {
        arguments += {QStringLiteral("--view"), view};
    }
    if (!state.isEmpty()) {
        arguments += {QStringLiteral("--state"), state};
    }
    run(arguments + options, output, false);
}

void QUORServicePicture::drawFlight(const QString& file, const QString& output, const QStringList& options) {
    run(QStringList{QStringLiteral("loop"), QStringLiteral("--orbit"), file, QStringLiteral("-o"), output} +
            options,
        output, true);
}

void QUORServicePicture::joinPictures(const std::shared_ptr<QTemporaryDir>& pictures, const QString& output) {
    _pictures = pictures;
    run({QStringLiteral("loop"), pictures->path(), QStringLiteral("-o"), output}, output, true);
}

void QUORServicePicture::run(const QStringList& arguments, const QString& output, bool isLoop) {
    if (isRunning()) {
        return;
    }
    _output = output;
    _isLoop = isLoop;
    _isCancelled = false;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    _process.setProcessEnvironment(environment);
    _process.start(findTool(), arguments);
}

void QUORServicePicture::cancel() {
    if (isRunning()) {
        _isCancelled = true;
        _process.terminate();
        if (!_process.waitForFinished(PATIENCE_MS)) {
            _process.kill();
            _process.waitForFinished(PATIENCE_MS);
        }
    }
}

void QUORServicePicture::onFinished(int exitCode, QProcess::ExitStatus status) {
    _pictures.reset();
    if (_isCancelled) {
        Q_EMIT failed(tr("Cancelled."));
        return;
    }
    const QString said = QString::fromLocal8Bit(_process.readAllStandardError()).trimmed();
    if (status != QProcess::NormalExit || exitCode != 0) {
        Q_EMIT failed(said.isEmpty() ? tr("The tool gave no picture.") : said);
    } else if (_isLoop) {
        Q_EMIT loopWritten(_output);
    } else if (const QImage image(_output); !image.isNull()) {
        Q_EMIT drawn(image);
    } else {
        Q_EMIT failed(tr("The picture cannot be read: %1").arg(_output));
    }
}
