// SPDX-License-Identifier: MIT
#pragma once

#include "QUORViewGeometry.h"

/// Views of the radar site as people name them: from which side, from how high, from how far.
struct QUORViewPlan {
    /// Degrees from north, clockwise: where the camera looks, so that 0 is a view from the south.
    double heading = 0.0;
    /// Degrees below the horizon at which it looks down; 0 to 90.
    double pitch = 0.0;
    /// Metres from the site.
    double distance = 0.0;

    /// The camera of a plan, which looks at the site.
    QUORViewGeometry::View toView() const;
    /// The plan of a camera that looks at the site; heading and pitch of any other.
    static QUORViewPlan of(const QUORViewGeometry::View& view);
    /// The least distance from which a box of data about the site fits into a picture, with a margin: its
    /// full width and length and its height above the site, as they are drawn, and the picture's sides.
    double findFit(const QUORPoint3D& size, double pictureWidth, double pictureHeight) const;
};
