// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDirTop.h"

/// The tree of a 3D product directory: volumes of the product "CAPPI".
class QUOR3DTop : public QUORDirTop {
public:
    using Ptr = std::shared_ptr<QUOR3DTop>;
    using CPtr = std::shared_ptr<const QUOR3DTop>;

    /// Scans the directory.
    explicit QUOR3DTop(const QString& path);
    /// Takes in the files of a listing.
    QUOR3DTop(const QString& path, const QStringList& names, LeftOut& leftOut);

    bool filter(QUORFile::CPtr file) const override;

    /// The volume of the same site and product and that configuration (a pattern) within half the window.
    QUORFileLeaf::Ptr findBestMatching3DFile(const QUORFileLeaf::CPtr& leaf, const QString& configuration,
                                             int timeWindow) const;
    QUORFileLeaf::Ptr find3DFileMatching2DFile(const QUORFileLeaf::CPtr& leaf2d, const QString& configuration,
                                               int timeWindow) const;
};
