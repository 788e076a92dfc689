// SPDX-License-Identifier: MIT
#pragma once

#include "QUORFileLeaf.h"

#include <QMap>
#include <QString>

class QUOR2DTop;

/// Tells an operator why images wait for a 2D product: one error line for each site and configuration, and
/// again when the cause changes or comes back after an image. Used by the thread of the jobs.
class QUORMissing2D {
public:
    /// `product` is what the settings name for the file's configuration, `timeWindow` in seconds; the tree is
    /// null when there is no 2D directory. With `wait`, the seconds that it was waited for, the image is
    /// drawn without it; negative when it is not drawn.
    void report(const QUORFileLeaf::CPtr& leaf3d, const QString& product, int timeWindow,
                const QUOR2DTop* tree, int wait = -1);
    /// The image of that file is drawn.
    void forget(const QUORFileLeaf& leaf3d);
    /// A 2D file came that completes no 3D file: those that wait for its product have another cause now.
    void reportAgain(const QUORFileLeaf& leaf2d, int timeWindow, const QUOR2DTop* tree);

private:
    struct Waiting {
        QUORFileLeaf::CPtr leaf; ///< the last one
        QString product;
        int cause = -1;
        int wait = -1;
    };

    QMap<QString, Waiting> _waiting; ///< by site and configuration
};
