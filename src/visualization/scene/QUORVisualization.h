// SPDX-License-Identifier: MIT
#pragma once

#include "QUORStopwatch.h"
#include "QUORVisualizationParameters.h"
#include "QUORVisualizationPipeline.h"

#include <QObject>

#include <array>
#include <memory>
#include <optional>
#include <vector>

class QUORFileLeaf;
class QUORVisualizationObserver;
class vtkDataSet;

/// The controller: turns a data frame into a scene. It derives the layers' records, hands a pipeline item
/// to the worker and, when that is done, places the layers and tells its observer.
///
/// It belongs to the thread that made it, which renders: completion arrives there through the event loop,
/// and items whose props were drawn are let go of only there. `setSourceData` and `updateVisualization`
/// may come from another thread that waits for the observer to be told before it asks again; that waiting
/// is all that keeps the two threads apart.
class QUORVisualization : public QObject {
    Q_OBJECT

public:
    using Ptr = std::shared_ptr<QUORVisualization>;
    using CPtr = std::shared_ptr<const QUORVisualization>;

    /// The observer must outlive the controller.
    explicit QUORVisualization(QUORVisualizationObserver* observer);
    ~QUORVisualization() override;
    QUORVisualization(const QUORVisualization&) = delete;
    QUORVisualization& operator=(const QUORVisualization&) = delete;

    /// Makes the frame current; it must have a 3D product.
    void setSourceData(const QUORDataFrame::CPtr& frame);
    /// Whether the window that shows the scenes is drawn by a graphics card; for the next source data. While
    /// no scene is being built.
    void setHardware(bool hardware) { _hardware = hardware; }
    /// Requests a build of the current frame; the observer is told when it is done. `force` builds even
    /// what has not changed. A request during a build is served by one more build right after it.
    void updateVisualization(bool force);
    /// Ends the pipeline for good: the observer is told nothing any more.
    void abort();
    /// Forgets the frame and all records.
    void resetVisualization();

    /// The item for the current frame.
    QUORVisualizationPipelineItem::Ptr getPipelineItem() const { return _pipelineItem; }
    /// The item to render; null after a build that failed.
    QUORVisualizationPipelineItem::Ptr getVisualizationResult() const { return _visualizationResult; }
    QUORDataFrame::CPtr getDataFrame() const { return _params.dataFrame; }
    const QUORVisualizationParameters& getParameters() const { return _params; }
    vtkSmartPointer<vtkDataSet> getVTKDataSet() const;

    // The steps of a request.

    void setParameters(const QUORGeneralSettings::CPtr& generalSettings,
                       const QUORProductSettings::CPtr& productSettings);
    void resetLayers();
    void updateLayers(bool force);
    void updateLayerTranformations();

public Q_SLOTS:
    void onPipelineFinished();

private:
    using Vector = std::array<double, 3>;

    void createPipelineItem(const QUORDataFrame::CPtr& frame);
    void passToPipeline();
    /// False when the observer is not to be told yet: another build is under way.
    bool takeResult();
    void dropResult(const QString& reason);
    void setProduct3dParameters(const QUORGeneralSettings& generalSettings,
                                const QUORProductSettings& productSettings);
    void noteMapDistances(const QUORFileLeaf& leaf);
    void setRingsParameters(const QUORFile& file, double halfDiagonal, bool metric);
    /// Gives the records what only the frame knows.
    void completeParameters();
    template <class Record>
    void give(int key, const Record& record);
    void updateRadarLayers();
    void updateGeoLayers();
    void place(int layerKey, const Vector& scale, const std::optional<Vector>& position = {});
    void dropRetired();

    QUORVisualizationObserver* _observer;
    QUORVisualizationPipeline::Ptr _pipeline;
    QUORStopwatch _watch;
    bool _generating = false;
    bool _dirty = false;
    bool _hardware = false;
    bool _hasNotedMapDistances = false;
    QUORVisualizationParameters _params;
    QUORVisualizationParameters _appliedParams;
    QUORVisualizationPipelineItem::Ptr _pipelineItem;
    QUORVisualizationPipelineItem::Ptr _visualizationResult;
    bool _aborted = false;
    /// The item that `_appliedParams` was given to.
    QUORVisualizationPipelineItem::Ptr _appliedItem;
    /// Items that were replaced, until the rendering thread lets go of them.
    std::vector<QUORVisualizationPipelineItem::Ptr> _retired;
};
