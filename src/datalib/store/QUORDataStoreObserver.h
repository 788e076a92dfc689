// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

class QUORDataStore;

/// Told by the data store, on the thread that owns the store, which product files came and went: absolute
/// paths in the order in which they were seen.
class QUORDataStoreObserver {
public:
    virtual ~QUORDataStoreObserver() = default;

    virtual void dataStoreNewDataAvailable3d(QUORDataStore* store, const QStringList& added,
                                             const QStringList& removed) = 0;
    virtual void dataStoreNewDataAvailable2d(QUORDataStore* store, const QStringList& added,
                                             const QStringList& removed) = 0;
};
