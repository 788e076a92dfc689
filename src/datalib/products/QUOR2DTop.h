// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDirTop.h"

/// The tree of a 2D product directory: flat grids of any known product.
class QUOR2DTop : public QUORDirTop {
public:
    using Ptr = std::shared_ptr<QUOR2DTop>;
    using CPtr = std::shared_ptr<const QUOR2DTop>;

    /// Scans the directory.
    explicit QUOR2DTop(const QString& path);
    /// Takes in the files of a listing.
    QUOR2DTop(const QString& path, const QStringList& names, LeftOut& leftOut);

    bool filter(QUORFile::CPtr file) const override;

    /// The file of the same site and that product (a pattern) closest in time within half the window.
    QUORFileLeaf::Ptr findBestMatching2DFile(const QUORFileLeaf::CPtr& file3d, const QString& product,
                                             int timeWindow) const;
};
