// SPDX-License-Identifier: MIT
#include "QUORImportBatch.h"

#include "QUORImportError.h"
#include "TestVolume.h"

#include <gtest/gtest.h>

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
    QUORRadarData read(const QString& file, QUORReadExtent extent) {
        const bool isOutline = extent == QUORReadExtent::Outline;
        diary.append((isOutline ? QStringLiteral("look ") : QStringLiteral("read ")) + file);
        if (!files.contains(file) || (!isOutline && damaged.contains(file))) {
            throw QUORImportError(QStringLiteral("bad"));
        }
        QUORRadarData data = files.value(file);
        if (!isOutline && changed.contains(file)) {
            data.time = data.time.addSecs(300);
        }
        if (isOutline && !comesWhole) {
            data.isOutline = true;
            for (QUORRadarSweep& sweep : data.sweeps) {
                for (QUORRadarMoment& moment : sweep.moments) {
                    moment.codes.clear();
                }
            }
        }
        return data;
    }
    QString run(const QStringList& names) {
        diary.clear();
        QUORImportBatch(
            600, [this](const QString& file, QUORReadExtent extent) { return read(file, extent); },
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
    QStringList damaged; ///< in their values
    QStringList changed; ///< since they were looked at
    bool comesWhole = false;
    QStringList diary;
    int done = 0;
};

} // namespace

TEST_F(QUORImportBatchTest, HoldsTheValuesOfOneVolumeWhateverTheOrder) {
    for (int volume = 0; volume < 3; ++volume) {
        const std::string number = std::to_string(volume);
        add(("z" + number).c_str(), {0.5, 1.5}, {Z}, 300 * volume);
        add(("v" + number).c_str(), {0.5, 1.5}, {V}, 300 * volume + 5);
    }
    add("whole", {0.5, 1.5}, {Z, V}, 700);
    EXPECT_EQ(run({"v2", "z0", "whole", "v0", "z2", "bad", "z1", "v1"}),
              "look v2, look z0, look whole, read whole, make whole, look v0, look z2, look bad, bad bad, "
              "look z1, look v1, "
              "read z0, read v0, make z0+v0, read z1, read v1, make z1+v1, read z2, read v2, make z2+v2");
    EXPECT_EQ(run({"z1"}), "read z1, make z1");
    EXPECT_EQ(run({"bad"}), "read bad, bad bad");
    comesWhole = true; // as of formats whose outline costs as much
    EXPECT_EQ(run({"whole", "z0", "v0"}),
              "look whole, make whole, look z0, look v0, read z0, read v0, make z0+v0");
}

TEST_F(QUORImportBatchTest, LosesOfAVolumeOnlyWhatIsBad) {
    add("s1", {0.5}, {Z}, 0);
    add("s2", {1.5}, {Z}, 20);
    add("s3", {2.5}, {Z}, 40);
    damaged = QStringList{"s1"};
    EXPECT_EQ(run({"s1", "s2", "s3"}),
              "look s1, look s2, look s3, read s1, bad s1, read s2, read s3, make s2+s3");
    damaged.clear();
    changed = QStringList{"s2"};
    EXPECT_TRUE(run({"s1", "s2", "s3"})
                    .endsWith("it has changed while others were imported s2, read s3, make s1+s3"));
    damaged = QStringList{"s1", "s2", "s3"};
    EXPECT_FALSE(run({"s1", "s2", "s3"}).contains("make"));
}
