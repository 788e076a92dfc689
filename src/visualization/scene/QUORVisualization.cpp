// SPDX-License-Identifier: MIT
#include "QUORVisualization.h"

#include "QUORAssert.h"
#include "QUORFileLeaf.h"
#include "QUORGridPlacement.h"
#include "QUORLog.h"
#include "QUORProductSettings.h"
#include "QUORUnits.h"
#include "QUORVisualizationObserver.h"

#include <vtkDataSet.h>
#include <vtkProp3D.h>

#include <algorithm>
#include <cmath>
#include <exception>

namespace {

/// The outer ring lies at a multiple of this, in metres or thousandths of a nautical mile.
constexpr double RING_STEP = 20000.0;
constexpr double GRID_FACTOR = 1.5;
/// The data image's distance between levels.
constexpr double LEVEL_SPACING = 5.0;

/// The origin of rings, grid and map: what was measured lies around it.
QUORPoint3D radarPosition(const QUORFile& file, double verticalScale) {
    return {0.0, 0.0, (file.getRadarElevation() + file.getZRadar() * 0.001) * verticalScale};
}

/// A header may be well formed and yet describe nothing that could be drawn around: its product is refused
/// by the product's own element.
bool isDrawable(const QUORDataFrame& frame) {
    return frame.getData3d() && frame.getData3d()->getFile()->getGridError().isEmpty();
}

std::array<double, 3> toArray(const QUORPoint3D& point) {
    return {point.x, point.y, point.z};
}

void logGrid(const QString& kind, const QUORFile& file) {
    logDebug(kind + QStringLiteral(" points: %1 %2 %3")
                        .arg(file.getZPoints())
                        .arg(file.getYPoints())
                        .arg(file.getXPoints()));
    logDebug(kind + QStringLiteral(" dimensions: %1 %2 %3")
                        .arg(file.getHeightM())
                        .arg(file.getWidthM())
                        .arg(file.getLengthM()));
}

} // namespace

QUORVisualization::QUORVisualization(QUORVisualizationObserver* observer) : _observer(observer) {
    const QUORLogScope scope("QUORVisualization::QUORVisualization");
    _pipeline = std::make_shared<QUORVisualizationPipeline>();
    connect(_pipeline.get(), &QUORVisualizationPipeline::allDone, this,
            &QUORVisualization::onPipelineFinished, Qt::QueuedConnection);
}

QUORVisualization::~QUORVisualization() {
    const QUORLogScope scope("QUORVisualization::~QUORVisualization");
    _pipeline->stop();
    resetVisualization();
}

void QUORVisualization::setSourceData(const QUORDataFrame::CPtr& frame) {
    const QUORLogScope scope("QUORVisualization::setSourceData");
    QUOR_ASSERT(frame && frame->getData3d());
    if (frame == _params.dataFrame && _pipelineItem && !_pipelineItem->isInUse()) {
        logDebug(QStringLiteral("Reusing previous pipeline item.."));
    } else {
        createPipelineItem(frame);
    }
    setParameters(_observer->getVisualizationGeneralSettings(), frame->getProductSettings());
}

void QUORVisualization::createPipelineItem(const QUORDataFrame::CPtr& frame) {
    logDebug(QStringLiteral("Creating a new pipeline item.."));
    if (frame != _params.dataFrame) {
        logDebug(QStringLiteral(" -Different frame!"));
    }
    if (!_pipelineItem) {
        logDebug(QStringLiteral("- No pipeline item!"));
    } else if (_pipelineItem->isInUse()) {
        logDebug(QStringLiteral("- Pipeline item in use!"));
    }
    _params.dataFrame = frame;
    if (_pipelineItem) {
        _retired.push_back(_pipelineItem);
    }
    _pipelineItem =
        std::make_shared<QUORVisualizationPipelineItem>(_observer->getVisualizationDisplayState());
}

void QUORVisualization::updateVisualization(bool force) {
    const QUORLogScope scope("QUORVisualization::updateVisualization");
    QUOR_ASSERT(_pipelineItem);
    _watch.restart();
    const bool busy = _generating || _pipelineItem->isInUse();
    if (!busy) {
        _pipelineItem->getDisplayState()->copyState(*_observer->getVisualizationDisplayState());
    }
    if (!force && _appliedItem == _pipelineItem && _params.isSame(_appliedParams)) {
        logDebug(QStringLiteral("No changes!"));
    } else {
        logDebug(QStringLiteral("Updating visualization.."));
        if (busy) {
            logDebug(QStringLiteral("Already generating visualization! -> return."));
            _dirty = true;
            return;
        }
        _generating = true;
        logDebug(QStringLiteral("---(generating)--->"));
        try {
            updateLayers(force);
            passToPipeline();
        } catch (...) {
            // The layers may have got only some of their records.
            _appliedParams = {};
            _generating = false;
            throw;
        }
        return;
    }
    passToPipeline();
}

