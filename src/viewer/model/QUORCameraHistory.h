// SPDX-License-Identifier: MIT
#pragma once

#include "QUORViewGeometry.h"

#include <QList>

/// The views that a user has had, for undo and redo. A view that comes after an undo ends what was undone.
/// Bounded: the oldest views are forgotten.
class QUORCameraHistory {
public:
    using View = QUORViewGeometry::View;

    /// The view at the end of a movement; one that is the present view again is not added.
    void add(const View& view);
    bool canUndo() const { return _present > 0; }
    bool canRedo() const { return _present + 1 < _views.size(); }
    /// The view before or after, which becomes the present one; there must be one.
    View undo();
    View redo();

private:
    QList<View> _views;
    qsizetype _present = -1;
};
