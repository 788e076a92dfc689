// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

/// Has the command line tool draw, in a process of its own and with the service's settings: the picture of a
/// preset, or a moving picture. One thing at a time; main thread only.
class QUORServicePicture : public QObject {
    Q_OBJECT

public:
    QUORServicePicture();
    /// Ends what is running.
    ~QUORServicePicture() override;

    bool isRunning() const { return _process.state() != QProcess::NotRunning; }
    /// The picture of that product file under the presets of that name, where there are such.
    void draw(const QString& file, const QString& view, const QString& state, const QStringList& options);
    /// A flight round the scene of that product file.
    void drawFlight(const QString& file, const QString& output, const QStringList& options);
    /// A loop of the pictures in that folder, which lives until it stands.
    void joinPictures(const std::shared_ptr<QTemporaryDir>& pictures, const QString& output);
    void cancel();

    /// The tool beside this program, or the one on the search path.
    static QString findTool();

Q_SIGNALS:
    void drawn(const QImage& image);
    void loopWritten(const QString& path);
    void failed(const QString& reason);

private:
    void run(const QStringList& arguments, const QString& output, bool isLoop);
    void onFinished(int exitCode, QProcess::ExitStatus status);

    QTemporaryDir _folder;
    std::shared_ptr<QTemporaryDir> _pictures;
    QProcess _process;
    QString _output;
    bool _isLoop = false;
    bool _isCancelled = false;
};
