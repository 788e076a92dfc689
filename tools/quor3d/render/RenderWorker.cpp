// SPDX-License-Identifier: MIT
#include "RenderWorker.h"

#include "QUOR2DTop.h"
#include "QUOR3DTop.h"
#include "QUORBackgroundSettings.h"
#include "QUORConfig.h"
#include "QUORDataFrame.h"
#include "QUORDataStore.h"
#include "QUORLog.h"
#include "QUOROffscreenVisualizer.h"
#include "QUORProcessSetup.h"
#include "QUORSystem.h"
#include "QUORVisualizationJobs.h"
#include "RenderSettings.h"
#include "RenderTask.h"

#include <QApplication>
#include <QFileInfo>
#include <QJsonDocument>
#include <QMetaObject>

#include <fstream>
#include <iostream>
#include <thread>
#include <unistd.h>

namespace {

const QString TERRAIN_CACHE = QStringLiteral("~/.quor3d/cache/terrain");

/// The leaf of one file in a tree of its own, or why there is none.
template <class Top>
QUORFileLeaf::CPtr findLeaf(const QString& path, QString& error) {
    QUORDirTop::LeftOut leftOut;
    Top top(QFileInfo(path).absolutePath(), {}, leftOut);
    switch (top.addFile(path)) {
    case QUORDirTop::ResultOk:
        return top.findLeaf(QFileInfo(path).fileName());
    case QUORDirTop::ResultWrongType:
        error = QStringLiteral("a product of the other kind");
        break;
    case QUORDirTop::ResultNoData:
    case QUORDirTop::ResultIncomplete:
        error = QStringLiteral("the file is cut short");
        break;
    case QUORDirTop::ResultNotReadable:
        error = QStringLiteral("the file cannot be read");
        break;
    default:
        error = QStringLiteral("not a product file");
    }
    return nullptr;
}

/// Draws tasks one after another, on a thread beside the main one.
class Painter {
public:
    Painter(std::shared_ptr<QUORDataStore> store, QUOROffscreenVisualizer& visualizer, std::ostream& answers)
        : _store(std::move(store)), _visualizer(visualizer), _answers(answers) {}

    void draw(const RenderTask& task) {
        QString error;
        const QUORFileLeaf::CPtr leaf = findLeaf<QUOR3DTop>(task.input, error);
        QUORFileLeaf::CPtr leaf2d;
        if (leaf && task.with != QStringLiteral("none")) {
            leaf2d =
                task.with == QStringLiteral("auto") ? findMatch(leaf) : findLeaf<QUOR2DTop>(task.with, error);
            if (leaf2d && leaf2d->getSite() != leaf->getSite()) {
                error = QStringLiteral("the 2D product is of the site ") + leaf2d->getSite();
            }
        }
        if (!error.isEmpty()) {
            for (const RenderTask::Picture& picture : task.pictures) {
                answer(picture.order.path, false, error);
            }
            return;
        }
        for (std::size_t first = 0; first < task.pictures.size();) {
            std::size_t end = first;
            while (end < task.pictures.size() && task.pictures[end].state == task.pictures[first].state) {
                ++end;
            }
            drawScene(task, leaf, leaf2d, first, end);
            first = end;
        }
    }

    void answer(const QJsonObject& object) {
        _answers << QJsonDocument(object).toJson(QJsonDocument::Compact).constData() << std::endl;
    }

private:
    QUORFileLeaf::CPtr findMatch(const QUORFileLeaf::CPtr& leaf) {
        const QString product = _background.get2DProduct(leaf->getConfiguration());
        if (product.isEmpty() || QUORBackgroundSettings::isNoProduct(product) ||
            _general.get2DDir().isEmpty()) {
            return nullptr;
        }
        if (!_top2d) {
            _top2d = std::make_shared<QUOR2DTop>(_general.get2DDir());
        }
        const QUORFileLeaf::CPtr match =
            _top2d->findBestMatching2DFile(leaf, product, _general.getTimeWindow());
        return match && match->getFile() ? match : nullptr;
    }

    /// The pictures of one display state.
    void drawScene(const RenderTask& task, const QUORFileLeaf::CPtr& leaf, const QUORFileLeaf::CPtr& leaf2d,
                   std::size_t first, std::size_t end) {
        const auto frame = QUORVisualizationJobs::prepareFrame(_store, leaf, _general);
        frame->setDataParams2d(leaf2d ? leaf2d->getProduct() : QString());
        frame->setData2d(leaf2d);
        _background.setDisplayStateName(task.pictures[first].state);
        {
            const QUORConfig::Access held;
            _visualizer.initVisualization(_general, _background);
            frame->updateData3d();
        }
        frame->updateDataRest();
        std::vector<QUORPictureOrder> orders;
        for (std::size_t i = first; i < end; ++i) {
            orders.push_back(task.pictures[i].order);
        }
        _visualizer.startVisualization(frame, orders);
        _visualizer.waitUntilReady();
        for (const QUORPictureOrder& order : _visualizer.getOrders()) {
            answer(order.path, order.isWritten, order.error);
        }
    }

    void answer(const QString& output, bool isWritten, const QString& error) {
        answer({{QStringLiteral("output"), output},
                {QStringLiteral("written"), isWritten},
                {QStringLiteral("error"), error}});
    }

    std::shared_ptr<QUORDataStore> _store;
    QUOROffscreenVisualizer& _visualizer;
    std::ostream& _answers;
    QUORGeneralSettings _general;
    QUORBackgroundSettings _background;
    std::shared_ptr<QUOR2DTop> _top2d;
};

void drawAll(Painter& painter) {
    for (std::string line; std::getline(std::cin, line);) {
        const RenderTask task =
            RenderTask::fromJson(QJsonDocument::fromJson(QByteArray::fromStdString(line)).object());
        try {
            painter.draw(task);
        } catch (const std::exception& error) {
            QUORLog::Instance().logError(task.input + QStringLiteral(": ") +
                                         QString::fromLocal8Bit(error.what()));
        }
        painter.answer({{QStringLiteral("done"), true}});
    }
}

} // namespace

int RenderWorker::run() {
    // What a library prints must not get between the answers.
    const int answersDescriptor = ::dup(STDOUT_FILENO);
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
    QUORProcessSetup::beforeToolkit();
    int count = 1;
    char name[] = "quor3d";
    char* arguments[] = {name, nullptr};
    const QApplication application(count, arguments);
    QUORProcessSetup::afterToolkit();
    QCoreApplication::setOrganizationName(QUORSystem::ORGANIZATION_NAME);
    QCoreApplication::setApplicationName(QStringLiteral("QUOR3D"));
    QUORLog::Instance().logOpen(QString());

    std::string first;
    std::getline(std::cin, first);
    const QJsonObject setup = QJsonDocument::fromJson(QByteArray::fromStdString(first)).object();
    const RenderSettings settings(setup[QStringLiteral("settings")].toString());
    settings.apply();
    std::ofstream answers("/dev/fd/" + std::to_string(answersDescriptor));
    const auto store = std::make_shared<QUORDataStore>(nullptr);
    store->setTerrain(QUORGeneralSettings().getGeoDir(), TERRAIN_CACHE);
    QUOROffscreenVisualizer visualizer;
    Painter painter(store, visualizer, answers);
    std::thread thread([&painter, &application] {
        drawAll(painter);
        QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit,
                                  Qt::QueuedConnection);
    });
    QCoreApplication::exec();
    thread.join();
    return 0;
}