void QUORVisualization::passToPipeline() {
    logDebug(QStringLiteral("Passing input item to visualization pipeline.."));
    // From here on completion may run on the controller's thread.
    _dirty = false;
    _pipeline->addInput(_pipelineItem);
}

void QUORVisualization::onPipelineFinished() {
    const QUORLogScope scope("QUORVisualization::onPipelineFinished");
    if (_aborted) {
        return;
    }
    try {
        if (!takeResult()) {
            return;
        }
    } catch (const std::exception& error) {
        dropResult(QString::fromLocal8Bit(error.what()));
    } catch (...) {
        dropResult(QStringLiteral("unknown exception"));
    }
    try {
        _observer->visualizationFinished(this);
    } catch (const std::exception& error) {
        QUORLog::Instance().logError(QStringLiteral("QUORVisualization::onPipelineFinished(): ") +
                                     QString::fromLocal8Bit(error.what()));
    }
}

bool QUORVisualization::takeResult() {
    const QUORVisualizationPipelineItem::Ptr result = _pipeline->getResultItem();
    if (result && result != _appliedItem) {
        logDebug(QStringLiteral("Outdated item -> wait for the current one."));
        return false;
    }
    _visualizationResult = result;
    if (_visualizationResult) {
        updateLayerTranformations();
    } else {
        QUORLog::Instance().logError(QStringLiteral("The scene could not be built."));
    }
    logDebug(QStringLiteral("<---(generating)---"));
    logDebug(QStringLiteral("..data visualized in ") + _watch.seconds() + QStringLiteral(" seconds."));
    _generating = false;
    dropRetired();
    if (_dirty) {
        logDebug(QStringLiteral("Visualization dirty -> generate again!"));
        updateVisualization(true);
        return false;
    }
    return true;
}

void QUORVisualization::dropResult(const QString& reason) {
    QUORLog::Instance().logError(QStringLiteral("The scene could not be completed: ") + reason);
    _visualizationResult.reset();
    _generating = false;
    _dirty = false;
}

void QUORVisualization::dropRetired() {
    const auto isIdle = [](const QUORVisualizationPipelineItem::Ptr& item) { return !item->isInUse(); };
    _retired.erase(std::remove_if(_retired.begin(), _retired.end(), isIdle), _retired.end());
    if (_pipelineItem && isIdle(_pipelineItem)) {
        _pipelineItem->dropRetired();
    }
}

void QUORVisualization::abort() {
    const QUORLogScope scope("QUORVisualization::abort");
    _aborted = true;
    _pipeline->stop();
}

void QUORVisualization::resetVisualization() {
    const QUORLogScope scope("QUORVisualization::resetVisualization");
    _generating = false;
    _dirty = false;
    _params = {};
    _appliedParams = {};
}

void QUORVisualization::resetLayers() {
    const QUORLogScope scope("QUORVisualization::resetLayers");
    logDebug(QStringLiteral("Reseting all groups, layers, and visual elements.."));
    _pipelineItem->retireProps();
    _pipelineItem->getDisplayState()->resetParameters();
}

vtkSmartPointer<vtkDataSet> QUORVisualization::getVTKDataSet() const {
    return _pipelineItem ? _pipelineItem->getVTKDataSet() : nullptr;
}

void QUORVisualization::setParameters(const QUORGeneralSettings::CPtr& generalSettings,
                                      const QUORProductSettings::CPtr& productSettings) {
    const QUORLogScope scope("QUORVisualization::setParameters");
    QUOR_ASSERT(_params.dataFrame && _params.dataFrame->getData3d());
    QUOR_ASSERT(generalSettings && productSettings);
    const QUORFileLeaf::CPtr leaf = _params.dataFrame->getData3d();
    const QUORFile& file = *leaf->getFile();
    const bool metric = generalSettings->isMetricUnits();

    setProduct3dParameters(*generalSettings, *productSettings);
    _params.verticalScale = generalSettings->getVerticalScale();
    _params.labels.setVerticalScale(_params.verticalScale);
    _params.outline.setSiteAltitude(file.getRadarElevation());
    _params.outline.setDataHeight(file.getHeightM());
    _params.outline.setTickInterval(generalSettings->getHeightTicks());
    if (_pipelineItem) {
        _pipelineItem->setSite(leaf->getSite(), radarPosition(file, _params.verticalScale));
    }
    _params.grid.setGeoProjection(file.getGeoProjection());
    noteMapDistances(*leaf);
    _params.labels.setGeoProjection(file.getGeoProjection());
    const double halfDiagonal = 0.5 * std::hypot(file.getLengthAroundRadarM(), file.getWidthAroundRadarM());
    _params.grid.setRange(GRID_FACTOR * halfDiagonal);
    setRingsParameters(file, halfDiagonal, metric);
}

