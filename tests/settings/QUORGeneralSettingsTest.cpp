// SPDX-License-Identifier: MIT
#include "QUORGeneralSettings.h"

#include "LogCapture.h"
#include "ScratchHome.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QSettings>

namespace {

constexpr auto CHILD_VARIABLE = "QUOR_TEST_SETTINGS_PATH";

/// Settings as one reads them from a file with these lines.
QUORGeneralSettings readFrom(const QString& lines) {
    const ScratchHome home;
    ScratchHome::writeSettings(QStringLiteral("QUOR3D.conf"), QStringLiteral("[GENERAL]\n") + lines);
    return QUORGeneralSettings();
}

TEST(QUORGeneralSettingsTest, KeepsValuesInRange) {
    const LogCapture log;
    const QUORGeneralSettings settings = readFrom(QStringLiteral(
        "datashrink_h=0\ndatashrink_v=-4\nverticalscale=0\ndatasmooth=1e9\ntimewindow=-1\nlatlonunits=dm\n"));
    EXPECT_EQ(settings.getHorizontalDataShrink(), 1);
    EXPECT_EQ(settings.getVerticalDataShrink(), 1);
    EXPECT_EQ(settings.getVerticalScale(), 5.0);
    EXPECT_EQ(settings.getDataSmoothing(), 100.0);
    EXPECT_EQ(settings.getTimeWindow(), 180);
    EXPECT_EQ(settings.getLatLonFormat(), QUORGeneralSettings::Decimal);
    EXPECT_EQ(log.count(QStringLiteral("W: Settings file")), 5);
}

TEST(QUORGeneralSettingsTest, ReportsChanges) {
    const struct {
        const char* lines;
        bool changed;
        QStringList messages;
    } rows[] = {
        {"", false, {}},
        {"livemode=true\nlivemode_site=A\nlivemode_product3d=B\nlivemode_product2d=C", false, {}},
        {"clock24hours=false", true, {QStringLiteral("- Unit settings changed")}},
        {"metricunits=false\nlatlonunits=DMs", true, {QStringLiteral("- Unit settings changed")}},
        {"datashrink_v=2", true, {QStringLiteral("- Data resolution changed")}},
        {"timewindow=600", true, {}},
        {"animtimespan=1", true, {}},
        {"animframeinterval=1", true, {}},
        {"animloopmode=1", true, {}},
        {"animspeed=1", true, {}},
        {"data2d=/2\ndata3d=/3\ngeolayer=/g\nverticalscale=2\ndatasmooth=0\ndatashrink_h=1\nlatlonunits=Dm",
         true,
         {QStringLiteral("- Unit settings changed"), QStringLiteral("- Data resolution changed"),
          QStringLiteral("- Data smoothing changed"), QStringLiteral("- Vertical scaling changed"),
          QStringLiteral("- Geo data path changed"), QStringLiteral("- 3d data path changed"),
          QStringLiteral("- 2d data path changed")}},
    };
    const QUORGeneralSettings defaults = readFrom({});
    for (const auto& row : rows) {
        SCOPED_TRACE(row.lines);
        const QUORGeneralSettings other = readFrom(QString::fromLatin1(row.lines));
        QStringList messages;
        EXPECT_EQ(defaults.hasChanged(other, &messages), row.changed);
        EXPECT_EQ(messages, row.messages);
        EXPECT_EQ(other.hasChanged(defaults, nullptr), row.changed);
    }
}

TEST(QUORGeneralSettingsTest, ResetsWhatIsAsked) {
    const QString lines = QStringLiteral("clock24hours=false\nmetricunits=false\nlatlonunits=Dm\n"
                                         "verticalscale=2\ndatashrink_h=1\ndatashrink_v=2\ndatasmooth=0\n");
    const QString kept = QStringLiteral("livemode=true\nlivemode_site=A\ntimewindow=600\nanimspeed=3\n");
    const QString paths = QStringLiteral("data3d=/3\ndata2d=/2\ngeolayer=/g\n");
    for (const bool displayOnly : {false, true}) {
        QUORGeneralSettings settings = readFrom(lines + kept + paths);
        settings.reset(displayOnly);
        EXPECT_FALSE(settings.hasChanged(readFrom(displayOnly ? kept + paths : paths), nullptr));
        EXPECT_EQ(settings.isLiveMode(), displayOnly);
        EXPECT_EQ(settings.getLiveModeSite(), displayOnly ? QStringLiteral("A") : QString());
    }
}

TEST(QUORGeneralSettingsTest, FormatsTimesLengthsAndCoordinates) {
    QUORGeneralSettings settings = readFrom({});
    const QDateTime time(QDate(2024, 7, 3), QTime(15, 4), Qt::UTC);
    const QUORCoordinate site(60.5, -24.25);
    EXPECT_EQ(settings.formattedTime(time),
              time.toString(QStringLiteral("ddd")) + QStringLiteral(" 2024-07-03 15:04"));
    EXPECT_EQ(settings.formattedTimeShort(time), QStringLiteral("2024-07-03 15:04"));
    EXPECT_EQ(settings.formattedBigLength(12.5, 1), QStringLiteral("12.5 km"));
    EXPECT_EQ(settings.formattedSmallLength(1000, 0), QStringLiteral("1000 m"));
    settings.set24hClock(false);
    settings.setMetricUnits(false);
    EXPECT_EQ(settings.formattedTime(time),
              time.toString(QStringLiteral("ddd")) + QStringLiteral(" 2024-07-03 03:04 PM"));
    EXPECT_EQ(settings.formattedTimeShort(time), QStringLiteral("2024-07-03 03:04 PM"));
    EXPECT_EQ(settings.formattedBigLength(18.53184, 1), QStringLiteral("10.0 NM"));
    EXPECT_EQ(settings.formattedSmallLength(1000, 0), QStringLiteral("3281 ft"));
    const QString texts[] = {site.toDecimalString(QUORCoordinate::Both),
                             site.toDMsString(QUORCoordinate::Both), site.toDmString(QUORCoordinate::Both)};
    for (const auto format : {QUORGeneralSettings::Decimal, QUORGeneralSettings::DegreesMinutes,
                              QUORGeneralSettings::DegreesMinutesSeconds}) {
        settings.setLatLonFormat(format);
        EXPECT_EQ(settings.formatCoordinates(site, QUORCoordinate::Both), texts[format]);
    }
    EXPECT_EQ(settings.formatLatitude(site), site.toDmString(QUORCoordinate::Latitude));
    EXPECT_EQ(settings.formatLongitude(site), site.toDmString(QUORCoordinate::Longitude));
}

/// Runs itself in a second process, which reads what this one wrote: inside one process the settings layer
/// answers from memory.
TEST(QUORGeneralSettingsTest, SurvivesARestart) {
    const auto expectStored = [](const QUORGeneralSettings& settings) {
        EXPECT_FALSE(settings.is24hClock());
        EXPECT_EQ(settings.getLatLonFormat(), QUORGeneralSettings::DegreesMinutesSeconds);
        EXPECT_EQ(settings.get3DDir(), QStringLiteral("/data/a, b;c/Ilmajoki-ä"));
        EXPECT_EQ(settings.getTimeWindow(), 600);
    };
    const QString path = QFile::decodeName(qgetenv(CHILD_VARIABLE));
    if (!path.isEmpty()) {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, path);
        expectStored(QUORGeneralSettings());
        return;
    }
    const ScratchHome home;
    ScratchHome::writeSettings(QStringLiteral("QUOR3D.conf"), QStringLiteral("[GENERAL]\ntimewindow=600\n"));
    QUORGeneralSettings settings;
    settings.set24hClock(false);
    settings.setLatLonFormat(QUORGeneralSettings::DegreesMinutesSeconds);
    settings.set3DDir(QStringLiteral("/data/a, b;c/Ilmajoki-ä"));
    settings.save();
    expectStored(QUORGeneralSettings());

    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QString::fromLatin1(CHILD_VARIABLE), home.path() + QStringLiteral("/.config"));
    child.setProcessEnvironment(environment);
    child.start(QCoreApplication::applicationFilePath(),
                {QStringLiteral("--gtest_filter=QUORGeneralSettingsTest.SurvivesARestart")});
    ASSERT_TRUE(child.waitForFinished(30000));
    EXPECT_EQ(child.exitCode(), 0) << child.readAllStandardOutput().constData();
}

} // namespace
