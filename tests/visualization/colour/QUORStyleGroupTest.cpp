// SPDX-License-Identifier: MIT
#include "QUORStyleGroup.h"

#include "LogCapture.h"
#include "QUORSettingsTable.h"
#include "ScratchHome.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QSettings>

TEST(QUORStyleGroupTest, ReadsTheGroupOfTheHourWithItsDefaults) {
    const ScratchHome home;
    const LogCapture log;
    ScratchHome::writeSettings("QUOR3DVisStyles.conf",
                               "[COMPASS_DAY]\ncompass\\color\\g=0.75\n"
                               "[COMPASS_NIGHT]\ncompass\\color\\b=-3\ncompass\\opacity\\highlighted=40\n"
                               "[OUTLINE3D_DAY]\ntick\\width=0\n[OUTLINE3D_NIGHT]\ntick\\width=6.5\n");
    const struct {
        bool night;
        QUORStyleGroup::Color color;
        double width;
        double opacity;
    } rows[] = {{false, {0.3, 0.75, 0.3}, 1.0, 1.0}, {true, {0.3, 0.3, 0.0}, 6.5, 1.0}};
    QUORStyleGroup compass("COMPASS");
    QUORStyleGroup outline("OUTLINE3D");
    EXPECT_EQ(compass.color("compass/color"), (QUORStyleGroup::Color{0.3, 0.3, 0.3}));
    for (const auto& row : rows) {
        compass.load(row.night);
        outline.load(row.night);
        EXPECT_EQ(compass.color("compass/color"), row.color);
        EXPECT_DOUBLE_EQ(outline.number("tick/width"), row.width);
        EXPECT_DOUBLE_EQ(compass.number("compass/opacity/highlighted"), row.opacity);
    }
    for (const char* key : {"tick/width=0", "compass/color/b", "compass/opacity/highlighted"}) {
        EXPECT_EQ(log.count(key), 1) << key;
    }
}

/// A key that no component reads would be an edit without effect.
TEST(QUORStyleGroupTest, ThePackagedFileHoldsOnlyKeysThatAreRead) {
    QMap<QString, QStringList> known;
    for (const QUORSettingsKey& row : QUORSettingsTable::getRows()) {
        if (row.file == QUORSettingsKey::File::Styles) {
            known[QString::fromUtf8(row.group.data(), qsizetype(row.group.size())).chopped(2)].append(
                row.nameText());
        }
    }
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
        const bool isSwitchedOff = value == 0.0 && match.captured(2) == QLatin1String("terrain/missing");
        EXPECT_TRUE(isSwitchedOff || value > 0.0);
        EXPECT_TRUE(match.captured(3).isEmpty() || value <= 1.0);
    }
}
