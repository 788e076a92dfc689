// SPDX-License-Identifier: MIT
#include "QUORBackgroundSettings.h"

#include "LogCapture.h"
#include "ScratchHome.h"
#include "TestFiles.h"

#include "QUORConfig.h"
#include "QUORSystem.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

class QUORBackgroundSettingsTest : public testing::Test {
protected:
    QUORBackgroundSettingsTest() { qputenv(QUORBackgroundSettings::FILE_VARIABLE, path().toLocal8Bit()); }
    ~QUORBackgroundSettingsTest() override { qunsetenv(QUORBackgroundSettings::FILE_VARIABLE); }

    QString path() const { return _dir.filePath(QStringLiteral("quor3dd.conf")); }
    void put(const QString& lines) const { writeFile(path(), "[BACKGROUND]\n" + lines.toUtf8()); }
    static QStringList products(const QUORBackgroundSettings& settings) {
        QStringList names;
        for (const QString& configuration : QUORBackgroundSettings::getAllConfigurations()) {
            names.append(settings.get2DProduct(configuration));
        }
        return names;
    }

    ScratchHome _home;
    QTemporaryDir _dir;
};

const QString SRI = QStringLiteral("SRI");

TEST_F(QUORBackgroundSettingsTest, HasDefaults) {
    const LogCapture log;
    const QUORBackgroundSettings settings;
    EXPECT_EQ(settings.getOutputFileExtension(), QStringLiteral(".tiff"));
    EXPECT_EQ(products(settings), (QStringList{SRI, SRI, SRI, SRI}));
    EXPECT_EQ(settings.get2DProduct(QStringLiteral("X")), QString());
    EXPECT_TRUE(log.contains(QStringLiteral("D: Loading background settings from ") + path() +
                             QStringLiteral(", status: 0")));
    EXPECT_EQ(log.lines().filter(QStringLiteral("E: ")) + log.lines().filter(QStringLiteral("W: ")),
              QStringList{QStringLiteral("E: Settings file ") + path() +
                          QStringLiteral(" is missing; where it says nothing else, images go to ") +
                          QDir::currentPath() +
                          QStringLiteral(" as TIFF of 1600 x 1200 pixels, each with its 2D product SRI")});
}

TEST_F(QUORBackgroundSettingsTest, NamesTheSitesThatAreDrawn) {
    const struct {
        const char* line;
        const char* drawn;
        const char* left;
    } rows[] = {{"", "KLOT ALPHA", ""},
                {"sites=KLOT", "KLOT klot", "KLOT2 ALPHA"},
                {"sites=KLOT KD* BR?VO", "KLOT KDVN BRAVO", "KL BRVO"},
                {"sites=\"KLOT, KDVN\"", "KLOT KDVN", "ALPHA"}};
    for (const auto& row : rows) {
        put(QString::fromLatin1(row.line));
        const QUORBackgroundSettings settings;
        for (const QString& site : QString::fromLatin1(row.drawn).split(' ', Qt::SkipEmptyParts)) {
            EXPECT_TRUE(settings.isSiteDrawn(site)) << row.line << qPrintable(site);
        }
        for (const QString& site : QString::fromLatin1(row.left).split(' ', Qt::SkipEmptyParts)) {
            EXPECT_FALSE(settings.isSiteDrawn(site)) << row.line << qPrintable(site);
        }
    }
}

TEST_F(QUORBackgroundSettingsTest, ListsThePicturesOfAScene) {
    using View = QUORBackgroundSettings::View;
    const QString first = QStringLiteral("viewangle=South\ndisplaystate=Day\nwidth=800\nheight=600\n");
    const View plain{QStringLiteral("South"), QStringLiteral("Day"), 800, 600};
    View north = plain;
    north.viewAngle = QStringLiteral("North");
    View small = plain;
    small.width = 400;
    View all = north;
    all.displayState = QUORConfig::VALUE_DEFAULT;
    const struct {
        const char* lines;
        QList<View> views;
    } rows[] = {
        {"", {plain}},
        {"views\\size=2\nviews\\1\\viewangle=North\nviews\\2\\width=400\n", {plain, north, small}},
        {"views\\size=1\nviews\\1\\viewangle=North\nviews\\1\\displaystate=Default\n", {plain, all}},
        // None twice, and nothing beyond what the file holds.
        {"views\\size=2000000000\nviews\\1\\viewangle=South\nviews\\2\\viewangle=North\nviews\\3\\viewangle="
         "North\n",
         {plain, north}},
        {"views\\size=1\nviews\\1\\viewangle=North\nviews\\1\\width=-5\n", {plain, north}},
    };
    for (const auto& row : rows) {
        put(first + QString::fromLatin1(row.lines));
        EXPECT_EQ(QUORBackgroundSettings().getViews(), row.views) << row.lines;
    }
}

