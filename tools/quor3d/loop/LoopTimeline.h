// SPDX-License-Identifier: MIT
#pragma once

#include "PictureCatalogue.h"

#include <QStringList>

#include <vector>

/// Frames at even steps of time: a picture that is missing is held by the one before it, so that motion in
/// the loop has one speed.
class LoopTimeline {
public:
    /// Over pictures that ascend in time. A step of 0 is found: the median of the distances.
    LoopTimeline(const std::vector<CataloguedPicture>& pictures, int stepSeconds);

    /// Seconds.
    int getStep() const { return _step; }
    /// The file name for each step.
    const QStringList& getFrames() const { return _frames; }
    /// Steps at which the picture before was held, and those that were left out of gaps that are too long.
    int getHeld() const { return _held; }
    int getLeftOut() const { return _leftOut; }

private:
    int _step;
    QStringList _frames;
    int _held = 0;
    int _leftOut = 0;
};
