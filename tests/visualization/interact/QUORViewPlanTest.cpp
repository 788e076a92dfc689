// SPDX-License-Identifier: MIT
#include "QUORViewPlan.h"

#include "ViewProjection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

/// How far from the middle of the picture the outermost corner of the data lies, 1 at the edge.
double outermost(const QUORViewGeometry::View& view, const QUORPoint3D& size, double aspect) {
    const ViewProjection projection(view, aspect);
    double most = 0.0;
    for (int corner = 0; corner < 8; ++corner) {
        const auto [x, y] = projection.project((corner & 1 ? 0.5 : -0.5) * size.x,
                                               (corner & 2 ? 0.5 : -0.5) * size.y, corner & 4 ? size.z : 0.0);
        most = std::max({most, std::abs(x), std::abs(y)});
    }
    return most;
}

TEST(QUORViewPlanTest, TheDataFitsFromEverySide) {
    const QUORPoint3D size{480000.0, 300000.0, 60000.0};
    for (const double heading : {0.0, 45.0, 200.0, 359.0}) {
        for (const double pitch : {0.0, 10.0, 40.0, 90.0}) {
            QUORViewPlan plan{heading, pitch, 0.0};
            plan.distance = plan.findFit(size, 1600.0, 1200.0);
            const double most = outermost(plan.toView(), size, 1600.0 / 1200.0);
            EXPECT_LE(most, 0.98) << heading << ' ' << pitch;
            EXPECT_GE(most, 0.85) << heading << ' ' << pitch;
            const QUORViewPlan again = QUORViewPlan::of(plan.toView());
            EXPECT_NEAR(again.heading, heading, 1e-3);
            EXPECT_NEAR(again.pitch, pitch, 1e-3);
            EXPECT_NEAR(again.distance, plan.distance, 1e-3);
        }
    }
}

} // namespace