TEST_F(QUORBackgroundSettingsTest, WhatWasReadLastStaysWhileTheFileIsDamaged) {
    const QByteArray whole = "[BACKGROUND]\ndirectory=/images\nwidth=640\nviewangle=From the south\n";
    const struct {
        const char* name;
        QByteArray content;
        const char* damage;
    } rows[] = {{"garbage", "\x01\x02]]\n", "has a line that is no comment"},
                {"cut inside a name", whole.left(46), "has a line that is no comment"},
                {"cut inside a value", whole.left(61), "ends inside a line"},
                {"cut inside another value", whole.left(28), "ends inside a line"},
                {"another section", "[OTHER]\nwidth=3\n", "has no section [BACKGROUND]"},
                {"a section without keys", "[BACKGROUND]\n", "is empty"},
                {"comments", "# nothing\n; here\n", "is empty"}};
    writeFile(path(), whole);
    QUORBackgroundSettings settings;
    const auto expectKept = [&](const char* name, const char* damage) {
        const LogCapture log;
        settings.load();
        const QUORBackgroundSettings fresh;
        for (const auto* record : std::initializer_list<const QUORBackgroundSettings*>{&settings, &fresh}) {
            EXPECT_EQ(record->getWidth(), 640) << name;
            EXPECT_EQ(record->getDirectory(), QStringLiteral("/images")) << name;
            EXPECT_EQ(record->getViewAngleName(), QStringLiteral("From the south")) << name;
            EXPECT_FALSE(record->isRead()) << name;
        }
        EXPECT_EQ(log.count(QStringLiteral("E: Settings file ") + path() + QLatin1Char(' ') + damage), 1)
            << name;
        EXPECT_EQ(log.count(QStringLiteral("E: ")), 1) << name;
    };
    for (const auto& row : rows) {
        writeFile(path(), row.content);
        expectKept(row.name, row.damage);
        writeFile(path(), whole);
        settings.load();
        EXPECT_TRUE(settings.isRead());
    }
    ASSERT_TRUE(QFile::remove(path()));
    expectKept("missing", "is missing");

    writeFile(path(), "[BACKGROUND]\ndirectory=/images\n");
    settings.load();
    EXPECT_EQ(settings.getWidth(), 1600) << "a key that a whole file leaves out takes its default";
}

TEST_F(QUORBackgroundSettingsTest, AFileReplacedByOneOfEqualSizeAndTimeIsNoticed) {
    const QString other = _dir.filePath(QStringLiteral("other"));
    timespec times[2]{{1700000000, 0}, {1700000000, 0}};
    put(QStringLiteral("width=640\n"));
    writeFile(other, "[BACKGROUND]\nwidth=800\n");
    for (const QString& file : {path(), other}) {
        ASSERT_EQ(::utimensat(AT_FDCWD, qPrintable(file), times, 0), 0);
    }
    EXPECT_EQ(QUORBackgroundSettings().getWidth(), 640);
    ASSERT_EQ(::rename(qPrintable(other), qPrintable(path())), 0);
    EXPECT_EQ(QUORBackgroundSettings().getWidth(), 800);
}

