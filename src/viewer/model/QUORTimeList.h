// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDataStore.h"
#include "QUORDataStoreObserver.h"

#include <QObject>
#include <QStringList>

/// The sites, configurations and times of a product directory, kept up to date by the service's data store,
/// and the one that is chosen. Times of a series are in the order of their data.
///
/// Belongs to the thread that made it, which runs an event loop.
class QUORTimeList : public QObject, public QUORDataStoreObserver {
    Q_OBJECT

public:
    QUORTimeList();
    ~QUORTimeList() override;

    /// Reads the directories, and chooses the newest product of the first series unless one is chosen that
    /// the new directory has.
    void open(const QString& path3d, const QString& path2d, const QString& terrain,
              const QString& terrainCache);
    QUORDataStore::Ptr getStore() const { return _store; }

    QStringList getSites() const;
    QStringList getConfigurations(const QString& site) const;
    const QVector<QUORFileLeaf::Ptr>& getTimes() const { return _times; }
    QString getSite() const { return _site; }
    QString getConfiguration() const { return _configuration; }
    /// -1 when there is none.
    int getIndex() const { return _index; }
    QUORFileLeaf::Ptr getCurrent() const;
    /// The one so many steps away, round the ends; null when there is none but the current.
    QUORFileLeaf::Ptr getNeighbour(int steps) const;

    /// Another series, at the time that is nearest to the present one.
    void choose(const QString& site, const QString& configuration);
    void choose(int index);
    /// The product of that file; false when the directory has no such product.
    bool chooseFile(const QString& path);
    /// Goes round the ends.
    void step(int steps);
    /// The newest of the series, now and whenever one arrives; choosing another time ends it.
    void setFollowing(bool following);
    bool isFollowing() const { return _following; }

    void dataStoreNewDataAvailable3d(QUORDataStore* store, const QStringList& added,
                                     const QStringList& removed) override;
    void dataStoreNewDataAvailable2d(QUORDataStore* store, const QStringList& added,
                                     const QStringList& removed) override;

Q_SIGNALS:
    /// Sites, configurations or times.
    void listChanged();
    /// Also when the product was issued again, or a 2D product came that may belong to it.
    void currentChanged();
    void followingChanged(bool following);

private:
    void readTimes();
    void chooseSeries();
    void select(int index);

    QUORDataStore::Ptr _store;
    QString _site;
    QString _configuration;
    QVector<QUORFileLeaf::Ptr> _times;
    int _index = -1;
    bool _following = false;
};
