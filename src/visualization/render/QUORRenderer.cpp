// SPDX-License-Identifier: MIT
#include "QUORRenderer.h"

#include "QUORAssert.h"
#include "QUORCameraInteractor.h"
#include "QUORCameraInteractorCallback.h"
#include "QUORCoarseTerrain.h"
#include "QUORColorBar.h"
#include "QUORColormap.h"
#include "QUORCompassInteractionCallback.h"
#include "QUORCompassRepresentation.h"
#include "QUORDataFrame.h"
#include "QUORDepthRange.h"
#include "QUORFile.h"
#include "QUORFileLeaf.h"
#include "QUORGeneralSettings.h"
#include "QUORLabelLayout.h"
#include "QUORLegend.h"
#include "QUORLegendBox.h"
#include "QUORLegendDetails.h"
#include "QUORLog.h"
#include "QUORPointWidget.h"
#include "QUORProductSettings.h"
#include "QUORSceneParts.h"
#include "QUORStaticSnapshot.h"
#include "QUORStopwatch.h"

#include <vtkActor.h>
#include <vtkCamera.h>
#include <vtkCommand.h>
#include <vtkCompassWidget.h>
#include <vtkLight.h>
#include <vtkLightCollection.h>
#include <vtkNew.h>
#include <vtkPolyDataMapper.h>
#include <vtkPropAssembly.h>
#include <vtkPropCollection.h>
#include <vtkProperty.h>
#include <vtkRenderWindow.h>
#include <vtkRenderWindowInteractor.h>
#include <vtkRenderer.h>
#include <vtkScalarBarActor.h>
#include <vtkSphereSource.h>

#include <algorithm>
#include <array>

namespace {

constexpr QUORPoint3D START_POSITION{0.0, 0.0, 2000000.0};
constexpr QUORPoint3D START_DIRECTION{0.0, 0.000001, -1.0};

/// More isovalues have no room in a line of the legend.
constexpr std::size_t MOST_SHELLS = 6;

// Metres before the vertical scale: no mountain and hardly a product reaches higher, no land lies lower.
constexpr double USUAL_TOP = 30000.0;
constexpr double USUAL_BOTTOM = -500.0;

/// About the length of a bar with the labels that a line of the legend has room for.
constexpr int KEY_PIXELS = 75;

/// A patch of colour for each value, and the unit after the last.
QUORLegendDetails::Line makeKey(const QList<double>& values, const QUORColormap& colormap) {
    QUORLegendDetails::Line line;
    for (const double value : values) {
        line.push_back({QString::number(value), colormap.getColor(value)});
    }
    if (!line.empty()) {
        line.back().text += QLatin1Char(' ') + colormap.getDataUnits();
    }
    return line;
}

void logToggle(const char* what, bool on) {
    logDebug(QStringLiteral("--- QUORRenderer: ") + QLatin1String(what) +
             (on ? QStringLiteral(" on") : QStringLiteral(" off")));
}

void setColor(vtkRenderer* renderer, const QUORStyleGroup::Color& color) {
    renderer->SetBackground(color[0], color[1], color[2]);
}

vtkSmartPointer<vtkLight> makeLight(double y, double z) {
    auto light = vtkSmartPointer<vtkLight>::New();
    light->PositionalOff();
    light->SetLightTypeToSceneLight();
    light->SetFocalPoint(0.0, 0.0, 0.0);
    light->SetPosition(0.0, y, z);
    return light;
}

} // namespace

QUORRenderer::QUORRenderer(vtkRenderWindow* window, QUORCameraInteractorObserver* cameraObserver,
                           QUORPointWidgetObserver* pointObserver, bool withoutInteraction)
    : _window(window),
      _cameraObserver(cameraObserver),
      _pointObserver(pointObserver),
      _withoutInteraction(withoutInteraction),
      _labels(std::make_unique<QUORLabelLayout>()),
      _style("RENDERER"),
      _lowestHeight(USUAL_BOTTOM),
      _greatestHeight(USUAL_TOP) {
    const QUORLogScope scope("QUORRenderer::QUORRenderer");
    createRenderers();
    createCamera();
    createCompass();
    if (!_withoutInteraction) {
        logDebug(QStringLiteral("setting up interactions.."));
        createInteractions();
    }
    resetModel();
    logDebug(QStringLiteral("setting up lighting.."));
    createLights();
    createSiteMarker();
    updateLights();
    _siteSphere->SetRadius(_style.number("site/marker/radius"));
    _snapshot = std::make_unique<QUORStaticSnapshot>(_terrainRenderer, _mainRenderer);
    observeDrawing(vtkCommand::StartEvent, &QUORRenderer::onDrawingStarts);
    observeDrawing(vtkCommand::EndEvent, &QUORRenderer::onDrawingEnds);
}

