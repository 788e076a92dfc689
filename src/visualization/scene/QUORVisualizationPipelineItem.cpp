// SPDX-License-Identifier: MIT
#include "QUORVisualizationPipelineItem.h"

#include "QUOR3DVisualElement.h"
#include "QUORAbortFlag.h"
#include "QUORAssert.h"
#include "QUORDisplayState.h"
#include "QUORLayerParameters.h"
#include "QUORLog.h"
#include "QUORSettingsReader.h"
#include "QUORStopwatch.h"
#include "QUORStyleGroup.h"

#include <vtkAlgorithm.h>
#include <vtkDataSet.h>
#include <vtkPropAssembly.h>

#include <exception>
#include <map>

namespace {

QString keyed(const QString& kind, const QUORDisplayLayer& layer) {
    return kind + QLatin1Char(' ') + layer.getName() + QStringLiteral(" (") +
           QString::number(layer.getKey()) + QLatin1Char(')');
}

QString finished(const QString& subject, const QUORStopwatch& watch) {
    return QStringLiteral("<--") + subject + QStringLiteral(": ") + watch.seconds() +
           QStringLiteral(" seconds.");
}

} // namespace

QUORVisualizationPipelineItem::QUORVisualizationPipelineItem(
    const std::shared_ptr<const QUORDisplayState>& state)
    : _displayState(std::make_shared<QUORDisplayState>()),
      _styleStamp(QUORSettingsReader::makeStamp(QUORStyleGroup::FILE_NAME)) {
    const QUORLogScope scope("QUORVisualizationPipelineItem::QUORVisualizationPipelineItem");
    _displayState->copyState(*state);
    create();
}

QUORVisualizationPipelineItem::~QUORVisualizationPipelineItem() {
    const QUORLogScope scope("QUORVisualizationPipelineItem::~QUORVisualizationPipelineItem");
}

void QUORVisualizationPipelineItem::create() {
    const QUORLogScope scope("QUORVisualizationPipelineItem::create");
    for (const QUORDisplayGroup::Ptr& displayGroup : _displayState->getMembers()) {
        const QUORVisualGroup::Ptr group = QUORVisualGroup::makeGroup(displayGroup->getKey());
        for (const QUORDisplayLayer::Ptr& layer : displayGroup->getMembers()) {
            group->addElement(QUORVisualElement::makeElement(group.get(), layer->getKey()));
            layer->setElement(group->getElements().constLast());
        }
        _groups.append(group);
    }
}

void QUORVisualizationPipelineItem::adoptElements(QUORVisualizationPipelineItem& previous) {
    if (previous.isInUse() || previous._styleStamp != _styleStamp ||
        previous._groups.size() != _groups.size()) {
        return;
    }
    for (int i = 0; i < _groups.size(); ++i) {
        const QVector<QUORVisualElement::Ptr> own = _groups[i]->getElements();
        for (const QUORVisualElement::Ptr& element : own) {
            const int key = element->getKey();
            if (QUORDisplayState::isLasting(key)) {
                _groups[i]->exchangeElement(*previous._groups[i], key);
                _displayState->getLayer(key)->setElement(getElement(key));
                previous._displayState->getLayer(key)->setElement(previous.getElement(key));
            }
        }
    }
}

void QUORVisualizationPipelineItem::update(const QUORAbortFlag& abort) {
    const QUORLogScope scope("QUORVisualizationPipelineItem::update");
    const QUORStopwatch watch;
    retireProps();
    for (const QUORVisualGroup::Ptr& group : std::as_const(_groups)) {
        if (abort) {
            break;
        }
        updateGroup(*group, abort);
    }
    logDebug(QStringLiteral("total: ") + watch.seconds() + QStringLiteral(" seconds."));
    if (abort) {
        logDebug(QStringLiteral("QUORVisualizationPipelineItem::update(): ABORTED!"));
    }
}

