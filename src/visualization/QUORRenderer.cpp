// SPDX-License-Identifier: MIT
#include "QUORRenderer.h"

#include "QUORAssert.h"
#include "QUORCameraInteractor.h"
#include "QUORCameraInteractorCallback.h"
#include "QUORColormap.h"
#include "QUORCompassInteractionCallback.h"
#include "QUORCompassRepresentation.h"
#include "QUORDataFrame.h"
#include "QUORDepthRange.h"
#include "QUORDisplayState.h"
#include "QUORFile.h"
#include "QUORFileLeaf.h"
#include "QUORGeneralSettings.h"
#include "QUORLegend.h"
#include "QUORLog.h"
#include "QUORPointWidget.h"
#include "QUORProductSettings.h"
#include "QUORStaticSnapshot.h"
#include "QUORStopwatch.h"

#include <vtkActor.h>
#include <vtkCamera.h>
#include <vtkColorTransferFunction.h>
#include <vtkCompassWidget.h>
#include <vtkLegendBoxActor.h>
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

using Kind = QUORStyleGroup::Kind;

constexpr std::array<QUORStyleGroup::Row, 7> STYLE{{
    {"site/marker/color", Kind::Color, {0.3, 0.3, 0.3}},
    {"site/marker/radius", Kind::Length, {5000.0}},
    {"background/color", Kind::Color, {0.15, 0.25, 0.3}},
    {"ambient/color", Kind::Color, {0.55, 0.6, 0.65}},
    {"light/color", Kind::Color, {1.0, 0.98, 0.9}},
    {"colorscale/background/color", Kind::Color, {0.8, 0.8, 0.8}},
    {"legend/text/color", Kind::Color, {0.0, 0.0, 0.0}},
}};

constexpr QUORPoint3D START_POSITION{0.0, 0.0, 2000000.0};
constexpr QUORPoint3D START_DIRECTION{0.0, 0.000001, -1.0};

// Metres before the vertical scale: no mountain and hardly a product reaches higher, no land lies lower.
constexpr double USUAL_TOP = 30000.0;
constexpr double USUAL_BOTTOM = -500.0;

void logDebug(const QString& text) {
    QUORLog::Instance().logDebug(text);
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

/// A map has a node at the lower seam of each colour, so that its range ends where the last colour begins:
/// the bar's range goes on to that colour's upper seam, or its labels would not fit its colours.
void showLastColor(vtkScalarBarActor* bar, const QUORColormap& colormap) {
    const QVector<double>& seams = colormap.getScale();
    const int last = colormap.getNSeamsInUse() - 1;
    vtkColorTransferFunction* map = colormap.getMap();
    if (map == nullptr || last < 1 || last >= seams.size() || seams[last] <= map->GetRange()[1]) {
        return;
    }
    vtkNew<vtkColorTransferFunction> whole;
    whole->DeepCopy(map);
    std::array<double, 6> node{};
    map->GetNodeValue(map->GetSize() - 1, node.data());
    whole->AddRGBPoint(seams[last], node[1], node[2], node[3], node[4], node[5]);
    bar->SetLookupTable(whole);
}

bool isProduct(int layerKey) {
    return layerKey == QUORDisplayState::PRODUCT_3D_LAYER || layerKey == QUORDisplayState::PRODUCT_2D_LAYER;
}

} // namespace

QUORRenderer::QUORRenderer(vtkRenderWindow* window, QUORCameraInteractorObserver* cameraObserver,
                           QUORPointWidgetObserver* pointObserver, bool withoutInteraction)
    : _window(window),
      _cameraObserver(cameraObserver),
      _pointObserver(pointObserver),
      _withoutInteraction(withoutInteraction),
      _style("RENDERER", STYLE),
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
}

QUORRenderer::~QUORRenderer() {
    const QUORLogScope scope("QUORRenderer::~QUORRenderer");
    _snapshot.reset();
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
    _shown.clear();
    _currentVisualization = nullptr;
}

