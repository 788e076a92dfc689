// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDirectory.h"

/// The configurations of one product of one site.
class QUORDirProduct : public QUORDirectory {
public:
    QUORDirProduct(const QString& name, QUORDirectory* parent);

    virtual QString getSite() const { return getAncestorName(1); }
    bool isValid() const override { return true; }

protected:
    Ptr makeChild(const QString& name, QUORFile::CPtr file) override;
};
