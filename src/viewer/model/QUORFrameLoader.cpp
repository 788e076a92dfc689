// SPDX-License-Identifier: MIT
#include "QUORFrameLoader.h"

#include "QUORBackgroundSettings.h"
#include "QUORFileLeaf.h"

#include <cmath>
#include <exception>

namespace {

/// As the service asks for terrain and landmarks.
constexpr double TERRAIN_FACTOR = 0.75;

QUORViewerScene read(const QUORFrameLoader::Order& order, QString& error) {
    const QUORFile::CPtr file = order.leaf->getFile();
    error = file->getGridError();
    if (error.isEmpty() && !file->isUnchanged()) {
        error = QUORFrameLoader::tr("the file is gone or holds another product by now");
    }
    if (!error.isEmpty()) {
        return {};
    }
    QUORViewerScene scene;
    scene.leaf = order.leaf;
    scene.frame = std::make_shared<QUORDataFrame>(order.store);
    scene.frame->setData3d(order.leaf);
    scene.frame->setProductSettings(order.productSettings);
    scene.frame->setMoment(order.leaf->getTime(), order.timeWindow);
    scene.frame->setDataParams2d(order.product2d);
    scene.frame->setDataParamsTerrain(
        TERRAIN_FACTOR * std::hypot(file->getLengthAroundRadarM(), file->getWidthAroundRadarM()));
    scene.frame->updateData3d();
    scene.frame->updateDataRest();
    const QUOR2DTop::Ptr top = order.store->get2DTop();
    if (!scene.frame->getData2d() && top && !QUORBackgroundSettings::isNoProduct(order.product2d)) {
        const QStringList others = top->findAllMatchingProducts(order.leaf, order.timeWindow, false);
        if (!others.isEmpty()) {
            scene.frame->setDataParams2d(others.constFirst());
            scene.frame->updateDataRest();
        }
    }
    const QUORFileLeaf::CPtr layer = scene.frame->getData2d();
    scene.reader = std::make_shared<QUORProductReader>(file, layer ? layer->getFile() : nullptr);
    return scene;
}

} // namespace

QUORFrameLoader::QUORFrameLoader() : _worker(new QObject) {
    _thread.setObjectName(QStringLiteral("loader"));
    _worker->moveToThread(&_thread);
    connect(&_thread, &QThread::finished, _worker, &QObject::deleteLater);
    _thread.start();
}

QUORFrameLoader::~QUORFrameLoader() {
    _thread.quit();
    _thread.wait();
}

void QUORFrameLoader::load(const Order& order, const Done& done) {
    const auto work = [this, order, done] {
        QString error;
        QUORViewerScene scene;
        try {
            scene = read(order, error);
        } catch (const std::exception& failure) {
            scene = {};
            error = QString::fromLocal8Bit(failure.what());
        }
        const auto tell = [scene = std::move(scene), error, done] { done(scene, error); };
        QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
    };
    QMetaObject::invokeMethod(_worker, work, Qt::QueuedConnection);
}
