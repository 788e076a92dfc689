// SPDX-License-Identifier: MIT
#include "QUORCameraHistory.h"

#include "QUORAssert.h"

namespace {

constexpr qsizetype MOST_VIEWS = 200;
/// Scene metres, and parts of a unit vector: below these a view is the same.
constexpr double SAME_PLACE = 0.5;
constexpr double SAME_DIRECTION = 1e-6;

using namespace QUORViewGeometry;

bool isSame(const View& a, const View& b) {
    return length(a.position - b.position) < SAME_PLACE && length(a.direction - b.direction) < SAME_DIRECTION;
}

} // namespace

void QUORCameraHistory::add(const View& view) {
    if (_present >= 0 && isSame(_views.at(_present), view)) {
        return;
    }
    _views.resize(_present + 1);
    _views.append(view);
    if (_views.size() > MOST_VIEWS) {
        _views.removeFirst();
    }
    _present = _views.size() - 1;
}

View QUORCameraHistory::undo() {
    QUOR_ASSERT(canUndo());
    return _views.at(--_present);
}

View QUORCameraHistory::redo() {
    QUOR_ASSERT(canRedo());
    return _views.at(++_present);
}
