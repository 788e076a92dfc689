// SPDX-License-Identifier: MIT
#include "QUOROffscreenVisualizer.h"

#include "QUORActivity.h"
#include "QUORAssert.h"
#include "QUORCameraInteractor.h"
#include "QUORConfig.h"
#include "QUORDataFrame.h"
#include "QUOREglRenderWindow.h"
#include "QUORFile.h"
#include "QUORFileLeaf.h"
#include "QUORImageWriter.h"
#include "QUORLog.h"
#include "QUORLogOnce.h"
#include "QUORPictureQueue.h"
#include "QUORPixelReader.h"
#include "QUORRenderWindowFactory.h"
#include "QUORRenderer.h"
#include "QUORStopwatch.h"
#include "QUORViewFit.h"
#include "QUORViewPlan.h"
#include "QUORVisualization.h"

#include <vtkGenericRenderWindowInteractor.h>
#include <vtkImageData.h>
#include <vtkImageWriter.h>
#include <vtkNew.h>
#include <vtkOpenGLRenderWindow.h>

#include <algorithm>
#include <exception>

namespace {

/// How far the default view looks down from, in lengths of the data.
constexpr double DEFAULT_HEIGHT = 2.82;

/// Index of a preset in the list of names that begins with the built-in default, which is also what a name
/// stands for that the list does not hold.
int findPreset(const QString& kind, const QStringList& names, const QString& name) {
    const int index = int(names.indexOf(name));
    if (index >= 0 || name == QUORConfig::VALUE_DEFAULT) {
        QUORLogOnce::forget(kind);
    } else {
        QUORLogOnce::logWarning(kind, QStringLiteral("There is no ") + kind + QStringLiteral(" \"") + name +
                                          QStringLiteral("\": the default is used"));
    }
    const int found = std::max(index, 0);
    logDebug(QStringLiteral("Use ") + kind + QStringLiteral(": (") + QString::number(found) +
             QStringLiteral(") ") + name);
    return found;
}

} // namespace

QUOROffscreenVisualizer::QUOROffscreenVisualizer() {
    const QUORLogScope scope("QUOROffscreenVisualizer::QUOROffscreenVisualizer");
    _visualization = std::make_shared<QUORVisualization>(this);
    _picture = vtkSmartPointer<vtkImageData>::New();
    QString error;
    if (!provideWindow(error)) {
        QUORLog::Instance().logError(QStringLiteral("No image can be rendered, OpenGL is not usable: ") +
                                     error);
    }
}

QUOROffscreenVisualizer::~QUOROffscreenVisualizer() {
    const QUORLogScope scope("QUOROffscreenVisualizer::~QUOROffscreenVisualizer");
    _visualization.reset();
    _renderer.reset();
    _interactor = nullptr;
    _window = nullptr;
}

void QUOROffscreenVisualizer::initVisualization(const QUORGeneralSettings& general,
                                                const QUORBackgroundSettings& background) {
    const QUORConfig::Access oneReading;
    _generalSettings = std::make_shared<QUORGeneralSettings>(general);
    _backgroundSettings = std::make_shared<QUORBackgroundSettings>(background);
    _displayState = std::make_shared<QUORDisplayState>();
    applyPresetDisplayState();
    _generalSettings->loadViewAngles(std::make_shared<QUORViewAngle>());
}

bool QUOROffscreenVisualizer::canVisualize(const std::shared_ptr<QUORDataFrame>& frame,
                                           bool require2d) const {
    if (_displayState->has2DEnabled()) {
        logDebug(QStringLiteral("2d layer is enabled"));
        if (!frame->getData2d()) {
            logDebug(QStringLiteral("Data frame does not have required 2d data"));
            return false;
        }
        return true;
    }
    if (require2d) {
        logDebug(QStringLiteral("Don't want to visualize without 2D data"));
    }
    return !require2d;
}

void QUOROffscreenVisualizer::startVisualization(const std::shared_ptr<QUORDataFrame>& frame,
                                                 const QString& outputFile) {
    QUORPictureOrder order;
    order.path = outputFile;
    order.viewAngle = _backgroundSettings->getViewAngleName();
    order.width = _backgroundSettings->getWidth();
    order.height = _backgroundSettings->getHeight();
    order.format = _backgroundSettings->getOutputFormat();
    startVisualization(frame, std::vector{order});
}

