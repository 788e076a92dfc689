// SPDX-License-Identifier: MIT
#include "QUORWaitingFor2D.h"

#include <algorithm>

QVector<QUORArrival> QUORWaitingFor2D::takeDue(std::chrono::seconds wait, Clock::time_point now) {
    QVector<QUORArrival> due;
    _products.removeIf([&](const std::pair<const QString&, QUORArrival&>& product) {
        const bool isDue = product.second.arrived + wait <= now;
        if (isDue) {
            due.append(product.second);
        }
        return isDue;
    });
    std::stable_sort(due.begin(), due.end(),
                     [](const auto& a, const auto& b) { return a.arrived < b.arrived; });
    return due;
}

QUORWaitingFor2D::Clock::time_point QUORWaitingFor2D::getNextTime(std::chrono::seconds wait) const {
    Clock::time_point next = Clock::time_point::max();
    for (const QUORArrival& product : _products) {
        next = std::min(next, product.arrived + wait);
    }
    return next;
}