TEST_F(QUORBackgroundSettingsTest, ReadsHandWrittenFiles) {
    put(QStringLiteral("activated=yes\ndirectory=/images/a,b\noutputformat=png\nwidth=0\nheight=100000\n"
                       "products\\1\\product=VIL\nproducts\\3\\product=(none)\nproducts\\size=1\n"));
    const LogCapture log;
    QUORBackgroundSettings settings;
    settings.load();
    EXPECT_TRUE(settings.isActivated());
    EXPECT_EQ(settings.getDirectory(), QStringLiteral("/images/a,b"));
    EXPECT_EQ(settings.getOutputFormat(), 3);
    EXPECT_EQ(settings.getOutputFormatString(), QStringLiteral("TIFF"));
    EXPECT_EQ(settings.getOutputFileExtension(), QStringLiteral("."));
    EXPECT_EQ(settings.getWidth(), 1600);
    EXPECT_EQ(settings.getHeight(), 1200);
    EXPECT_EQ(products(settings), (QStringList{QStringLiteral("VIL"), SRI, QStringLiteral("(none)"), SRI}));
    EXPECT_TRUE(QUORBackgroundSettings::isNoProduct(settings.get2DProduct(QStringLiteral("W"))));
    EXPECT_EQ(log.count(QStringLiteral("W: Settings file ") + path()), 3);
}

TEST_F(QUORBackgroundSettingsTest, StoresWhatIsSet) {
    {
        QUORBackgroundSettings settings;
        settings.setActivated(true);
        settings.setDirectory(QStringLiteral("/images"));
        settings.setOutputFormat(QUORExportSettings::Jpeg);
        settings.setDisplayStateName(QUORConfig::defaultValueTranslated());
        settings.setViewAngleName(QStringLiteral("South"));
        settings.set2DProduct(QStringLiteral("Z"), QStringLiteral("MAX"));
        settings.save();
    }
    const QSettings stored(path(), QSettings::NativeFormat);
    EXPECT_EQ(stored.value(QStringLiteral("BACKGROUND/displaystate")), QStringLiteral("Default"));
    EXPECT_EQ(stored.value(QStringLiteral("BACKGROUND/outputformat")), QStringLiteral("JPEG"));
    EXPECT_EQ(stored.value(QStringLiteral("BACKGROUND/products/size")).toInt(), 4);
    QUORBackgroundSettings settings;
    EXPECT_TRUE(settings.isActivated());
    EXPECT_EQ(settings.getDirectory(), QStringLiteral("/images"));
    EXPECT_EQ(settings.getOutputFileExtension(), QStringLiteral(".jpg"));
    EXPECT_EQ(settings.getViewAngleName(), QStringLiteral("South"));
    EXPECT_EQ(products(settings), (QStringList{SRI, SRI, SRI, QStringLiteral("MAX")}));
    settings.reset();
    EXPECT_EQ(products(settings), (QStringList{SRI, SRI, SRI, SRI}));
    EXPECT_EQ(settings.getViewAngleName(), QStringLiteral("Default"));
}

