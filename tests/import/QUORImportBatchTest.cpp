// SPDX-License-Identifier: MIT
#include "QUORImportBatch.h"

#include "QUORImportError.h"
#include "TestVolume.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

constexpr auto Z = QUORRadarQuantity::Reflectivity;
constexpr auto V = QUORRadarQuantity::Velocity;

/// Files that exist as data alone, and a diary of what is done with them.
class QUORImportBatchTest : public testing::Test {
protected:
    void add(const char* file, std::vector<double> elevations, std::vector<QUORRadarQuantity> quantities,
             int seconds) {
        TestVolume volume;
        volume.time = volume.time.addSecs(seconds);
        volume.isPiece = elevations.size() == 1;
        for (const double elevation : elevations) {
            QUORRadarSweep& sweep = volume.addSweep(elevation);
            for (const QUORRadarQuantity quantity : quantities) {
                TestVolume::addMoment(sweep, quantity, [](double, double) { return 1.0F; },
                                      {4, 250.0, 500.0});
            }
        }
        files.insert(QLatin1String(file), volume);
    }
    QUORRadarData read(const QString& file) {
        const bool isAgain = diary.contains(QStringLiteral("read ") + file);
        diary.append((isAgain ? QStringLiteral("again ") : QStringLiteral("read ")) + file);
        if (!files.contains(file)) {
            throw QUORImportError(QStringLiteral("bad"));
        }
        return isAgain && changed.contains(file) ? changed.value(file) : files.value(file);
    }
    QString run(const QStringList& names) {
        diary.clear();
        QUORImportBatch(
            600, memory, [this](const QString& file) { return read(file); },
            [this](const QUORRadarData& data, const QStringList& from) {
                for (const QUORRadarSweep& sweep : data.sweeps) {
                    EXPECT_FALSE(sweep.moments.front().codes.empty());
                    EXPECT_FALSE(sweep.azimuths.empty());
                }
                diary.append(QStringLiteral("make ") + from.join(QLatin1Char('+')));
            },
            [this](const QStringList& from, const QString& reason) {
                diary.append(reason + QLatin1Char(' ') + from.join(QLatin1Char('+')));
            },
            [this](int filesDone) {
                EXPECT_GE(filesDone, done);
                done = filesDone;
            })
            .run(names);
        EXPECT_EQ(done, names.size());
        done = 0;
        return diary.join(QStringLiteral(", "));
    }

    QHash<QString, QUORRadarData> files;
    QHash<QString, QUORRadarData> changed; ///< since they were read
    std::size_t memory = 0;
    QStringList diary;
    int done = 0;
};

} // namespace

TEST_F(QUORImportBatchTest, HoldsTheValuesThatMemoryHasRoomForWhateverTheOrder) {
    for (int volume = 0; volume < 3; ++volume) {
        const std::string number = std::to_string(volume);
        add(("z" + number).c_str(), {0.5, 1.5}, {Z}, 300 * volume);
        add(("v" + number).c_str(), {0.5, 1.5}, {V}, 300 * volume + 5);
    }
    add("whole", {0.5, 1.5}, {Z, V}, 700);
    EXPECT_EQ(
        run({"v2", "z0", "whole", "v0", "z2", "bad", "z1", "v1"}),
        "read v2, read z0, read whole, make whole, read v0, read z2, read bad, bad bad, "
        "read z1, read v1, "
        "again z0, again v0, make z0+v0, again z1, again v1, make z1+v1, again z2, again v2, make z2+v2");
    memory = 3 * files["z0"].size();
    EXPECT_EQ(run({"v2", "z0", "v0", "z1", "v1"}), "read v2, read z0, read v0, read z1, read v1, "
                                                   "make z0+v0, again z1, again v1, make z1+v1, make v2");
    EXPECT_EQ(run({"bad"}), "read bad, bad bad");

    QUORRadarData data = files["z0"];
    EXPECT_GE(data.size(), 2U * 360U * (4U * sizeof(quint16) + 2U * sizeof(float)));
    data.dropValues();
    EXPECT_EQ(data.size(), 0U) << "of memory, not of values";
}

TEST_F(QUORImportBatchTest, LosesOfAVolumeOnlyWhatIsBad) {
    add("s1", {0.5}, {Z}, 0);
    add("s2", {1.5}, {Z}, 20);
    add("s3", {2.5}, {Z}, 40);
    // Its values are damaged, which nothing but reading them tells; another of that sweep is good.
    EXPECT_EQ(run({"s1", "bad twin of s2", "s2", "s3"}),
              "read s1, read bad twin of s2, bad bad twin of s2, read s2, read s3, "
              "again s1, again s2, again s3, make s1+s2+s3");
    const auto change = [this](const std::function<void(QUORRadarData&)>& what) {
        changed["s2"] = files["s2"];
        what(changed["s2"]);
    };
    const std::function<void(QUORRadarData&)> changes[] = {
        [](QUORRadarData& data) { data.time = data.time.addSecs(300); },
        [](QUORRadarData& data) { data.sweeps[0].fixedAngle = 0.5; },
        [](QUORRadarData& data) { data.sweeps[0].moments[0].quantity = V; },
    };
    for (const auto& what : changes) {
        change(what);
        EXPECT_TRUE(run({"s1", "s2", "s3"})
                        .endsWith("it has changed while others were imported s2, again s3, make s1+s3"));
    }
}
