// SPDX-License-Identifier: MIT
#include "QUORVolumeJoiner.h"

#include "TestVolume.h"

#include <gtest/gtest.h>

namespace {

using Quantity = QUORRadarQuantity;

QUORRadarData piece(double elevation, Quantity quantity, int seconds, const char* site = "A") {
    TestVolume volume;
    volume.site.name = QLatin1String(site);
    volume.time = volume.time.addSecs(seconds);
    volume.isPiece = true;
    TestVolume::addMoment(volume.addSweep(elevation), quantity, [](double, double) { return 1.0F; });
    return volume;
}

} // namespace

TEST(QUORVolumeJoiner, PutsSweepsAndQuantitiesTogetherByTime) {
    QUORVolumeJoiner joiner(600);
    joiner.add(piece(0.5, Quantity::Reflectivity, 0), "z1");
    joiner.add(piece(0.5, Quantity::Reflectivity, 5, "B"), "other radar");
    joiner.add(piece(0.5, Quantity::Velocity, 0), "v1");
    joiner.add(piece(1.5, Quantity::Reflectivity, 30), "z2");
    joiner.add(piece(0.5, Quantity::Reflectivity, 300), "next");
    joiner.add(piece(1.5, Quantity::Velocity, 30), "v2, late");
    joiner.add(piece(2.5, Quantity::Reflectivity, 1500), "much later");
    QUORRadarData whole = piece(0.5, Quantity::Width, 10);
    whole.isPiece = false;
    joiner.add(std::move(whole), "whole");

    const auto complete = joiner.takeComplete(std::chrono::hours(1));
    ASSERT_EQ(complete.size(), 1U);
    EXPECT_EQ(complete[0].files, QStringList("whole"));
    std::vector<QStringList> files;
    for (const QUORVolumeJoiner::Volume& volume : joiner.takeAll()) {
        files.push_back(volume.files);
    }
    const std::vector<QStringList> expected{
        {"z1", "v1", "z2"}, {"other radar"}, {"next", "v2, late"}, {"much later"}};
    EXPECT_EQ(files, expected);
    EXPECT_TRUE(joiner.isEmpty());
}
