// SPDX-License-Identifier: MIT
#include "QUORViewerExport.h"

#include "QUORSceneView.h"
#include "QUORServicePicture.h"
#include "QUORTimeList.h"
#include "QUORViewerSession.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QSaveFile>
#include <QTemporaryDir>

#include <algorithm>

namespace {

QString folderOf(const QString& path) {
    return QFileInfo(QFileInfo(path).absolutePath()).canonicalFilePath();
}

} // namespace

QUORViewerExport::QUORViewerExport(QUORTimeList& times, QUORViewerSession& session, QUORSceneView& view,
                                   QUORServicePicture& tool)
    : _times(times), _session(session), _view(view), _tool(tool) {
    // Not from within the session's own steps.
    connect(&_session, &QUORViewerSession::sceneChanged, this, &QUORViewerExport::takeScene,
            Qt::QueuedConnection);
    connect(
        &_session, &QUORViewerSession::failed, this,
        [this] {
            if (isRunning() && !_waiting.isEmpty()) {
                _waiting.removeFirst();
                showNext();
            }
        },
        Qt::QueuedConnection);
}

QUORViewerExport::~QUORViewerExport() = default;

bool QUORViewerExport::isAllowed(const QString& path) {
    const QUORDataStore::Ptr store = _times.getStore();
    const QString folder = folderOf(path);
    for (const QString& products : {store->getPath3d(), store->getPath2d()}) {
        if (!products.isEmpty() && QFileInfo(products).canonicalFilePath() == folder) {
            Q_EMIT failed(tr("Nothing is written into a directory of products: %1").arg(folder));
            return false;
        }
    }
    return true;
}

void QUORViewerExport::savePicture(const QString& path) {
    const QString target = QFileInfo(path).suffix().isEmpty() ? path + QStringLiteral(".png") : path;
    const QImage image = _view.getPicture();
    if (image.isNull()) {
        Q_EMIT failed(tr("There is no picture yet."));
        return;
    }
    if (!isAllowed(target)) {
        return;
    }
    QSaveFile file(target);
    const QByteArray format = QFileInfo(target).suffix().toLatin1();
    if (file.open(QIODevice::WriteOnly) && !image.save(&file, format.constData())) {
        Q_EMIT failed(tr("%1 could not be written: no pictures of the kind “%2” can be written here.")
                          .arg(target, QString::fromLatin1(format)));
    } else if (!file.commit()) {
        Q_EMIT failed(tr("%1 could not be written: %2").arg(target, file.errorString()));
    } else {
        Q_EMIT saved(target);
    }
}

void QUORViewerExport::saveFlight(const QString& path, const QStringList& options) {
    if (_session.getScene().isComplete() && !_tool.isRunning() && !isRunning() && isAllowed(path)) {
        _tool.drawFlight(_session.getScene().leaf->getPath(), path, options);
    }
}

void QUORViewerExport::saveTimes(const QString& path, int count) {
    if (!_session.getScene().isComplete() || _tool.isRunning() || isRunning() || !isAllowed(path)) {
        return;
    }
    auto frames = std::make_shared<QTemporaryDir>();
    if (!frames->isValid()) {
        Q_EMIT failed(tr("%1 could not be written: %2").arg(path, frames->errorString()));
        return;
    }
    _waiting.clear();
    const auto& times = _times.getTimes();
    for (auto i = std::max<qsizetype>(0, times.size() - count); i < times.size(); ++i) {
        _waiting.append(times.at(i)->getPath());
    }
    _frames = frames;
    _output = path;
    _all = int(_waiting.size());
    _before = _session.getScene().leaf->getPath();
    _followed = _times.isFollowing();
    _times.setFollowing(false);
    showNext();
}

void QUORViewerExport::showNext() {
    Q_EMIT progressed(_all - int(_waiting.size()), _all);
    while (!_waiting.isEmpty()) {
        const QString path = _waiting.constFirst();
        if (_session.getScene().isComplete() && _session.getScene().leaf->getPath() == path &&
            !_session.isBusy()) {
            takeScene();
            return;
        }
        if (_times.chooseFile(path)) {
            return; // its scene comes, or the reason why not
        }
        _waiting.removeFirst(); // gone by now
    }
    const std::shared_ptr<QTemporaryDir> frames = _frames;
    end();
    if (QDir(frames->path()).isEmpty()) {
        Q_EMIT failed(tr("There is no picture yet."));
    } else {
        _tool.joinPictures(frames, _output);
    }
}

void QUORViewerExport::takeScene() {
    if (!isRunning() || _waiting.isEmpty()) {
        return;
    }
    const QUORViewerScene& scene = _session.getScene();
    if (scene.leaf->getPath() != _waiting.constFirst()) {
        showNext();
        return;
    }
    const QString name = QStringLiteral("times_Z_%1.png").arg(scene.leaf->getTime());
    if (!_view.getPicture().save(_frames->filePath(name))) {
        end();
        Q_EMIT failed(tr("%1 could not be written.").arg(_output));
        return;
    }
    _waiting.removeFirst();
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (isRunning()) {
                showNext();
            }
        },
        Qt::QueuedConnection);
}

void QUORViewerExport::cancel() {
    if (isRunning()) {
        end();
        Q_EMIT failed(tr("Cancelled."));
    }
}

void QUORViewerExport::end() {
    _frames.reset();
    _waiting.clear();
    _times.chooseFile(_before);
    if (_followed) {
        _times.setFollowing(true);
    }
}