QUORRenderer::~QUORRenderer() {
    const QUORLogScope scope("QUORRenderer::~QUORRenderer");
    for (const unsigned long observer : _drawingObservers) {
        _window->RemoveObserver(observer);
    }
    _snapshot.reset();
    _coarseTerrain.reset();
    _compassWidget->SetEnabled(0);
    _compassWidget->SetInteractor(nullptr);
    _compass->SetRenderer(nullptr);
    if (_pointWidget != nullptr) {
        _pointWidget->SetEnabled(0);
        _pointWidget->SetInteractor(nullptr);
    }
    _window->GetInteractor()->SetInteractorStyle(nullptr);
    for (vtkRenderer* renderer : {_colorScaleRenderer.Get(), _mainRenderer.Get(), _terrainRenderer.Get()}) {
        _window->RemoveRenderer(renderer);
    }
    _labels.reset();
    _parts.reset();
    _currentVisualization = nullptr;
}

void QUORRenderer::createRenderers() {
    logDebug(QStringLiteral("creating VTK renderer.."));
    _mainRenderer = vtkSmartPointer<vtkRenderer>::New();
    _mainRenderer->SetViewport(0.0, 0.0, 1.0, 1.0);
    _mainRenderer->LightFollowCameraOff();
    _mainRenderer->TwoSidedLightingOn();
    _terrainRenderer = vtkSmartPointer<vtkRenderer>::New();
    _terrainRenderer->LightFollowCameraOff();
    _terrainRenderer->InteractiveOff();
    _parts = std::make_unique<QUORSceneParts>(_terrainRenderer, _mainRenderer);
    _coarseTerrain = std::make_unique<QUORCoarseTerrain>(_terrainRenderer);

    logDebug(QStringLiteral("creating VTK color scale renderer.."));
    _colorScaleRenderer = vtkSmartPointer<vtkRenderer>::New();
    _colorScaleRenderer->SetViewport(0.01, 0.59, 0.05, 0.99);
    _colorScaleRenderer->InteractiveOff();

    logDebug(QStringLiteral("adding VTK renderer to render window.."));
    _window->AddRenderer(_terrainRenderer);
    _window->AddRenderer(_mainRenderer);
}

void QUORRenderer::createCamera() {
    logDebug(QStringLiteral("creating default camera.."));
    _mainRenderer->ResetCamera();
    _terrainRenderer->SetActiveCamera(_mainRenderer->GetActiveCamera());
    _cameraInteractor = vtkSmartPointer<QUORCameraInteractor>::New();
    _cameraInteractor->SetDefaultRenderer(_mainRenderer);
    _cameraInteractor->SetCurrentRenderer(_mainRenderer);
    _window->GetInteractor()->SetInteractorStyle(_cameraInteractor);
}

void QUORRenderer::createCompass() {
    _compass = vtkSmartPointer<QUORCompassRepresentation>::New();
    _compass->SetRenderer(_mainRenderer);
    _compassWidget = vtkSmartPointer<vtkCompassWidget>::New();
    _compassWidget->SetInteractor(_window->GetInteractor());
    _compassWidget->SetDefaultRenderer(_mainRenderer);
    _compassWidget->SetCurrentRenderer(_mainRenderer);
    _compassWidget->SetRepresentation(_compass);
    _compassWidget->SetEnabled(1);
    vtkNew<QUORCameraInteractorCallback> follow;
    follow->setObserver(_compass);
    _cameraInteractor->AddObserver(vtkCommand::UserEvent, follow);
}

void QUORRenderer::createInteractions() {
    _pointWidget = vtkSmartPointer<QUORPointWidget>::New();
    _pointWidget->init(_pointObserver);
    _pointWidget->SetInteractor(_window->GetInteractor());
    _pointWidget->SetDefaultRenderer(_mainRenderer);
    _pointWidget->SetCurrentRenderer(_mainRenderer);
    if (_cameraObserver != nullptr) {
        vtkNew<QUORCameraInteractorCallback> notify;
        notify->setObserver(_cameraObserver);
        _cameraInteractor->AddObserver(vtkCommand::UserEvent, notify);
    }
    vtkNew<QUORCompassInteractionCallback> turn;
    turn->setCamera(_cameraInteractor);
    _compassWidget->AddObserver(vtkCommand::InteractionEvent, turn);
}

