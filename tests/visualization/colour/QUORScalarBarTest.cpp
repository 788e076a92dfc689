// SPDX-License-Identifier: MIT
#include "QUORScalarBar.h"

#include "QUORColormap.h"
#include "QUORDataType.h"
#include "ScratchHome.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#include <vtkColorTransferFunction.h>
#include <vtkNew.h>

#include <cmath>
#include <vector>

namespace {

using Values = std::vector<double>;

TEST(QUORScalarBarTest, LabelsStandOnRoundValuesThatHaveRoom) {
    const Values rain{0, 0.0365, 0.154, 0.648, 2.73, 11.5, 48.6, 205};
    const struct {
        Values seams;
        int pixels;
        Values labels;
    } rows[] = {
        {{-30, 0, 75}, 120, {-20, 0, 20, 40, 60}},
        {{-30, 0, 75}, 160, {-30, -20, -10, 0, 10, 20, 30, 40, 50, 60, 70}},
        {{-40, 0, 40}, 400, {-40, -35, -30, -25, -20, -15, -10, -5, 0, 5, 10, 15, 20, 25, 30, 35, 40}},
        {{0, 4, 15}, 9000, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}},
        {rain, 800, {0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 50, 100, 200}},
        {rain, 130, {0.1, 0.5, 2, 10, 50, 200}},
        {{7, 7}, 100, {}},
        {{-30, -10, -0.1, 0.1, 10, 30}, 100, {-30, -10, 0.1, 10, 30}},
    };
    for (const auto& row : rows) {
        vtkNew<QUORScalarBar> bar;
        bar->SetSeams(row.seams);
        EXPECT_EQ(bar->FindLabels(row.pixels), row.labels) << row.seams.front() << ' ' << row.pixels;
        for (std::size_t i = 1; i < row.labels.size(); ++i) {
            EXPECT_GE((bar->FindHeight(row.labels[i]) - bar->FindHeight(row.labels[i - 1])) * row.pixels,
                      13.9);
        }
    }
    vtkNew<QUORScalarBar> bar;
    bar->SetSeams(rain);
    EXPECT_NEAR(bar->FindHeight(2.73), 4.0 / 7.0, 1e-12) << "bands of equal height";
    EXPECT_NEAR(bar->FindHeight(0.5 * (2.73 + 11.5)), 4.5 / 7.0, 1e-12);
}

TEST(QUORScalarBarTest, EveryColourHasAPixelOfASmallBar) {
    const Values rows[] = {{-30, 0, 75},
                           {0, 0.1, 5, 10, 15, 20, 25, 30, 35, 40, 45, 50, 55, 60, 65, 70, 75},
                           {0, 5, 10, 15, 20, 25, 30, 35, 40, 45, 50, 55, 55.25, 60},
                           {0, 0.0365, 0.154, 0.648, 2.73, 11.5, 48.6, 205}};
    for (const Values& seams : rows) {
        vtkNew<QUORScalarBar> bar;
        bar->SetSeams(seams);
        for (std::size_t i = 1; i < seams.size(); ++i) {
            EXPECT_GE((bar->FindHeight(seams[i]) - bar->FindHeight(seams[i - 1])) * 200.0, 1.0) << seams[i];
        }
    }
}

/// What is packaged: a rate and the reflectivity that goes with it have one colour, whether the rate is
/// stored or read on the bar.
TEST(QUORScalarBarTest, RainSpeaksTheLanguageOfReflectivity) {
    const ScratchHome home;
    ScratchHome::writePackaged(
        QStringLiteral("QUOR3DColors.conf"),
        QString::fromUtf8(readFile(sourcePath(QStringLiteral("share/QUOR3DColors.conf")))));
    const QUORDataType rain(13);
    const QUORColormap stored(QStringLiteral("Default"), rain, QUORColormap::Absolute);
    const QUORColormap shown(QStringLiteral("Default"), rain, QUORColormap::Display);
    const QUORColormap reflectivity(QStringLiteral("Default"), QUORDataType(2), QUORColormap::Display);
    for (double dbz = 5.0; dbz <= 60.0; dbz += 0.5) {
        const double rate = std::pow(std::pow(10.0, 0.1 * dbz) / 200.0, 1.0 / 1.6);
        const auto layer = stored.getColor(rain.displayToAbsoluteValue(rate));
        const auto bar = shown.getColor(rate);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(layer.at(i), bar.at(i), 3) << dbz;
        }
        double nearest = 0.0;
        double least = 1e9;
        for (double at = 0.0; at <= 70.0; at += 0.1) {
            const auto color = reflectivity.getColor(at);
            const double distance = std::hypot(color[0] - bar[0], color[1] - bar[1], color[2] - bar[2]);
            if (distance < least) {
                least = distance;
                nearest = at;
            }
        }
        EXPECT_NEAR(nearest, dbz, 1.0);
    }
}

} // namespace
