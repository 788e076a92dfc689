// SPDX-License-Identifier: MIT
#include "QUORBackgroundSettings.h"
#include "QUORDataType.h"
#include "QUORGeneralSettings.h"
#include "QUORProductSettings.h"
#include "ScratchHome.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#include <QRegularExpression>
#include <QSettings>

namespace {

/// What the guide says about a key of a group: the cells of its row behind the key.
QStringList findRow(const QString& guide, const QString& group, const QString& key) {
    const qsizetype start = guide.indexOf(QStringLiteral("Group `") + group + QLatin1Char('`'));
    const QString section = guide.mid(start, guide.indexOf(QStringLiteral("\n## "), start) - start);
    for (const QString& line : section.split(QLatin1Char('\n'))) {
        const QString first = line.section(QLatin1Char('|'), 1, 1);
        if (start >= 0 && first.contains(QLatin1Char('`') + key + QLatin1Char('`'))) {
            return line.split(QRegularExpression(QStringLiteral("\\s*\\|\\s*"))).mid(2);
        }
    }
    return {};
}

/// Every key that the program stores stands in the guide, with the default that the program has.
TEST(SettingsGuideTest, NamesEveryKeyAndDefault) {
    const ScratchHome home;
    const QString background = home.path() + QStringLiteral("/background.conf");
    qputenv(QUORBackgroundSettings::FILE_VARIABLE, background.toLocal8Bit());
    QUORGeneralSettings general;
    general.save();
    general.saveDisplayStates(std::make_shared<QUORDisplayState>());
    general.saveViewAngles(std::make_shared<QUORViewAngle>());
    QUORExportSettings().save();
    QUORBackgroundSettings().save();
    QUORProductSettings(QStringLiteral("CAPPI"), QStringLiteral("Z"), QUORDataType(2));
    qunsetenv(QUORBackgroundSettings::FILE_VARIABLE);

    const QString guide = QString::fromUtf8(readFile(sourcePath(QStringLiteral("docs/settings.md"))));
    int found = 0;
    for (const QString& name : {QSettings().fileName(), background}) {
        const QSettings stored(name, QSettings::NativeFormat);
        for (const QString& path : stored.allKeys()) {
            QString key = path.section(QLatin1Char('/'), -1);
            key.remove(QRegularExpression(QStringLiteral("(?<=Visible|Opacity)\\d+$")));
            if (key == QLatin1String("size")) {
                continue;
            }
            const QString group = path.section(QRegularExpression(QStringLiteral("[ /]")), 0, 0).toUpper();
            const QStringList row = findRow(guide, group, key);
            ASSERT_FALSE(row.isEmpty()) << qPrintable(path);
            ++found;
            const bool fixedDefault =
                path.count(QLatin1Char('/')) == 1 && !key.startsWith(QLatin1String("volumevalue"));
            if (fixedDefault) {
                EXPECT_EQ(row.value(1), stored.value(path).toString()) << qPrintable(path);
            }
        }
    }
    EXPECT_GT(found, 50);
}

} // namespace