void QUORRenderer::resetModel() {
    _cameraInteractor->resetCamera(START_POSITION, START_DIRECTION, 0.0, 0.0);
    _cameraInteractor->applyCamera(false);
}

void QUORRenderer::createLights() {
    const vtkSmartPointer<vtkLight> sun = makeLight(-500.0, 2000.0);
    const vtkSmartPointer<vtkLight> fill = makeLight(500.0, 0.0);
    fill->SetColor(0.2, 0.2, 0.25);
    for (vtkRenderer* renderer : {_mainRenderer.Get(), _terrainRenderer.Get()}) {
        renderer->AddLight(sun);
        renderer->AddLight(fill);
    }
}

void QUORRenderer::createSiteMarker() {
    _siteSphere = vtkSmartPointer<vtkSphereSource>::New();
    vtkNew<vtkPolyDataMapper> mapper;
    mapper->SetInputConnection(_siteSphere->GetOutputPort());
    mapper->ScalarVisibilityOff();
    _siteMarker = vtkSmartPointer<vtkActor>::New();
    _siteMarker->SetMapper(mapper);
    _siteMarker->GetProperty()->SetAmbient(1.0);
    _siteMarker->GetProperty()->SetDiffuse(1.0);
    _siteMarker->VisibilityOn();
}

void QUORRenderer::restart() {
    updateLights();
    _siteSphere->SetRadius(_style.number("site/marker/radius"));
    resetModel();
}

void QUORRenderer::loadStyle(bool night) {
    const QUORLogScope scope("QUORRenderer::loadStyle");
    _style.load(night);
}

void QUORRenderer::updateLights() {
    loadStyle(_night);
    setColor(_colorScaleRenderer, _style.color("colorscale/background/color"));
    const QUORStyleGroup::Color& ambient = _style.color("ambient/color");
    for (vtkRenderer* renderer : {_mainRenderer.Get(), _terrainRenderer.Get()}) {
        setColor(renderer, _style.color("background/color"));
        renderer->SetAmbient(ambient[0], ambient[1], ambient[2]);
    }
    const QUORStyleGroup::Color& sun = _style.color("light/color");
    if (auto* light = vtkLight::SafeDownCast(_mainRenderer->GetLights()->GetItemAsObject(0))) {
        light->SetColor(sun[0], sun[1], sun[2]);
    }
    if (_legend != nullptr) {
        QUORLegend::setColors(_legend, _style.color("legend/text/color"),
                              _style.color("colorscale/background/color"));
    }
    _compass->toggleDisplayMode(_night);
    const QUORStyleGroup::Color& marker = _style.color("site/marker/color");
    _siteMarker->GetProperty()->SetColor(marker[0], marker[1], marker[2]);
}

void QUORRenderer::setInfoData(const std::shared_ptr<const QUORDataFrame>& dataFrame,
                               const std::shared_ptr<const QUORGeneralSettings>& settings, bool with2d) {
    QUOR_ASSERT(dataFrame);
    QUOR_ASSERT(dataFrame->getData3d());
    QUOR_ASSERT(settings);
    _mainRenderer->RemoveViewProp(_legend);
    _legend = nullptr;
    _legendLines = dataFrame->getLegend(settings);
    if (_legendLines.isEmpty()) {
        logDebug(QStringLiteral("No legend!"));
    } else {
        _legend = QUORLegend::make(_legendLines);
        QUORLegend::setColors(_legend, _style.color("legend/text/color"),
                              _style.color("colorscale/background/color"));
        _mainRenderer->AddViewProp(_legend);
    }
    const QUORColormap colormap(dataFrame->getProductSettings()->getColorMapName(),
                                dataFrame->getData3d()->getFile()->getDataType(), QUORColormap::Display);
    updateColorBar(*dataFrame, colormap);
    makeLegendDetails(*dataFrame, *settings, colormap, with2d);
    updateSceneHeights(*dataFrame, settings->getVerticalScale());
}

/// Its letters and swatches cost more than most of a scene.
void QUORRenderer::updateColorBar(const QUORDataFrame& frame, const QUORColormap& colormap) {
    const QString name = frame.getProductSettings()->getColorMapName();
    const int type = frame.getData3d()->getFile()->getRawType();
    const QStringList key{name, QString::number(type), QUORColormap::makeStamp()};
    if (_colorBar == nullptr || key != _colorBarKey) {
        _colorBar = QUORColorBar::make(colormap);
        _colorBarKey = key;
        _colorScaleRenderer->RemoveAllViewProps();
        _colorScaleRenderer->AddViewProp(_colorBar);
    }
}

