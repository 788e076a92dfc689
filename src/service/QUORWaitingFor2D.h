// SPDX-License-Identifier: MIT
#pragma once

#include "QUORArrivalQueue.h"

#include <QMap>
#include <QVector>

/// The 3D products that came and are not drawn because their 2D product has not come yet, to be drawn without
/// it when they have waited long enough. Used by one thread.
class QUORWaitingFor2D {
public:
    using Clock = QUORArrival::Clock;

    void add(const QUORArrival& product) { _products.insert(product.key, product); }
    /// It is drawn.
    void remove(const QString& key) { _products.remove(key); }
    /// Those that came so long ago, which leave the list, in the order of their arrival.
    QVector<QUORArrival> takeDue(std::chrono::seconds wait, Clock::time_point now = Clock::now());
    /// When the next one has waited so long; the end of time without any.
    Clock::time_point getNextTime(std::chrono::seconds wait) const;

private:
    QMap<QString, QUORArrival> _products;
};