TEST_F(QUORBackgroundSettingsTest, ReportsItsFile) {
    const mode_t previous = ::umask(0);
    EXPECT_EQ(QUORBackgroundSettings().status(), 0);
    ::umask(previous);
    struct stat info {};
    ASSERT_EQ(::stat(qPrintable(path()), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, mode_t(0600));
    ASSERT_TRUE(QFile::remove(path()));
    ASSERT_TRUE(QDir().mkdir(path()));
    EXPECT_EQ(QUORBackgroundSettings().status(), 2);
}

TEST_F(QUORBackgroundSettingsTest, SaysOnceThatItsFileCannotBeRead) {
    ASSERT_TRUE(QFile::link(path(), path()));
    const LogCapture log;
    const QString line = QStringLiteral("E: Settings file ") + path() + QStringLiteral(" cannot be read: ");
    QUORBackgroundSettings settings;
    settings.load();
    EXPECT_EQ(log.count(line), 1);
    ASSERT_TRUE(QFile::remove(path()));
    put(QStringLiteral("width=640\ndirectory=~/images\n"));
    settings.load();
    EXPECT_EQ(settings.getWidth(), 640);
    EXPECT_EQ(settings.getDirectory(), _home.path() + QStringLiteral("/images"));
    ASSERT_TRUE(QFile::remove(path()));
    ASSERT_TRUE(QFile::link(path(), path()));
    settings.load();
    EXPECT_EQ(log.count(line), 2);
    EXPECT_EQ(settings.getWidth(), 640);
    EXPECT_EQ(QUORBackgroundSettings().getWidth(), 640);
    EXPECT_FALSE(settings.isRead());
    ASSERT_TRUE(QFile::remove(path()));
    ASSERT_EQ(::mkfifo(qPrintable(path()), 0600), 0);
    settings.load();
    ASSERT_TRUE(QFile::remove(path()) && QDir().mkdir(path()));
    settings.load();
    EXPECT_EQ(log.count(line + QStringLiteral("it is not a regular file")), 1);
}

TEST_F(QUORBackgroundSettingsTest, FindsTheBackgroundUser) {
    const struct {
        const char* text;
        const char* user;
    } rows[] = {
        {"", ""},
        {"BG_USER=", ""},
        {"BG_USER=\"\"\n", ""},
        {"A=1\nBG_USER=radar\nB=2\n", "radar"},
        {"  export BG_USER=radar # who\n", "radar"},
        {"#BG_USER=old\nBG_USER=\"radar\"\n", "radar"},
        {"BG_USER='radar'\r\n", "radar"},
        {"NOT_BG_USER=x\n", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(QUORBackgroundSettings::findBgUser(QString::fromLatin1(row.text)),
                  QString::fromLatin1(row.user))
            << row.text;
    }
}

TEST_F(QUORBackgroundSettingsTest, FallsBackToTheDefaultUser) {
    if (QFile::exists(QUORSystem::getSystemConfigurationDirectory() + QLatin1Char('/') +
                      QUORSystem::BG_SERVICE_NAME)) {
        GTEST_SKIP() << "this system configures the service";
    }
    EXPECT_EQ(QUORBackgroundSettings::getBgSettingsFileName(), path());
    qunsetenv(QUORBackgroundSettings::FILE_VARIABLE);
    const LogCapture log;
    const QString warning =
        QStringLiteral("W: Background user not configured - using default for background username: quor3d");
    EXPECT_EQ(QUORBackgroundSettings::getBgUsername(), QStringLiteral("quor3d"));
    EXPECT_EQ(QUORBackgroundSettings::getBgSettingsFileName(),
              QUORSystem::getUserSettingsDirectory(QStringLiteral("quor3d")) +
                  QStringLiteral("/quor3dd.conf"));
    EXPECT_EQ(log.count(warning), 2);
    for (int job = 0; job < 3; ++job) {
        QUORBackgroundSettings();
    }
    EXPECT_EQ(log.count(warning), 3) << "a record for every job must not flood the log";
}

TEST_F(QUORBackgroundSettingsTest, PackagedKeysCountUntilTheUserSaysOtherwise) {
    ScratchHome::writePackaged(
        QStringLiteral("quor3dd.conf"),
        QStringLiteral("[BACKGROUND]\noutputformat=PNG\nviewangle=Packaged\nwait2d=120\n"
                       "width=800\nproducts\\1\\product=PPI\nproducts\\size=1\n"));
    QUORBackgroundSettings settings;
    EXPECT_EQ(settings.getOutputFormat(), QUORExportSettings::Png);
    EXPECT_EQ(settings.getViewAngleName(), QStringLiteral("Packaged"));
    EXPECT_EQ(settings.getWait2D(), 120);
    EXPECT_EQ(settings.get2DProduct(QStringLiteral("R")), QStringLiteral("PPI"));
    EXPECT_EQ(settings.get2DProduct(QStringLiteral("Z")), QStringLiteral("SRI"));

    put(QStringLiteral("viewangle=Mine\nwidth=broken\n"));
    settings.load();
    EXPECT_EQ(settings.getViewAngleName(), QStringLiteral("Mine"));
    EXPECT_EQ(settings.getWidth(), 800) << "a value that cannot be read leaves what is packaged";
    EXPECT_EQ(settings.getHeight(), 1200);
    EXPECT_EQ(settings.getOutputFormat(), QUORExportSettings::Png);
}

} // namespace