/// Rings and data lie in the map's own metres, as terrain and degrees do.
void QUORVisualization::noteMapDistances(const QUORFileLeaf& leaf) {
    const double scale = leaf.getFile()->getMapScale();
    if (_hasNotedMapDistances || scale == 1.0) {
        return;
    }
    _hasNotedMapDistances = true;
    QUORLog::Instance().logNotice(
        QStringLiteral(
            "The map of site %1 is larger than the ground: its distances, of rings and data too, are "
            "%2 times those on the ground there. The legend says so where legend/details is on.")
            .arg(leaf.getSite(), QString::number(scale, 'f', 2)));
}

void QUORVisualization::setProduct3dParameters(const QUORGeneralSettings& generalSettings,
                                               const QUORProductSettings& productSettings) {
    QUORLayerParameters3d& record = _params.product3d;
    record.setHardware(_hardware);
    record.setDataShrinkH(generalSettings.getHorizontalDataShrink());
    record.setDataShrinkV(generalSettings.getVerticalDataShrink());
    record.setDataSmooth(generalSettings.getDataSmoothing());
    record.setRenderingType(productSettings.getRenderingType());
    record.setColorScaleName(productSettings.getColorMapName());
    record.setSurfacePars(productSettings.getSurfaces());
    record.setVolumeValueLow(productSettings.getVolumeValueLow());
    record.setVolumeOpacityLow(productSettings.getVolumeOpacityLow());
    record.setVolumeValueHigh(productSettings.getVolumeValueHigh());
    record.setVolumeOpacityHigh(productSettings.getVolumeOpacityHigh());
}

void QUORVisualization::setRingsParameters(const QUORFile& file, double halfDiagonal, bool metric) {
    const double unit = metric ? 1.0 : QUORUnits::KILOMETRES_PER_NAUTICAL_MILE;
    const double radius = std::ceil(halfDiagonal / unit / RING_STEP) * RING_STEP;
    logDebug((metric ? QStringLiteral("radius(km)=") : QStringLiteral("radius(NM)=")) +
             QString::number(radius / 1000.0, 'g', 6));
    _params.rings.setSiteLocation(file.getSiteCoordinates());
    _params.rings.setRange(radius);
    _params.rings.setMetricUnits(metric);
}

void QUORVisualization::updateLayers(bool force) {
    const QUORLogScope scope("QUORVisualization::updateLayers");
    QUOR_ASSERT(_pipelineItem);
    if (force) {
        logDebug(QStringLiteral("Force enabled -> reset layers first!"));
        resetLayers();
    }
    logDebug(QStringLiteral("Updating groups and layers.."));
    QUOR_ASSERT(_params.dataFrame);
    completeParameters();
    _appliedParams = _params;
    if (_appliedItem && _appliedItem != _pipelineItem) {
        _pipelineItem->adoptElements(*_appliedItem);
        _retired.push_back(_appliedItem);
    }
    _appliedItem = _pipelineItem;
    updateRadarLayers();
    updateGeoLayers();
}

void QUORVisualization::completeParameters() {
    const QUORDataFrame& frame = *_params.dataFrame;
    if (frame.getData3d()) {
        _params.product3d.setDataFile(frame.getData3d()->getFile());
    }
    if (frame.getData2d()) {
        _params.product2d.setDataFile(frame.getData2d()->getFile());
    }
    _params.terrain.setTerrainSet(frame.getTerrainSet());
    _params.labels.setLandmarks(frame.getLandmarkSet());
}

template <class Record>
void QUORVisualization::give(int key, const Record& record) {
    const QUORDisplayLayer::Ptr layer = _pipelineItem->getDisplayState()->getLayer(key);
    QUOR_ASSERT(layer);
    layer->setParameters(std::make_shared<Record>(record));
}

