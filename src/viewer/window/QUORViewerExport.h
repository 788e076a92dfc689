// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QStringList>

#include <memory>

class QTemporaryDir;
class QUORSceneView;
class QUORServicePicture;
class QUORTimeList;
class QUORViewerSession;

/// Writes what the window shows: its picture, a flight round the scene, and the times of the series as a loop
/// from the present side. Nothing goes into a directory of products, and no half file stays. One thing at a
/// time; main thread only; what it is made of outlives it.
class QUORViewerExport : public QObject {
    Q_OBJECT

public:
    QUORViewerExport(QUORTimeList& times, QUORViewerSession& session, QUORSceneView& view,
                     QUORServicePicture& tool);
    ~QUORViewerExport() override;

    /// PNG where the name has no ending.
    void savePicture(const QString& path);
    /// By the command line tool with those options; `QUORServicePicture` says how it ended.
    void saveFlight(const QString& path, const QStringList& options);
    /// Shows the newest so many times of the series one after the other, then goes back to the present one
    /// and has the tool join the pictures.
    void saveTimes(const QString& path, int count);
    /// Whether times are being gone through.
    bool isRunning() const { return _frames != nullptr; }
    void cancel();

Q_SIGNALS:
    void saved(const QString& path);
    void failed(const QString& reason);
    /// Another time was drawn, or the last one.
    void progressed(int done, int all);

private:
    bool isAllowed(const QString& path);
    void showNext();
    void takeScene();
    void end();

    QUORTimeList& _times;
    QUORViewerSession& _session;
    QUORSceneView& _view;
    QUORServicePicture& _tool;
    QString _output;
    /// Of the times that are still to be shown, the first one being shown now.
    QStringList _waiting;
    int _all = 0;
    QString _before; ///< the file that was shown
    bool _followed = false;
    std::shared_ptr<QTemporaryDir> _frames;
};
