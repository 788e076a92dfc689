// SPDX-License-Identifier: MIT
#include "QUORViewPlan.h"

#include <gtest/gtest.h>

#include <vtkCamera.h>
#include <vtkMatrix4x4.h>
#include <vtkNew.h>

#include <algorithm>
#include <cmath>

namespace {

/// How far from the middle of the picture the outermost corner of the data lies, 1 at the edge, by the
/// toolkit's own camera.
double outermost(const QUORViewGeometry::View& view, const QUORPoint3D& size, double aspect) {
    vtkNew<vtkCamera> camera;
    camera->SetPosition(view.position.x, view.position.y, view.position.z);
    camera->SetFocalPoint(view.position.x + view.direction.x, view.position.y + view.direction.y,
                          view.position.z + view.direction.z);
    camera->SetViewUp(0.0, 0.0, 1.0);
    camera->SetClippingRange(100.0, 8.0e6);
    vtkMatrix4x4* matrix = camera->GetCompositeProjectionTransformMatrix(aspect, -1.0, 1.0);
    double most = 0.0;
    for (int corner = 0; corner < 8; ++corner) {
        double point[4] = {(corner & 1 ? 0.5 : -0.5) * size.x, (corner & 2 ? 0.5 : -0.5) * size.y,
                           corner & 4 ? size.z : 0.0, 1.0};
        matrix->MultiplyPoint(point, point);
        most = std::max({most, std::abs(point[0] / point[3]), std::abs(point[1] / point[3])});
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
