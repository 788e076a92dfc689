// SPDX-License-Identifier: MIT
#include "QUORVolumeJoiner.h"

#include "TestVolume.h"

#include <gtest/gtest.h>

namespace {

constexpr auto Z = QUORRadarQuantity::Reflectivity;
constexpr auto V = QUORRadarQuantity::Velocity;

struct PieceRow {
    const char* file;
    std::vector<double> elevations;
    std::vector<QUORRadarQuantity> quantities;
    int seconds;
    const char* site = "A";
};

QUORRadarData pieceOf(const PieceRow& row) {
    TestVolume volume;
    volume.site.name = QLatin1String(row.site);
    volume.time = volume.time.addSecs(row.seconds);
    volume.isPiece = row.elevations.size() == 1;
    for (const double elevation : row.elevations) {
        QUORRadarSweep& sweep = volume.addSweep(elevation);
        for (const QUORRadarQuantity quantity : row.quantities) {
            TestVolume::addMoment(sweep, quantity, [](double, double) { return 1.0F; }, {4, 250.0, 500.0});
        }
    }
    return volume;
}

using Volumes = std::vector<QStringList>;
Volumes filesOf(const std::vector<QUORVolumeJoiner::Volume>& volumes) {
    Volumes files;
    for (const QUORVolumeJoiner::Volume& volume : volumes) {
        files.push_back(volume.files);
    }
    return files;
}

} // namespace

TEST(QUORVolumeJoiner, PutsSweepsAndQuantitiesTogether) {
    const struct {
        const char* what;
        std::vector<PieceRow> pieces;
        Volumes expected;
    } rows[] = {
        {"by radar and time, late ones too",
         {{"z1", {0.5}, {Z}, 0},
          {"other radar", {0.5}, {Z}, 5, "B"},
          {"v1", {0.5}, {V}, 0},
          {"z2", {1.5}, {Z}, 30},
          {"next", {0.5}, {Z}, 300},
          {"v2, late", {1.5}, {V}, 30},
          {"much later", {2.5}, {Z}, 1500}},
         {{"z1", "v1", "z2", "v2, late"}, {"other radar"}, {"next"}, {"much later"}}},
        {"the first sweep lost, a pause between volumes",
         {{"a1", {1.5}, {Z}, 30},
          {"a2", {2.5}, {Z}, 60},
          {"b0", {0.5}, {Z}, 300},
          {"b1", {1.5}, {Z}, 330},
          {"b2", {2.5}, {Z}, 360},
          {"c0", {0.5}, {Z}, 600},
          {"c1", {1.5}, {Z}, 630}},
         {{"a1", "a2"}, {"b0", "b1", "b2"}, {"c0", "c1"}}},
        {"the same with one time for each volume",
         {{"a1", {1.5}, {Z}, 0},
          {"a2", {2.5}, {Z}, 0},
          {"b0", {0.5}, {Z}, 300},
          {"b2", {2.5}, {Z}, 300},
          {"b1", {1.5}, {Z}, 300}},
         {{"a1", "a2"}, {"b0", "b2", "b1"}}},
        {"the first sweep lost, no pause, downwards and then up",
         {{"a1", {4.5}, {Z}, 30},
          {"a2", {0.5}, {Z}, 60},
          {"a3", {8.0}, {Z}, 90},
          {"a4", {25.0}, {Z}, 120},
          {"b0", {5.5}, {Z}, 150},
          {"b1", {4.5}, {Z}, 180},
          {"b2", {0.5}, {Z}, 210},
          {"b3", {8.0}, {Z}, 240},
          {"b4", {25.0}, {Z}, 270},
          {"c0", {5.5}, {Z}, 300}},
         {{"a1", "a2", "a3", "a4"}, {"b0", "b1", "b2", "b3", "b4"}, {"c0"}}},
        {"an order of its own, the lowest slowly, nothing lost",
         {{"a0", {0.5}, {Z}, 0},
          {"a1", {15.0}, {Z}, 31},
          {"a2", {1.5}, {Z}, 45},
          {"b0", {0.5}, {Z}, 60},
          {"b1", {15.0}, {Z}, 91}},
         {{"a0", "a1", "a2"}, {"b0", "b1"}}},
        {"the last sweep lost",
         {{"a0", {0.5}, {Z}, 0}, {"a1", {1.5}, {Z}, 30}, {"b0", {0.5}, {Z}, 300}, {"b2", {2.5}, {Z}, 360}},
         {{"a0", "a1"}, {"b0", "b2"}}},
        {"a sweep twice",
         {{"a0", {0.5}, {Z}, 0}, {"again", {0.5}, {Z}, 0}, {"a1", {1.5}, {Z}, 30}},
         {{"a0", "a1"}, {"again"}}},
        {"a split cut",
         {{"1", {0.5}, {Z}, 0}, {"2", {0.5}, {Z, V}, 20}, {"3", {1.5}, {Z, V}, 40}, {"4", {0.5}, {Z}, 60}},
         {{"1", "2", "3"}, {"4"}}},
        {"volumes of one quantity",
         {{"z", {0.5, 1.5}, {Z}, 0}, {"v", {0.5, 1.5}, {V}, 0}, {"v, later", {0.5, 1.5}, {V}, 150}},
         {{"z", "v"}, {"v, later"}}},
    };
    for (const auto& row : rows) {
        QUORVolumeJoiner joiner(600);
        for (const PieceRow& piece : row.pieces) {
            joiner.add(pieceOf(piece), QString::fromLatin1(piece.file));
        }
        EXPECT_EQ(filesOf(joiner.takeAll()), row.expected) << row.what;
        EXPECT_TRUE(joiner.isEmpty());
    }
}

TEST(QUORVolumeJoiner, KeepsWhatMayGrowAndApartWhatIsLate) {
    QUORVolumeJoiner joiner(600);
    EXPECT_FALSE(QUORVolumeJoiner::mayJoin(pieceOf({"whole", {0.5, 1.5}, {Z, V}, 0})));
    joiner.add(pieceOf({"z1", {0.5}, {Z}, 0}), "z1");
    EXPECT_EQ(filesOf(joiner.takeComplete(std::chrono::hours(1))), Volumes());
    joiner.add(pieceOf({"z2", {1.5}, {Z}, 30}), "z2");
    EXPECT_EQ(filesOf(joiner.takeAll()), Volumes({{"z1", "z2"}}));
    joiner.add(pieceOf({"next", {0.5}, {Z}, 300}), "next");
    joiner.add(pieceOf({"late", {1.5}, {V}, 30}), "late");
    EXPECT_EQ(filesOf(joiner.takeAll()), Volumes({{"late"}, {"next"}}));
}