void QUORVisualizationPipelineItem::updateGroup(QUORVisualGroup& group, const QUORAbortFlag& abort) {
    const QUORStopwatch watch;
    const QUORDisplayGroup::Ptr displayGroup = _displayState->getGroup(group.getKey());
    QUOR_ASSERT(displayGroup);
    const QString subject = keyed(QStringLiteral("group"), *displayGroup);
    logDebug(subject + QStringLiteral("-->"));
    group.update(displayGroup->getParameters(), displayGroup->isVisible());
    for (const QUORVisualElement::Ptr& element : group.getElements()) {
        if (abort) {
            break;
        }
        const QUORDisplayLayer::Ptr layer = displayGroup->getLayer(element->getKey());
        QUOR_ASSERT(layer);
        updateElement(*element, *layer, abort);
    }
    logDebug(finished(subject, watch));
}

void QUORVisualizationPipelineItem::updateElement(QUORVisualElement& element, const QUORDisplayLayer& layer,
                                                  const QUORAbortFlag& abort) {
    const QUORStopwatch watch;
    const QString subject = keyed(QStringLiteral("layer"), layer);
    logDebug(subject + QStringLiteral("-->"));
    QString failure;
    try {
        element.update(layer.getParameters(), layer.isVisible(), abort);
    } catch (const std::exception& exception) {
        failure = QString::fromLocal8Bit(exception.what());
    } catch (...) {
        failure = QStringLiteral("unknown exception");
    }
    if (!failure.isEmpty()) {
        QUORLog::Instance().logError(QStringLiteral("Building ") + subject + QStringLiteral(" failed: ") +
                                     failure);
        element.invalidate();
    }
    logDebug(finished(subject, watch));
}

void QUORVisualizationPipelineItem::readResults() {
    std::map<int, ResultPart> parts;
    for (const QUORVisualGroup::Ptr& group : std::as_const(_groups)) {
        const QUORDisplayGroup::Ptr displayGroup = _displayState->getGroup(group->getKey());
        if (!displayGroup->isVisible()) {
            continue;
        }
        for (const QUORVisualElement::Ptr& element : group->getElements()) {
            const QUORDisplayLayer::Ptr layer = displayGroup->getLayer(element->getKey());
            const vtkSmartPointer<vtkProp> prop = layer->isVisible() ? element->getProp() : nullptr;
            if (prop) {
                const int order = layer->getOrder();
                logDebug(QStringLiteral("Add prop: order=") + QString::number(order) +
                         QStringLiteral(", layer: ") + layer->getName());
                parts[order] = {layer->getKey(), order, prop};
            }
        }
    }
    if (_results) {
        _retired.emplace_back(_results);
    }
    _results = vtkSmartPointer<vtkPropAssembly>::New();
    _resultParts.clear();
    for (const auto& [order, part] : parts) {
        logDebug(QStringLiteral("Add res: order=") + QString::number(order));
        _results->AddPart(part.prop);
        _resultParts.push_back(part);
    }
}

vtkSmartPointer<vtkPropAssembly> QUORVisualizationPipelineItem::getResults() const {
    return _results;
}

vtkSmartPointer<vtkDataSet> QUORVisualizationPipelineItem::getVTKDataSet() const {
    if (isInUse()) {
        return {};
    }
    const auto element =
        std::dynamic_pointer_cast<QUOR3DVisualElement>(getElement(QUORDisplayState::PRODUCT_3D_LAYER));
    const vtkSmartPointer<vtkAlgorithm> data = element ? element->getData() : nullptr;
    return data ? vtkDataSet::SafeDownCast(data->GetOutputDataObject(0)) : nullptr;
}

QUORVisualElement::Ptr QUORVisualizationPipelineItem::getElement(int layerKey) const {
    for (const QUORVisualGroup::Ptr& group : _groups) {
        for (const QUORVisualElement::Ptr& element : group->getElements()) {
            if (element->getKey() == layerKey) {
                return element;
            }
        }
    }
    return {};
}

void QUORVisualizationPipelineItem::setSite(const QString& site, const QUORPoint3D& radarPosition) {
    _site = site;
    _radarPosition = radarPosition;
}

void QUORVisualizationPipelineItem::retireProps() {
    for (const QUORVisualGroup::Ptr& group : std::as_const(_groups)) {
        for (const QUORVisualElement::Ptr& element : group->getElements()) {
            if (vtkSmartPointer<vtkProp> prop = element->getProp()) {
                _retired.push_back(std::move(prop));
            }
        }
    }
}