void QUORVisualization::updateRadarLayers() {
    if (!_appliedParams.dataFrame->getData3d()) {
        logDebug(QStringLiteral("No 3d data available. Reseting layers.."));
        for (const int key : {QUORDisplayState::RADAR_GROUP, QUORDisplayState::OUTLINE_LAYER,
                              QUORDisplayState::PRODUCT_3D_LAYER, QUORDisplayState::PRODUCT_2D_LAYER}) {
            give(key, QUORLayerParameters());
        }
        return;
    }
    logDebug(QStringLiteral("Updating radar layers.."));
    give(QUORDisplayState::RADAR_GROUP, QUORLayerParameters());
    if (isDrawable(*_appliedParams.dataFrame)) {
        give(QUORDisplayState::OUTLINE_LAYER, _appliedParams.outline);
    } else {
        give(QUORDisplayState::OUTLINE_LAYER, QUORLayerParameters());
    }
    give(QUORDisplayState::PRODUCT_3D_LAYER, _appliedParams.product3d);
    if (_appliedParams.dataFrame->getData2d()) {
        give(QUORDisplayState::PRODUCT_2D_LAYER, _appliedParams.product2d);
    }
}

void QUORVisualization::updateGeoLayers() {
    const QUORDataFrame& frame = *_appliedParams.dataFrame;
    if (!frame.getTerrainSet() || !frame.getLandmarkSet() || !isDrawable(frame)) {
        return;
    }
    logDebug(QStringLiteral("Updating geo layers.."));
    give(QUORDisplayState::GEO_GROUP, QUORLayerParameters());
    give(QUORDisplayState::TERRAIN_LAYER, _appliedParams.terrain);
    give(QUORDisplayState::LAT_LON_GRID_LAYER, _appliedParams.grid);
    give(QUORDisplayState::RANGE_RINGS_LAYER, _appliedParams.rings);
    give(QUORDisplayState::GEO_LABELS_LAYER, _appliedParams.labels);
}

void QUORVisualization::updateLayerTranformations() {
    const QUORLogScope scope("QUORVisualization::updateLayerTranformations");
    QUOR_ASSERT(_pipelineItem);
    const QUORDataFrame::CPtr frame = _appliedParams.dataFrame;
    if (!frame || !frame->getData3d()) {
        return;
    }
    const QUORFile& file = *frame->getData3d()->getFile();
    const double vertical = _appliedParams.verticalScale;
    const double altitude = file.getRadarElevation() * vertical;

    logGrid(QStringLiteral("3d"), file);
    const QUORGridPlacement grid = QUORGridPlacement::ofVolume(file, vertical);
    place(QUORDisplayState::PRODUCT_3D_LAYER, {grid.step.x, grid.step.y, grid.step.z / LEVEL_SPACING},
          toArray(grid.origin));
    const QUORPoint3D middle = file.getMiddleM();
    place(QUORDisplayState::OUTLINE_LAYER,
          {file.getWidthM(), file.getLengthM(), file.getHeightM() * vertical},
          Vector{middle.x, middle.y, altitude});
    if (const QUORFileLeaf::CPtr leaf2d = frame->getData2d()) {
        const QUORFile& file2d = *leaf2d->getFile();
        logGrid(QStringLiteral("2d"), file2d);
        const QUORGridPlacement flat = QUORGridPlacement::ofLayer(file2d, vertical);
        place(QUORDisplayState::PRODUCT_2D_LAYER, toArray(flat.step), toArray(flat.origin));
    }
    place(QUORDisplayState::RANGE_RINGS_LAYER, {1.0, 1.0, 1.0}, Vector{0.0, 0.0, altitude});
    place(QUORDisplayState::LAT_LON_GRID_LAYER, {1.0, 1.0, 1.0}, Vector{0.0, 0.0, 0.0});
    place(QUORDisplayState::TERRAIN_LAYER, {1.0, 1.0, vertical});
}

void QUORVisualization::place(int layerKey, const Vector& scale, const std::optional<Vector>& position) {
    const QUORVisualizationPipelineItem& item = _visualizationResult ? *_visualizationResult : *_pipelineItem;
    const QUORVisualElement::Ptr element = item.getElement(layerKey);
    const vtkSmartPointer<vtkProp> prop = element ? element->getProp() : nullptr;
    vtkProp3D* prop3d = vtkProp3D::SafeDownCast(prop);
    if (prop3d == nullptr) {
        return;
    }
    prop3d->SetScale(scale[0], scale[1], scale[2]);
    if (position) {
        prop3d->SetPosition((*position)[0], (*position)[1], (*position)[2]);
    }
}