void QUOROffscreenVisualizer::startVisualization(const std::shared_ptr<QUORDataFrame>& frame,
                                                 std::vector<QUORPictureOrder> orders) {
    const QUORLogScope scope("QUOROffscreenVisualizer::startVisualization");
    closeGate();
    _orders = std::move(orders);
    _rendered = false;
    _sceneWatch.restart();
    try {
        _visualization->setSourceData(frame);
        _visualization->updateVisualization(true);
    } catch (...) {
        openGate();
        throw;
    }
}

void QUOROffscreenVisualizer::closeGate() {
    std::unique_lock lock(_gateMutex);
    _gateOpened.wait(lock, [this] { return _gateOpen; });
    _gateOpen = false;
}

void QUOROffscreenVisualizer::openGate() {
    const std::lock_guard lock(_gateMutex);
    _gateOpen = true;
    _gateOpened.notify_all();
}

QUOROffscreenVisualizer::Result QUOROffscreenVisualizer::waitUntilReady() {
    std::unique_lock lock(_gateMutex);
    _gateOpened.wait(lock, [this] { return _gateOpen; });
    if (!_rendered) {
        return NotDrawn;
    }
    return std::ranges::all_of(_orders, &QUORPictureOrder::isWritten) ? Written : NotWritten;
}

QUORGeneralSettings::CPtr QUOROffscreenVisualizer::getVisualizationGeneralSettings() {
    return _generalSettings;
}

QUORDisplayState::CPtr QUOROffscreenVisualizer::getVisualizationDisplayState() {
    return _displayState;
}

void QUOROffscreenVisualizer::applyPresetDisplayState() {
    const QUORLogScope scope("QUOROffscreenVisualizer::applyPresetDisplayState");
    _generalSettings->loadDisplayStates(_displayState);
    const auto& presets = _generalSettings->getDisplayStatePresets();
    logDebug(QStringLiteral("Loaded ") + QString::number(presets.size()) +
             QStringLiteral(" display state presets"));
    const int index =
        findPreset(QStringLiteral("display state preset"), _generalSettings->getDisplayStateNames(),
                   _backgroundSettings->getDisplayStateName());
    const auto preset = index == 0 ? std::make_shared<QUORDisplayState>() : presets[index - 1];
    _displayState->copyState(*preset);
    logDebug(QStringLiteral("Applied display state:"));
    logDebug(QStringLiteral("---"));
    _displayState->printDisplayState();
    logDebug(QStringLiteral("---"));
}

void QUOROffscreenVisualizer::applyPresetViewAngle(const QUORViewAngle::Ptr& viewAngle) {
    applyPresetViewAngle(viewAngle, _backgroundSettings->getViewAngleName());
}

void QUOROffscreenVisualizer::applyPresetViewAngle(const QUORViewAngle::Ptr& viewAngle,
                                                   const QString& preset) {
    const QUORLogScope scope("QUOROffscreenVisualizer::applyPresetViewAngle");
    QUOR_ASSERT(_visualization.get() && _visualization->getDataFrame().get());
    const auto& presets = _generalSettings->getViewAnglePresets();
    logDebug(QStringLiteral("Loaded ") + QString::number(presets.size()) +
             QStringLiteral(" view angle presets"));
    const int index =
        findPreset(QStringLiteral("view angle preset"), _generalSettings->getViewAngleNames(), preset);
    if (index == 0) {
        const QUORFile& file = *_visualization->getDataFrame()->getData3d()->getFile();
        const double side = std::max(file.getLengthAroundRadarM(), file.getWidthAroundRadarM());
        viewAngle->setCameraPosition({0.0, 0.0, DEFAULT_HEIGHT * side});
        viewAngle->setCameraDirection({0.0, 0.000001, -1.0});
    } else {
        viewAngle->setCameraPosition(presets[index - 1]->getCameraPosition());
        viewAngle->setCameraDirection(presets[index - 1]->getCameraDirection());
        if (const auto& fit = presets[index - 1]->getFit()) {
            const QUORViewGeometry::View view = findFit(fit->heading, fit->pitch);
            viewAngle->setCameraPosition(view.position);
            viewAngle->setCameraDirection(view.direction);
        }
    }
    logDebug(QStringLiteral("Applied view angle:"));
    logDebug(QStringLiteral("---"));
    viewAngle->printViewAngle();
    logDebug(QStringLiteral("---"));
}

