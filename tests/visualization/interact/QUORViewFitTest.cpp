// SPDX-License-Identifier: MIT
#include "QUORViewFit.h"

#include "ViewProjection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace {

using Place = std::array<double, 2>;

const std::vector<QUORPictureArea> TAKEN{
    {0.01, 0.59, 0.05, 0.99}, {0.01, 0.01, 0.35, 0.35}, {0.87, 0.82, 0.99, 0.99}};

/// Points of the box's edges in fractions of the picture.
std::vector<Place> edges(const QUORViewGeometry::View& view, const QUORPoint3D& lower,
                         const QUORPoint3D& upper, double aspect) {
    const ViewProjection projection(view, aspect);
    std::vector<Place> places;
    for (int corner = 0; corner < 8; ++corner) {
        for (int axis = 0; axis < 3; ++axis) {
            for (double along = 0.0; along <= 1.0; along += 0.02) {
                std::array<double, 3> at{double(corner & 1), double(corner >> 1 & 1),
                                         double(corner >> 2 & 1)};
                at.at(std::size_t(axis)) = along;
                const Place place = projection.project(lower.x + at[0] * (upper.x - lower.x),
                                                       lower.y + at[1] * (upper.y - lower.y),
                                                       lower.z + at[2] * (upper.z - lower.z));
                places.push_back({0.5 + 0.5 * place[0], 0.5 + 0.5 * place[1]});
            }
        }
    }
    return places;
}

TEST(QUORViewFitTest, EveryProductIsWholeAndClearInEveryPicture) {
    const struct {
        QUORPoint3D lower, upper;
    } boxes[] = {{{-120e3, -120e3, 0.0}, {120e3, 120e3, 60e3}},
                 {{-240e3, -240e3, 0.0}, {240e3, 240e3, 58e3}},
                 {{-50e3, -300e3, 0.0}, {250e3, 10e3, 100e3}}};
    const Place pictures[] = {{640, 480}, {1600, 1200}, {3840, 2160}, {600, 900}, {3000, 800}};
    for (const auto& [lower, upper] : boxes) {
        for (const auto& [width, height] : pictures) {
            for (const auto& [heading, pitch] : {Place{0, 40}, {45, 40}, {45, 12}, {0, 90}, {200, 0}}) {
                SCOPED_TRACE(testing::Message()
                             << width << 'x' << height << ' ' << heading << ' ' << pitch << ' ' << upper.x);
                const auto view = QUORViewFit(lower, upper).find(heading, pitch, {width, height, TAKEN});
                double reach = 0.0;
                for (const auto& [x, y] : edges(view, lower, upper, width / height)) {
                    reach = std::max({reach, std::abs(x - 0.5), std::abs(y - 0.5)});
                    for (const QUORPictureArea& area : TAKEN) {
                        ASSERT_FALSE(x > area.left && x < area.right && y > area.bottom && y < area.top);
                    }
                }
                EXPECT_LE(reach, 0.5);
                EXPECT_GE(reach, 0.3) << "much smaller than it could be";
                EXPECT_NEAR(std::atan2(view.direction.x, view.direction.y),
                            std::remainder(heading * 0.017453292519943295, 6.283185307179586), 1e-6);
            }
        }
    }
}

TEST(QUORViewFitTest, APictureWithoutRoomShowsTheWholeProduct) {
    const QUORPoint3D lower{-1e5, -1e5, 0.0};
    const QUORPoint3D upper{1e5, 1e5, 1e5};
    const auto view = QUORViewFit(lower, upper).find(45.0, 40.0, {4.0, 3.0, {{0.0, 0.0, 1.0, 1.0}}});
    for (const auto& [x, y] : edges(view, lower, upper, 4.0 / 3.0)) {
        ASSERT_LE(std::max(std::abs(x - 0.5), std::abs(y - 0.5)), 0.5);
    }
}

} // namespace
