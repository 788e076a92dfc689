// SPDX-License-Identifier: MIT
#pragma once

#include "QUORPoint3D.h"
#include "QUORVisualGroup.h"

#include <QString>
#include <QVector>

#include <vtkSmartPointer.h>

#include <atomic>
#include <memory>
#include <vector>

class QUORAbortFlag;
class QUORDisplayLayer;
class QUORDisplayState;
class vtkDataSet;
class vtkProp;
class vtkPropAssembly;

/// One scene to build: a private copy of a display state and the tree of visual groups and elements made
/// from it. The controller makes it and fills its state; from `addInput` until the worker has finished
/// with it, the item is in use and belongs to the pipeline's worker thread alone.
///
/// Props that were drawn hold resources of the graphics context. What an update replaces is therefore
/// kept until `dropRetired`, and the item itself must die, on the thread that renders.
class QUORVisualizationPipelineItem {
public:
    using Ptr = std::shared_ptr<QUORVisualizationPipelineItem>;
    using CPtr = std::shared_ptr<const QUORVisualizationPipelineItem>;

    /// A prop of the results, with the layer that it shows.
    struct ResultPart {
        int layerKey = 0;
        int order = 0;
        vtkSmartPointer<vtkProp> prop;
    };

    explicit QUORVisualizationPipelineItem(const std::shared_ptr<const QUORDisplayState>& state);
    virtual ~QUORVisualizationPipelineItem();
    QUORVisualizationPipelineItem(const QUORVisualizationPipelineItem&) = delete;
    QUORVisualizationPipelineItem& operator=(const QUORVisualizationPipelineItem&) = delete;

    /// Takes over the elements whose layers usually stay the same from one data frame to the next (all but
    /// the radar products), so that unchanged records find their geometry built. Nothing happens while
    /// `previous` is in use or when the styles file has changed since it was made.
    void adoptElements(QUORVisualizationPipelineItem& previous);

    /// Brings every element up to date. An element that fails shows nothing, with an error in the log.
    void update(const QUORAbortFlag& abort);
    /// Collects the visible props.
    void readResults();

    /// The props of the last completed update in drawing order; null before it.
    vtkSmartPointer<vtkPropAssembly> getResults() const;
    /// The same props one by one.
    const std::vector<ResultPart>& getResultParts() const { return _resultParts; }
    /// What the 3D product element has made of its file; null without it or while the item is in use.
    vtkSmartPointer<vtkDataSet> getVTKDataSet() const;

    std::shared_ptr<QUORDisplayState> getDisplayState() const { return _displayState; }
    const QVector<QUORVisualGroup::Ptr>& getGroups() const { return _groups; }
    /// The element of that layer key, or null.
    QUORVisualElement::Ptr getElement(int layerKey) const;

    /// The site's name, empty until set, and the radar's position in the scene.
    QString getSite() const { return _site; }
    QUORPoint3D getRadarPosition() const { return _radarPosition; }
    void setSite(const QString& site, const QUORPoint3D& radarPosition);

    /// Any thread. Nests, since an item may stand in the queue twice.
    bool isInUse() const { return _uses.load() > 0; }
    void beginUse() { ++_uses; }
    void endUse() { --_uses; }

    /// Keeps the elements' present props until `dropRetired`, before they are invalidated from outside.
    void retireProps();
    /// On the rendering thread, while the item is not in use.
    void dropRetired() { _retired.clear(); }

private:
    void create();
    void updateGroup(QUORVisualGroup& group, const QUORAbortFlag& abort);
    void updateElement(QUORVisualElement& element, const QUORDisplayLayer& layer, const QUORAbortFlag& abort);

    std::shared_ptr<QUORDisplayState> _displayState;
    QVector<QUORVisualGroup::Ptr> _groups;
    vtkSmartPointer<vtkPropAssembly> _results;
    std::vector<ResultPart> _resultParts;
    QString _site;
    QUORPoint3D _radarPosition;
    std::atomic<int> _uses{0};
    QString _styleStamp;
    std::vector<vtkSmartPointer<vtkProp>> _retired;
};
