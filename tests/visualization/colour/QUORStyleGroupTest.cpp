// SPDX-License-Identifier: MIT
#include "QUORStyleGroup.h"

#include "LogCapture.h"
#include "ScratchHome.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QSettings>

namespace {

constexpr std::array<QUORStyleGroup::Row, 4> TABLE{{
    {"pen/color", QUORStyleGroup::Kind::Color, {0.1, 0.2, 0.3}},
    {"pen/width", QUORStyleGroup::Kind::LineWidth, {1.5}},
    {"pen/opacity", QUORStyleGroup::Kind::Opacity, {0.5}},
    {"font/size", QUORStyleGroup::Kind::FontSize, {9.0}},
}};

} // namespace

TEST(QUORStyleGroupTest, ReadsTheGroupOfTheHourWithItsDefaults) {
    const ScratchHome home;
    const LogCapture log;
    ScratchHome::writeSettings("QUOR3DVisStyles.conf",
                               "[PEN_DAY]\npen\\color\\g=0.75\nfont\\size=0.5\n"
                               "[PEN_NIGHT]\npen\\color\\b=-3\npen\\width=6.5\npen\\opacity=40\n");
    const struct {
        bool night;
        QUORStyleGroup::Color color;
        double width;
        double opacity;
    } rows[] = {{false, {0.1, 0.75, 0.3}, 1.5, 0.5}, {true, {0.1, 0.2, 0.0}, 6.5, 1.0}};
    QUORStyleGroup style("PEN", TABLE);
    EXPECT_EQ(style.color("pen/color"), (QUORStyleGroup::Color{0.1, 0.2, 0.3}));
    for (const auto& row : rows) {
        style.load(row.night);
        EXPECT_EQ(style.color("pen/color"), row.color);
        EXPECT_DOUBLE_EQ(style.number("pen/width"), row.width);
        EXPECT_DOUBLE_EQ(style.number("pen/opacity"), row.opacity);
        EXPECT_DOUBLE_EQ(style.number("font/size"), 9.0);
    }
    for (const char* key : {"font/size", "pen/color/b", "pen/opacity"}) {
        EXPECT_EQ(log.count(key), 1) << key;
    }
}

/// A key that no component reads would be an edit without effect.
TEST(QUORStyleGroupTest, ThePackagedFileHoldsOnlyKeysThatAreRead) {
    const QMap<QString, QStringList> known{
        {"RENDERER",
         {"site/marker/color", "site/marker/radius", "background/color", "ambient/color", "light/color",
          "colorscale/background/color", "legend/text/color"}},
        {"OUTLINE3D", {"line/color", "line/width", "tick/color", "tick/width"}},
        {"RADARRINGS",
         {"line/color", "line/width", "label/color", "label/size", "label/halo/color", "label/halo/width"}},
        {"LATLONGRID",
         {"line/color", "line/width", "label/color", "label/size", "label/halo/color", "label/halo/width"}},
        {"COMPASS", {"compass/color", "compass/opacity/highlighted", "compass/opacity/nonhighlighted"}},
        {"CURSORTOOL",
         {"line/selected/color", "line/selected/width", "line/unselected/color", "line/unselected/width",
          "marker/radius", "home/marker/color", "home/label/color", "home/label/fontsize"}},
    };
    QSettings file(sourcePath(QStringLiteral("share/QUOR3DVisStyles.conf")), QSettings::IniFormat);
    ASSERT_EQ(file.status(), QSettings::NoError);
    EXPECT_EQ(file.childGroups().size(), 2 * known.size());
    for (const QString& key : file.allKeys()) {
        SCOPED_TRACE(key.toStdString());
        const QRegularExpressionMatch match =
            QRegularExpression(QStringLiteral("^([A-Z0-9]+)_(?:DAY|NIGHT)/(.+?)(/[rgb])?$")).match(key);
        ASSERT_TRUE(match.hasMatch());
        EXPECT_TRUE(known.value(match.captured(1)).contains(match.captured(2)));
        EXPECT_EQ(match.captured(2).endsWith(QLatin1String("color")), !match.captured(3).isEmpty());
        bool isNumber = false;
        const double value = file.value(key).toDouble(&isNumber);
        EXPECT_TRUE(isNumber);
        EXPECT_TRUE(value > 0.0 && (match.captured(3).isEmpty() || value <= 1.0));
    }
}
