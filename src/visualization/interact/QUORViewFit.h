// SPDX-License-Identifier: MIT
#pragma once

#include "QUORPictureArea.h"
#include "QUORViewGeometry.h"

#include <vector>

/// Finds the camera that shows a box of data as large as the free part of a picture allows: whole, with a
/// margin, and clear of what is drawn over the scene. The camera looks along a given direction and may stand
/// aside, so that the box comes to lie where there is room. A plain value.
class QUORViewFit {
public:
    struct Picture {
        /// Of any unit; only their ratio counts.
        double width = 1.0;
        double height = 1.0;
        /// What the box has to stay clear of.
        std::vector<QUORPictureArea> taken;
    };

    /// Two opposite corners of the box, in scene metres, as it is drawn.
    QUORViewFit(const QUORPoint3D& lower, const QUORPoint3D& upper);

    /// Heading: the direction looked to, degrees clockwise from north. Pitch: degrees below the horizon, from
    /// 0 to 90. Where nothing keeps clear of the taken areas, they do not count.
    QUORViewGeometry::View find(double heading, double pitch, const Picture& picture) const;

private:
    QUORPoint3D _lower;
    QUORPoint3D _upper;
};