void QUORRenderer::makeLegendDetails(const QUORDataFrame& frame, const QUORGeneralSettings& settings,
                                     const QUORColormap& colormap, bool with2d) {
    if (_legendDetails) {
        setShown(_legendDetails->getProp(), false);
        _legendDetails->getProp()->ReleaseGraphicsResources(_window);
        _legendDetails.reset();
    }
    if (!_legend || _style.number("legend/details") < 0.5) {
        return;
    }
    std::vector<QUORLegendDetails::Line> lines;
    for (const QString& text : frame.getLegendDetails(settings, with2d)) {
        lines.push_back({{text}});
    }
    if (with2d && frame.getData2d()) {
        const QUORColormap flat(QStringLiteral("Default"), frame.getData2d()->getFile()->getDataType(),
                                QUORColormap::Display);
        // What the bar shows the colours of needs no key.
        if (flat.getDataUnits() != colormap.getDataUnits()) {
            lines.push_back(makeKey(QUORColorBar::pickValues(flat, KEY_PIXELS), flat));
        }
    }
    const QUORProductSettings& product = *frame.getProductSettings();
    if (product.getRenderingType() == QUORProductSettings::Surface) {
        lines.push_back(makeKey(product.getSurfaces().keys(), colormap));
    } else {
        lines.push_back(makeKey({product.getVolumeValueLow(), product.getVolumeValueHigh()}, colormap));
        lines.back().front().text += QStringLiteral(" to");
    }
    std::erase_if(lines, [](const auto& line) { return line.empty() || line.size() > MOST_SHELLS; });
    _legendDetails = std::make_unique<QUORLegendDetails>(lines);
    _legendDetails->setColors(_style.color("legend/text/color"), _style.color("colorscale/background/color"));
}

void QUORRenderer::updateSceneHeights(const QUORDataFrame& frame, double verticalScale) {
    const QUORFile::CPtr file = frame.getData3d()->getFile();
    const double bottom = file->getRadarElevation();
    const double top = bottom + file->getHeightM();
    _lowestHeight = std::min(bottom, USUAL_BOTTOM) * verticalScale;
    _greatestHeight = std::max(top, USUAL_TOP) * verticalScale;
}

void QUORRenderer::setVisualization(const QUORVisualizationPipelineItem::Ptr& item) {
    const QUORLogScope scope("QUORRenderer::setVisualization");
    const QUORStopwatch watch;
    _currentVisualization = item;
    QUOR_ASSERT(_currentVisualization);
    QUOR_ASSERT(_currentVisualization->getResults());
    _parts->show(item->getResultParts(), _window);
    _coarseTerrain->hide();
    placeSiteMarker();
    if (_pointWidget != nullptr) {
        _pointWidget->SetEnabled(_pointWidgetOn ? 1 : 0);
        setShown(_pointWidget->getParts(), _pointWidgetOn);
    }
    setShown(_compass, _compassOn);
    if (_legend != nullptr) {
        setShown(_legend, _legendOn);
    }
    if (_legendDetails) {
        setShown(_legendDetails->getProp(), _legendOn && _legend != nullptr);
    }
    _labels->collect(item->getResultParts());
    if (_colorBarOn) {
        if (!_window->HasRenderer(_colorScaleRenderer)) {
            _window->AddRenderer(_colorScaleRenderer);
        }
    } else {
        _window->RemoveRenderer(_colorScaleRenderer);
    }
    logDebug(QStringLiteral("..action took ") + watch.seconds() + QStringLiteral(" seconds."));
}

void QUORRenderer::removeVisualization() {
    const QUORLogScope scope("QUORRenderer::removeVisualization");
    _parts->hide(_window);
    setShown(_siteMarker, false);
    if (_pointWidget != nullptr) {
        setShown(_pointWidget->getParts(), false);
    }
    if (_legend != nullptr) {
        setShown(_legend, false);
    }
    if (_legendDetails) {
        setShown(_legendDetails->getProp(), false);
    }
    _labels->collect({});
    setShown(_compass, true);
    _currentVisualization = nullptr;
}

void QUORRenderer::placeSiteMarker() {
    const bool known = !_currentVisualization->getSite().isEmpty();
    if (known) {
        const QUORPoint3D position = _currentVisualization->getRadarPosition();
        _siteMarker->SetPosition(position.x, position.y, position.z);
    }
    setShown(_siteMarker, known);
}

void QUORRenderer::setShown(vtkProp* prop, bool shown) {
    if (!shown) {
        _mainRenderer->RemoveViewProp(prop);
    } else if (!_mainRenderer->HasViewProp(prop)) {
        _mainRenderer->AddViewProp(prop);
    }
}

