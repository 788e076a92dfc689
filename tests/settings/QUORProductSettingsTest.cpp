// SPDX-License-Identifier: MIT
#include "QUORProductSettings.h"

#include "LogCapture.h"
#include "ScratchHome.h"
#include "TestFiles.h"

#include "QUORDataType.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QSettings>

namespace {

const QUORDataType REFLECTIVITY(2);
const QString CAPPI = QStringLiteral("CAPPI");
const QString Z = QStringLiteral("Z");

class QUORProductSettingsTest : public testing::Test {
protected:
    static void write(const QString& lines) {
        ScratchHome::writeSettings(QStringLiteral("QUOR3D.conf"),
                                   QStringLiteral("[PRODUCT%20CAPPI%20Z]\n") + lines);
    }
    static QUORProductSettings::Ptr read(const QString& lines) {
        const ScratchHome home;
        write(lines);
        return std::make_shared<QUORProductSettings>(CAPPI, Z, REFLECTIVITY);
    }

    ScratchHome _home;
};

TEST_F(QUORProductSettingsTest, StoresDefaultsOnFirstSight) {
    QUORProductSettings settings;
    EXPECT_FALSE(settings.load(CAPPI, Z, REFLECTIVITY));
    const struct {
        const char* key;
        const char* value;
    } rows[] = {{"rendering", "surface"},        {"colormap", "Default"},      {"surface/size", "1"},
                {"surface/1/isovalue", "-31.5"}, {"surface/1/opacity", "100"}, {"volumevaluelow", "-31.5"},
                {"volumeopacitylow", "1"},       {"volumevaluehigh", "66.5"},  {"volumeopacityhigh", "100"}};
    const QSettings stored;
    for (const auto& row : rows) {
        EXPECT_EQ(stored.value(QStringLiteral("PRODUCT CAPPI Z/") + QString::fromLatin1(row.key)).toString(),
                  QString::fromLatin1(row.value))
            << row.key;
    }
    const auto again = std::make_shared<QUORProductSettings>();
    EXPECT_TRUE(again->load(CAPPI, Z, REFLECTIVITY));
    EXPECT_FALSE(settings.hasChanged(again, nullptr));
    EXPECT_EQ(again->getSurfaces(), settings.getSurfaces());
    EXPECT_EQ(again->getVolumeValueHigh(), 66.5);
}

TEST_F(QUORProductSettingsTest, ThePackagedGroupsCountAndAreNotStored) {
    ScratchHome::writePackaged(QStringLiteral("QUOR3D.conf"),
                               QString::fromUtf8(readFile(sourcePath(QStringLiteral("share/QUOR3D.conf")))));
    const LogCapture log;
    const struct {
        const char* configuration;
        int type;
        QUORProductSettings::SurfaceParContainer surfaces;
    } rows[] = {{"Z", 2, {{20, 15}, {40, 30}, {50, 100}}},
                {"V", 3, {{-20, 100}, {-10, 30}, {10, 30}, {20, 100}}},
                {"W", 4, {{3, 15}, {6, 30}, {9, 100}}},
                {"R", 13, {{0.65, 15}, {11.5, 30}, {48.6, 100}}}};
    for (const auto& row : rows) {
        QUORProductSettings settings;
        EXPECT_TRUE(settings.load(CAPPI, QLatin1String(row.configuration), QUORDataType(row.type)));
        EXPECT_EQ(settings.getSurfaces(), row.surfaces) << row.configuration;
    }
    EXPECT_EQ(log.count(QStringLiteral("W: ")), 0);
    EXPECT_FALSE(QFile::exists(ScratchHome::settingsDirectory() + QStringLiteral("/QUOR3D.conf")));
}

TEST_F(QUORProductSettingsTest, AddsOnlyWhatAGroupLacks) {
    const struct {
        const char* name;
        const char* lines;
        QUORProductSettings::SurfaceParContainer surfaces;
        double volumeLow;
    } rows[] = {
        {"colours", "colormap=Mine\n", {{-31.5, 100}}, -31.5},
        {"surfaces",
         "surface\\size=2\nsurface\\1\\isovalue=50\nsurface\\2\\isovalue=20\nsurface\\2\\opacity=30\n",
         {{20, 30}, {50, 100}},
         -31.5},
        {"a surface without a size", "surface\\1\\isovalue=20\n", {{20, 100}}, -31.5},
        {"volume", "volumevaluelow=5\n", {{-31.5, 100}}, 5},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const ScratchHome home;
        write(QString::fromLatin1(row.lines));
        const QString first = QString::fromLatin1(row.lines).section(QLatin1Char('\n'), 0, 0);
        for (const bool stored : {false, true}) {
            const LogCapture log;
            QUORProductSettings settings;
            EXPECT_EQ(settings.load(CAPPI, Z, REFLECTIVITY), stored);
            EXPECT_EQ(log.count(QStringLiteral("Group not found: PRODUCT CAPPI Z")), stored ? 0 : 1);
            EXPECT_EQ(settings.getSurfaces(), row.surfaces);
            EXPECT_EQ(settings.getVolumeValueLow(), row.volumeLow);
            EXPECT_EQ(settings.getVolumeValueHigh(), 66.5);
        }
        const QString content = QString::fromUtf8(readFile(QSettings().fileName()));
        EXPECT_TRUE(content.contains(first)) << qPrintable(content);
        EXPECT_TRUE(content.contains(QStringLiteral("rendering=surface"))) << qPrintable(content);
    }
}

TEST_F(QUORProductSettingsTest, StoresNoDefaultsOfWhatCannotBeDrawn) {
    QUORProductSettings settings;
    EXPECT_FALSE(settings.load(CAPPI, Z, REFLECTIVITY, QUORProductSettings::NotSaved));
    EXPECT_EQ(settings.getVolumeValueLow(), -31.5);
    EXPECT_FALSE(settings.load(CAPPI, QStringLiteral("V"), QUORDataType(3, 1000, 0, 0, 0)));
    EXPECT_FALSE(settings.load(CAPPI, QStringLiteral("V"), QUORDataType(3, 1000, 0, -500, 0)));
    EXPECT_FALSE(QFile::exists(QSettings().fileName()));
}

TEST_F(QUORProductSettingsTest, ReadsSurfaces) {
    using Surfaces = QUORProductSettings::SurfaceParContainer;
    const struct {
        const char* name;
        const char* lines;
        Surfaces expected;
    } rows[] = {
        {"none", "", {}},
        {"ordered",
         "surface\\size=3\nsurface\\1\\isovalue=50\nsurface\\2\\isovalue=20\nsurface\\2\\opacity=30\n"
         "surface\\3\\isovalue=40\nsurface\\3\\opacity=60\n",
         {{20, 30}, {40, 60}, {50, 100}}},
        {"the first four",
         "surface\\size=6\nsurface\\1\\isovalue=1\nsurface\\2\\isovalue=2\nsurface\\3\\isovalue=3\n"
         "surface\\4\\isovalue=4\nsurface\\5\\isovalue=5\nsurface\\6\\isovalue=6\n",
         {{1, 100}, {2, 100}, {3, 100}, {4, 100}}},
        {"the later of two",
         "surface\\size=2\nsurface\\1\\isovalue=9\nsurface\\1\\opacity=10\nsurface\\2\\isovalue=9\n"
         "surface\\2\\opacity=20\n",
         {{9, 20}}},
        {"bad values",
         "surface\\size=2\nsurface\\1\\isovalue=nan\nsurface\\1\\opacity=-5\nsurface\\2\\isovalue=9\n"
         "surface\\2\\opacity=900\n",
         {{-31.5, 0}, {9, 100}}},
        {"missing keys", "surface\\size=1\n", {{-31.5, 100}}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(read(QStringLiteral("rendering=surface\n") + QString::fromLatin1(row.lines))->getSurfaces(),
                  row.expected)
            << row.name;
    }
}

TEST_F(QUORProductSettingsTest, SavesWhatItRead) {
    write(QStringLiteral("rendering=Volume\nsurface\\size=6\nsurface\\1\\isovalue=1\nsurface\\2\\isovalue=2\n"
                         "surface\\3\\isovalue=3\nsurface\\4\\isovalue=4\nsurface\\5\\isovalue=5\n"));
    const LogCapture log;
    const QUORProductSettings settings(CAPPI, Z, REFLECTIVITY);
    EXPECT_TRUE(log.contains(QStringLiteral("PRODUCT CAPPI Z/rendering=Volume is not surface or volume")));
    EXPECT_EQ(settings.getRenderingType(), QUORProductSettings::Unknown);
    settings.save();
    const QSettings stored;
    EXPECT_EQ(stored.value(QStringLiteral("PRODUCT CAPPI Z/rendering")), QStringLiteral("unknown"));
    EXPECT_EQ(stored.value(QStringLiteral("PRODUCT CAPPI Z/surface/size")).toInt(), 4);
    EXPECT_FALSE(stored.contains(QStringLiteral("PRODUCT CAPPI Z/surface/5/isovalue")));
}

TEST_F(QUORProductSettingsTest, DescribesTheStepFromOneToAnother) {
    const QString volume = QStringLiteral("rendering=volume\nvolumevaluelow=1\n");
    const QString surface = QStringLiteral("rendering=surface\nsurface\\size=1\nsurface\\1\\isovalue=20\n");
    const struct {
        const char* name;
        QString from;
        QString to;
        QStringList messages;
    } rows[] = {
        {"same", surface, surface, {}},
        {"to surfaces",
         volume,
         surface,
         {QStringLiteral("- Changed to surface rendering"),
          QStringLiteral("- Isosurface parameters changed")}},
        {"to volume",
         surface,
         volume,
         {QStringLiteral("- Changed to volume rendering"), QStringLiteral("- Volume parameters changed")}},
        {"unused volume values", surface, surface + QStringLiteral("volumeopacityhigh=5\n"), {}},
        {"opacity",
         surface,
         surface + QStringLiteral("surface\\1\\opacity=5\n"),
         {QStringLiteral("- Isosurface parameters changed")}},
        {"colours",
         surface,
         surface + QStringLiteral("colormap=Rain\n"),
         {QStringLiteral("- Color map: Default -> Rain")}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QStringList messages;
        const auto from = read(row.from);
        const auto to = read(row.to);
        EXPECT_EQ(from->hasChanged(to, &messages), !row.messages.isEmpty());
        EXPECT_EQ(messages, row.messages);
        EXPECT_EQ(from->hasChanged(to, nullptr), !row.messages.isEmpty());
    }
}

} // namespace
