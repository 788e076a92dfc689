// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDisplayState.h"

#include <QMap>
#include <QWidget>

class QSlider;
class QTreeWidget;
class QTreeWidgetItem;

/// Groups and layers, each to be shown or hidden, with an opacity where it can be translucent.
class QUORLayersPanel : public QWidget {
    Q_OBJECT

public:
    explicit QUORLayersPanel(QWidget* parent = nullptr);

    /// Emits nothing.
    void setState(const QUORDisplayState& state);
    /// What users call a group or layer.
    static QString getLabel(int key);

Q_SIGNALS:
    void visibleChanged(int key, bool visible);
    /// Percent.
    void opacityChanged(int key, int opacity);

private:
    QTreeWidgetItem* addRow(QTreeWidgetItem* parent, int key);

    QTreeWidget* _tree;
    QMap<int, QTreeWidgetItem*> _items;
    QMap<int, QSlider*> _sliders;
};