QUORViewGeometry::View QUOROffscreenVisualizer::findFit(double heading, double pitch) const {
    const QUORFile& file = *_visualization->getDataFrame()->getData3d()->getFile();
    const QUORPoint3D middle = file.getMiddleM();
    const double halfWidth = 0.5 * file.getWidthM();
    const double halfLength = 0.5 * file.getLengthM();
    const double top = (file.getRadarElevation() + file.getHeightM()) * _generalSettings->getVerticalScale();
    const QUORViewFit fit({middle.x - halfWidth, middle.y - halfLength, 0.0},
                          {middle.x + halfWidth, middle.y + halfLength, top});
    const int* size = _window->GetSize();
    return fit.find(heading, pitch,
                    {double(size[0]), double(size[1]),
                     _renderer ? _renderer->getTakenAreas() : std::vector<QUORPictureArea>()});
}

vtkSmartPointer<vtkImageWriter> QUOROffscreenVisualizer::createWriter(int outputFormat) {
    return QUORImageWriter::createWriter(outputFormat);
}

bool QUOROffscreenVisualizer::provideWindow(QString& error) {
    if (_window != nullptr) {
        return true;
    }
    _window = QUORRenderWindowFactory::create(error);
    if (_window == nullptr) {
        return false;
    }
    if (auto* window = QUOREglRenderWindow::SafeDownCast(_window)) {
        window->SetUsingDisplayBuffer(false); // the pixels are read where they are drawn
    }
    _hardware = QUORRenderWindowFactory::isHardware(_window);
    _visualization->setHardware(_hardware);
    _windowDescription = QUORRenderWindowFactory::describe(_window);
    _interactor = vtkSmartPointer<vtkGenericRenderWindowInteractor>::New();
    _interactor->SetRenderWindow(_window);
    // Initialising draws once by itself, and without it nothing is ever drawn.
    _interactor->EnableRenderOff();
    _interactor->Initialize();
    _interactor->EnableRenderOn();
    return true;
}

void QUOROffscreenVisualizer::visualizationFinished(QUORVisualization* visualization) {
    // The last act, when everything that was drawn is gone again: the job goes on at once.
    struct GateOpener {
        QUOROffscreenVisualizer& visualizer;
        ~GateOpener() { visualizer.openGate(); }
    };
    const GateOpener opener{*this};
    const QUORLogScope scope("QUOROffscreenVisualizer::visualizationFinished");
    QUORActivity::Instance().addStage(QUORActivity::Scene, _sceneWatch.elapsed());
    try {
        renderImage(*visualization);
    } catch (const std::exception& e) {
        logFailure(QString::fromLocal8Bit(e.what()));
    } catch (...) {
        logFailure(QStringLiteral("unknown exception"));
    }
    if (_renderer != nullptr) {
        _renderer->removeVisualization();
    }
    visualization->resetVisualization();
}

void QUOROffscreenVisualizer::renderImage(QUORVisualization& visualization) {
    logDebug(QStringLiteral("Creating offscreen render window.."));
    QString error;
    if (!provideWindow(error)) {
        QUORActivity::Instance().setOutcome(QUORActivity::Outcome::NotDrawn);
        logFailure(QStringLiteral("OpenGL is not usable: ") + error);
        return;
    }
    if (!visualization.getVisualizationResult() || !visualization.getDataFrame()) {
        logFailure(QStringLiteral("there is no scene"));
        return;
    }
    if (lacks3DData(visualization)) {
        for (QUORPictureOrder& order : _orders) {
            logDebug(QStringLiteral("Not rendered without its 3D data: ") + order.path);
            order.error = QStringLiteral("its 3D data cannot be drawn");
        }
        return;
    }
    QUORActivity::Instance().setOutcome(QUORActivity::Outcome::NotDrawn);
    if (_orders.size() == 1) {
        drawPicture(visualization, _orders.front());
        readPixels(_picture);
        const QUORActivityStage stage(QUORActivity::Write);
        QUORPictureQueue::write(_picture, _orders.front());
    } else {
        QUORPictureQueue queue;
        for (QUORPictureOrder& order : _orders) {
            drawPicture(visualization, order);
            readPixels(queue.next());
            queue.add(order);
        }
        const QUORActivityStage stage(QUORActivity::Write);
        queue.finish();
    }
    const auto unwritten = std::ranges::find(_orders, false, &QUORPictureOrder::isWritten);
    QUORActivity::Instance().setOutcome(unwritten == _orders.end() ? QUORActivity::Outcome::Written
                                                                   : QUORActivity::Outcome::NotWritten,
                                        _orders.front().path);
}

