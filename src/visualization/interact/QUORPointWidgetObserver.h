// SPDX-License-Identifier: MIT
#pragma once

struct QUORPoint3D;
class QUORPointWidget;

/// Told on the main thread whenever the point of a point widget has moved.
class QUORPointWidgetObserver {
public:
    virtual ~QUORPointWidgetObserver() = default;
    virtual void pointMoved(QUORPointWidget* widget, const QUORPoint3D& point) = 0;
};
