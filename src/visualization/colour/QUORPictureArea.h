// SPDX-License-Identifier: MIT
#pragma once

/// A rectangle of a picture, in fractions of its width and height from the lower left corner.
struct QUORPictureArea {
    double left = 0.0;
    double bottom = 0.0;
    double right = 1.0;
    double top = 1.0;
};
