// SPDX-License-Identifier: MIT
#include "QUORLayersPanel.h"

#include <QCoreApplication>
#include <QHeaderView>
#include <QSignalBlocker>
#include <QSlider>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr int LEAST_OPACITY = 5;
constexpr int SLIDER_WIDTH = 80;

} // namespace

QUORLayersPanel::QUORLayersPanel(QWidget* parent) : QWidget(parent), _tree(new QTreeWidget) {
    setObjectName(QStringLiteral("layers"));
    _tree->setObjectName(QStringLiteral("layerTree"));
    _tree->setHeaderLabels({tr("Layer"), tr("Opacity")});
    _tree->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    _tree->header()->setStretchLastSection(true);
    _tree->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(_tree);
    const QUORDisplayState state;
    for (const QUORDisplayGroup::Ptr& group : state.getMembers()) {
        QTreeWidgetItem* const parentItem = addRow(nullptr, group->getKey());
        for (const QUORDisplayLayer::Ptr& layer : group->getMembers()) {
            addRow(parentItem, layer->getKey());
        }
        parentItem->setExpanded(true);
    }
    setState(state);
    connect(_tree, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int column) {
        if (column == 0) {
            Q_EMIT visibleChanged(item->data(0, Qt::UserRole).toInt(), item->checkState(0) == Qt::Checked);
        }
    });
}

QString QUORLayersPanel::getLabel(int key) {
    return QCoreApplication::translate("QUORDisplayState", QUORDisplayState::getRow(key).label);
}

QTreeWidgetItem* QUORLayersPanel::addRow(QTreeWidgetItem* parent, int key) {
    auto* item = parent != nullptr ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(_tree);
    item->setText(0, getLabel(key));
    item->setData(0, Qt::UserRole, key);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    item->setCheckState(0, Qt::Checked);
    _items[key] = item;
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setRange(LEAST_OPACITY, 100);
    slider->setMinimumWidth(SLIDER_WIDTH);
    slider->setMaximumWidth(SLIDER_WIDTH);
    slider->setObjectName(QStringLiteral("opacity%1").arg(key));
    slider->setAccessibleName(tr("Opacity of %1").arg(getLabel(key)));
    connect(slider, &QSlider::valueChanged, this,
            [this, key](int value) { Q_EMIT opacityChanged(key, value); });
    _tree->setItemWidget(item, 1, slider);
    _sliders[key] = slider;
    return item;
}

void QUORLayersPanel::setState(const QUORDisplayState& state) {
    const QSignalBlocker quietTree(_tree);
    for (auto item = _items.cbegin(); item != _items.cend(); ++item) {
        const QUORDisplayLayer::Ptr layer = state.getLayer(item.key());
        item.value()->setCheckState(0, layer->isVisible() ? Qt::Checked : Qt::Unchecked);
        QSlider* const slider = _sliders.value(item.key());
        const QSignalBlocker quiet(slider);
        slider->setValue(layer->getOpacity() > 0 ? layer->getOpacity() : 100);
    }
}