void QUORRenderer::createRenderers() {
    logDebug(QStringLiteral("creating VTK renderer.."));
    _mainRenderer = vtkSmartPointer<vtkRenderer>::New();
    _mainRenderer->SetViewport(0.0, 0.0, 1.0, 1.0);
    _mainRenderer->LightFollowCameraOff();
    _mainRenderer->TwoSidedLightingOn();
    _parts = vtkSmartPointer<vtkPropAssembly>::New();
    _mainRenderer->AddViewProp(_parts);
    _terrainRenderer = vtkSmartPointer<vtkRenderer>::New();
    _terrainRenderer->LightFollowCameraOff();
    _terrainRenderer->InteractiveOff();
    _terrainParts = vtkSmartPointer<vtkPropAssembly>::New();
    _terrainRenderer->AddViewProp(_terrainParts);

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
                               const std::shared_ptr<const QUORGeneralSettings>& settings) {
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
    _colorBar = colormap.makeBar(colormap.getDataUnits(), 0.1, 0.05, 0.8, 0.95);
    showLastColor(_colorBar, colormap);
    // Else the title touches the first label in small pictures.
    _colorBar->SetVerticalTitleSeparation(8);
    _colorScaleRenderer->RemoveAllViewProps();
    _colorScaleRenderer->AddViewProp(_colorBar);
    updateSceneHeights(*dataFrame, settings->getVerticalScale());
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
    _colorScaleRenderer->RemoveAllViewProps();
    swapParts(item->getResultParts());
    placeSiteMarker();
    if (_pointWidget != nullptr) {
        _pointWidget->SetEnabled(_pointWidgetOn ? 1 : 0);
        setShown(_pointWidget->getParts(), _pointWidgetOn);
    }
    setShown(_compass, _compassOn);
    if (_legend != nullptr) {
        setShown(_legend, _legendOn);
    }
    if (_colorBarOn) {
        if (!_window->HasRenderer(_colorScaleRenderer)) {
            _window->AddRenderer(_colorScaleRenderer);
        }
        if (_colorBar != nullptr) {
            _colorScaleRenderer->AddViewProp(_colorBar);
        }
    } else {
        _window->RemoveRenderer(_colorScaleRenderer);
    }
    logDebug(QStringLiteral("..action took ") + watch.seconds() + QStringLiteral(" seconds."));
}

/// Parts that are shown again keep their graphics buffers; those of the others are given back.
void QUORRenderer::swapParts(const std::vector<QUORVisualizationPipelineItem::ResultPart>& results) {
    for (const Part& old : _shown) {
        const bool stays = std::any_of(results.begin(), results.end(),
                                       [&](const auto& result) { return result.prop == old.prop; });
        if (!stays) {
            old.prop->ReleaseGraphicsResources(_window);
        }
        _terrainParts->RemovePart(old.prop);
        _parts->RemovePart(old.prop);
    }
    _shown.clear();
    for (const auto& result : results) {
        // Drawn before everything else, which only what comes first may be.
        const bool apart = _shown.empty() && result.layerKey == QUORDisplayState::TERRAIN_LAYER;
        (apart ? _terrainParts : _parts)->AddPart(result.prop);
        _shown.push_back({result.layerKey, result.prop});
    }
    _parts->VisibilityOn();
    _terrainParts->VisibilityOn();
}

void QUORRenderer::removeVisualization() {
    const QUORLogScope scope("QUORRenderer::removeVisualization");
    for (const Part& part : _shown) {
        if (isProduct(part.layerKey)) {
            part.prop->ReleaseGraphicsResources(_window);
            _parts->RemovePart(part.prop);
        }
    }
    std::erase_if(_shown, [](const Part& part) { return isProduct(part.layerKey); });
    _parts->VisibilityOff();
    _terrainParts->VisibilityOff();
    setShown(_siteMarker, false);
    if (_pointWidget != nullptr) {
        setShown(_pointWidget->getParts(), false);
    }
    if (_legend != nullptr) {
        setShown(_legend, false);
    }
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

void QUORRenderer::resetCamera() {
    _cameraInteractor->resetCamera();
    _cameraInteractor->applyCamera(false);
}

void QUORRenderer::drawFitted() {
    vtkCamera* camera = _mainRenderer->GetActiveCamera();
    const std::array<double, 2> stated{camera->GetClippingRange()[0], camera->GetClippingRange()[1]};
    const std::array<double, 2> fitted = QUORDepthRange::fit(camera, _lowestHeight, _greatestHeight);
    camera->SetClippingRange(fitted[0], fitted[1]);
    _snapshot->prepare();
    _cameraInteractor->render();
    camera->SetClippingRange(stated[0], stated[1]);
}

void QUORRenderer::render() {
    const QUORLogScope scope("QUORRenderer::render");
    const QUORStopwatch watch;
    // Before the one drawing: the compass widget's own rendering would draw the whole window again.
    _compass->cameraMoved(_cameraInteractor);
    drawFitted();
    logDebug(QStringLiteral("..rendering took ") + watch.seconds() + QStringLiteral(" seconds."));
}

void QUORRenderer::renderWindow() {
    const QUORLogScope scope("QUORRenderer::renderWindow");
    const QUORStopwatch watch;
    drawFitted();
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

vtkRenderer* QUORRenderer::getTerrainRenderer() const {
    return _terrainRenderer;
}

vtkActor* QUORRenderer::getSiteMarker() const {
    return _siteMarker;
}

vtkLegendBoxActor* QUORRenderer::getLegend() const {
    return _legend;
}

QUORCompassRepresentation* QUORRenderer::getCompass() const {
    return _compass;
}

QUORPointWidget* QUORRenderer::getPointWidget() const {
    return _pointWidget;
}
