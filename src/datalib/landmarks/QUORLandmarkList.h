// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLandmarkSet.h"

/// The valid entries of the landmarks file, in file order. Read once at construction and never changed
/// afterwards, so any thread may ask for sets.
class QUORLandmarkList {
public:
    using Ptr = std::shared_ptr<QUORLandmarkList>;
    using CPtr = std::shared_ptr<const QUORLandmarkList>;

    QUORLandmarkList();
    virtual ~QUORLandmarkList();
    QUORLandmarkList(const QUORLandmarkList&) = delete;
    QUORLandmarkList& operator=(const QUORLandmarkList&) = delete;

    /// The landmarks within the bounds, whole edges included; never null.
    QUORLandmarkSet::Ptr getLandmarkSet(const QUORCoordinate& centre, const QUORCoordinate& lowerBound,
                                        const QUORCoordinate& upperBound) const;
    /// Writes the list to standard output in the form of the landmarks file.
    void printIniFormat() const;

    const QVector<QUORLandmark::Ptr>& getLandmarks() const { return _landmarks; }

private:
    void load();

    QVector<QUORLandmark::Ptr> _landmarks;
};
