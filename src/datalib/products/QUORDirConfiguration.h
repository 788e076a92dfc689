// SPDX-License-Identifier: MIT
#pragma once

#include "QUORFileLeaf.h"

#include <QVector>

#include <map>

/// The files of one configuration by their time key, with an index by their data time.
class QUORDirConfiguration : public QUORDirectory {
public:
    QUORDirConfiguration(const QString& name, QUORDirectory* parent);

    virtual QString getSite() const { return getAncestorName(2); }
    virtual QString getProduct() const { return getAncestorName(1); }
    bool isValid() const override { return true; }

    void removeChild(const QString& name) override;
    /// The leaves whose data time lies within both ends, in milliseconds since the epoch. Leaves with an
    /// impossible time are in no window.
    QVector<QUORFileLeaf::Ptr> findBetween(qint64 first, qint64 last) const;

protected:
    Ptr makeChild(const QString& name, QUORFile::CPtr file) override;

private:
    std::multimap<qint64, QUORFileLeaf::Ptr> _byTime;
};