void QUOROffscreenVisualizer::drawPicture(QUORVisualization& visualization, const QUORPictureOrder& order) {
    const QUORActivityStage stage(QUORActivity::Render);
    prepareWindow(order);
    if (!_rendered) {
        prepareRenderer(visualization);
    }
    placeCamera(order);
    logDebug(QStringLiteral("Rendering visualization.."));
    _renderer->render();
    _rendered = true;
}

void QUOROffscreenVisualizer::readPixels(vtkImageData* picture) {
    const QUORActivityStage stage(QUORActivity::Render);
    const QUORStopwatch watch;
    QUORPixelReader::read(_window, picture);
    logDebug(QStringLiteral("..reading back took ") + watch.seconds() + QStringLiteral(" seconds."));
}

/// Without the echoes of its product an image would say that there are none; why they are missing, the
/// element has said.
bool QUOROffscreenVisualizer::lacks3DData(const QUORVisualization& visualization) const {
    return _displayState->getGroup(QUORDisplayState::RADAR_GROUP)->isVisible() &&
           _displayState->getLayer(QUORDisplayState::PRODUCT_3D_LAYER)->isVisible() &&
           !visualization.getVTKDataSet();
}

void QUOROffscreenVisualizer::logFailure(const QString& reason) {
    for (QUORPictureOrder& order : _orders) {
        if (!order.isWritten && order.error.isEmpty()) {
            order.error = reason;
            QUORLog::Instance().logError(QStringLiteral("Not rendered: ") + order.path +
                                         QStringLiteral(": ") + reason);
        }
    }
}

void QUOROffscreenVisualizer::prepareWindow(const QUORPictureOrder& order) {
    if (_window->GetSize()[0] != order.width || _window->GetSize()[1] != order.height) {
        _window->SetSize(order.width, order.height);
        _interactor->SetSize(order.width, order.height);
    }
    logDebug(QStringLiteral("Hardware acceleration: ") + QString::number(_hardware ? 1 : 0));
    logDebug(QStringLiteral("OpenGL extension manager ") + _windowDescription);
}

void QUOROffscreenVisualizer::prepareRenderer(QUORVisualization& visualization) {
    logDebug(QStringLiteral("Creating renderer.."));
    if (_renderer == nullptr) {
        _renderer = std::make_unique<QUORRenderer>(_window, nullptr, nullptr, true);
    } else {
        _renderer->restart();
    }
    _renderer->setInfoData(visualization.getDataFrame(), _generalSettings, _displayState->has2DEnabled());
    _renderer->toggleLegend(true);
    _renderer->toggleColorScale(true);
    logDebug(QStringLiteral("Setting visualization.."));
    _renderer->setVisualization(visualization.getVisualizationResult());
}

void QUOROffscreenVisualizer::placeCamera(const QUORPictureOrder& order) {
    _renderer->resetCamera();
    const auto viewAngle = std::make_shared<QUORViewAngle>();
    if (order.angles) {
        const auto& [heading, pitch, distance] = *order.angles;
        const QUORViewGeometry::View view =
            distance ? QUORViewPlan{heading, pitch, *distance}.toView() : findFit(heading, pitch);
        viewAngle->setCameraPosition(view.position);
        viewAngle->setCameraDirection(view.direction);
    } else {
        applyPresetViewAngle(viewAngle, order.viewAngle);
    }
    QUORCameraInteractor* camera = _renderer->getCameraInteractor();
    camera->setView(viewAngle->getCameraPosition(), viewAngle->getCameraDirection());
    camera->applyCamera(false);
}
