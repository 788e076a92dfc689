// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDirectory.h"

/// The products of one radar site.
class QUORDirSite : public QUORDirectory {
public:
    QUORDirSite(const QString& name, QUORDirectory* parent);

    bool isValid() const override { return true; }

protected:
    Ptr makeChild(const QString& name, QUORFile::CPtr file) override;
};