std::vector<QUORPictureArea> QUORRenderer::getTakenAreas() const {
    std::vector<QUORPictureArea> areas;
    if (_colorBarOn && _colorBar != nullptr) {
        const double* place = _colorScaleRenderer->GetViewport();
        areas.push_back({place[0], place[1], place[2], place[3]});
    }
    if (_legendOn && _legend != nullptr) {
        areas.push_back(QUORLegendDetails::getArea(_legendDetails ? _legendDetails->countLines() : 0));
    }
    if (_compassOn) {
        areas.push_back(_compass->getArea());
    }
    return areas;
}

void QUORRenderer::toggleCompass(bool on) {
    _compassOn = on;
    logToggle("Compass", on);
}

void QUORRenderer::toggleColorScale(bool on) {
    _colorBarOn = on;
    logToggle("Color bar", on);
}

void QUORRenderer::toggleLegend(bool on) {
    _legendOn = on;
    logToggle("Legend", on);
}

void QUORRenderer::togglePointWidget(bool on, bool force) {
    if (_pointWidget == nullptr) {
        return;
    }
    if (on != _pointWidgetOn || force) {
        logDebug(on ? QStringLiteral("QUORRenderer::togglePointWidget(): enabled.")
                    : QStringLiteral("QUORRenderer::togglePointWidget(): disabled."));
        _pointWidget->SetEnabled(on ? 1 : 0);
        setShown(_pointWidget->getParts(), on);
    }
    _pointWidgetOn = on;
}

void QUORRenderer::setMoving(bool moving) {
    vtkProp* const terrain = moving ? _parts->getTerrain() : nullptr;
    const bool coarse = terrain != nullptr && _coarseTerrain->show(terrain);
    if (!coarse) {
        _coarseTerrain->hide();
    }
    _parts->setStaticsDrawn(!coarse);
}

void QUORRenderer::resetCamera() {
    _cameraInteractor->resetCamera();
    _cameraInteractor->applyCamera(false);
}

void QUORRenderer::observeDrawing(unsigned long event, void (QUORRenderer::*handler)()) {
    _drawingObservers.push_back(_window->AddObserver(event, this, handler));
}

void QUORRenderer::onDrawingStarts() {
    vtkCamera* camera = _mainRenderer->GetActiveCamera();
    camera->GetClippingRange(_statedRange.data());
    const std::array<double, 2> fitted = QUORDepthRange::fit(camera, _lowestHeight, _greatestHeight);
    camera->SetClippingRange(fitted[0], fitted[1]);
    if (_legendDetails) {
        _legendDetails->layOut(_mainRenderer, _legend->FindLayout(_mainRenderer));
    }
    _labels->arrange(_mainRenderer, getTakenAreas(), _style.number("label/apart") > 0.5);
    _snapshot->prepare();
    _isCopying = _snapshot->isValid();
}

void QUORRenderer::onDrawingEnds() {
    if (_withoutInteraction && !_isCopying && _snapshot->isValid()) {
        _parts->releaseStatics(_window);
    }
    _mainRenderer->GetActiveCamera()->SetClippingRange(_statedRange.data());
}

void QUORRenderer::render() {
    const QUORLogScope scope("QUORRenderer::render");
    const QUORStopwatch watch;
    // Before the one drawing: the compass widget's own rendering would draw the whole window again.
    _compass->cameraMoved(_cameraInteractor);
    _cameraInteractor->render();
    logDebug(QStringLiteral("..rendering took ") + watch.seconds() + QStringLiteral(" seconds."));
}

void QUORRenderer::renderWindow() {
    const QUORLogScope scope("QUORRenderer::renderWindow");
    const QUORStopwatch watch;
    _cameraInteractor->render();
    _window->Render();
    logDebug(QStringLiteral("..rendering took ") + watch.seconds() + QStringLiteral(" seconds."));
}

QUORCameraInteractor* QUORRenderer::getCameraInteractor() const {
    return _cameraInteractor;
}

vtkRenderer* QUORRenderer::getMainRenderer() const {
    return _mainRenderer;
}

vtkRenderer* QUORRenderer::getColorScaleRenderer() const {
    return _colorScaleRenderer;
}

vtkActor* QUORRenderer::getSiteMarker() const {
    return _siteMarker;
}

QUORCompassRepresentation* QUORRenderer::getCompass() const {
    return _compass;
}

QUORPointWidget* QUORRenderer::getPointWidget() const {
    return _pointWidget;
}
