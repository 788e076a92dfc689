// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLandmark.h"

#include <QVector>

/// The landmarks of one area, in file order. Filled by the landmark list, then only read; it shares the
/// landmarks and outlives the list.
class QUORLandmarkSet {
public:
    using Ptr = std::shared_ptr<QUORLandmarkSet>;
    using CPtr = std::shared_ptr<const QUORLandmarkSet>;

    QUORLandmarkSet(const QUORCoordinate& centre, const QUORCoordinate& lowerBound,
                    const QUORCoordinate& upperBound);
    virtual ~QUORLandmarkSet();

    /// Whether the area holds the location, its bounds included. An upper longitude below the lower one
    /// means an area across the date line.
    bool contains(const QUORCoordinate& location) const;
    void append(const QUORLandmark::Ptr& landmark) { _landmarks.append(landmark); }

    QUORCoordinate getCentre() const { return _centre; }
    QUORCoordinate getLowerBound() const { return _lowerBound; }
    QUORCoordinate getUpperBound() const { return _upperBound; }
    const QVector<QUORLandmark::Ptr>& getLandmarks() const { return _landmarks; }

private:
    QUORCoordinate _centre;
    QUORCoordinate _lowerBound;
    QUORCoordinate _upperBound;
    QVector<QUORLandmark::Ptr> _landmarks;
};
