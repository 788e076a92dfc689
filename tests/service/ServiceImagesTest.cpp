// SPDX-License-Identifier: MIT
#include "ServiceFolders.h"
#include "ServiceProcess.h"
#include "TestFiles.h"
#include "WaitUntil.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr const char* WITHOUT_2D = "products\\size=4\n"
                                   "products\\1\\product=(none)\nproducts\\2\\product=(none)\n"
                                   "products\\3\\product=(none)\nproducts\\4\\product=(none)\n";
constexpr int DEADLINE = 20000;
const QString FIRST_IMAGE = QStringLiteral("TEST_Z_240601120000.png");
const QString SECOND_IMAGE = QStringLiteral("TEST_Z_240601120500.png");
const QString IGNORED = QStringLiteral("N: File visualization ignored.");
const QString VISUALIZED = QStringLiteral("N: File visualized in ");

} // namespace

/// Product files in, images out, by the real daemon.
class ServiceImagesTest : public testing::Test {
protected:
    ServiceImagesTest() : _folders(_service.path(QStringLiteral("data"))) {
        _service.environment().insert(QStringLiteral("QUOR3D_BG_SETTINGS"),
                                      _service.path(QStringLiteral("bg.conf")));
    }

    /// With `background` in the background settings; returns when the service waits for files.
    void start(const QByteArray& background, int logLevel = 3) {
        _service.write(QStringLiteral(".config/QUOR/QUOR3D.conf"), _folders.mainSettings());
        configure(background);
        ASSERT_TRUE(_service.startDaemon({QStringLiteral("--loglevel=") + QString::number(logLevel)}));
        if (logLevel == 3) {
            ASSERT_TRUE(_service.waitForLog(QStringLiteral("--- GOING TO SLEEP ---")));
        }
    }
    void configure(const QByteArray& background) {
        _service.write(QStringLiteral("bg.conf"), _folders.backgroundSettings(background));
    }
    bool waitForImage(const QString& name) const {
        return waitUntil([&] { return QFile::exists(_folders.image(name)); }, DEADLINE);
    }
    qsizetype count(const QString& text) const { return _service.log().count(text); }
    bool waitForCount(const QString& text, qsizetype wanted) const {
        return waitUntil([&] { return count(text) >= wanted; }, DEADLINE);
    }
    QStringList images() const {
        return QDir(_folders.path(QStringLiteral("out"))).entryList(QDir::Files | QDir::Hidden);
    }

    ServiceProcess _service;
    ServiceFolders _folders;
};

TEST_F(ServiceImagesTest, DroppedFilesBecomeImagesUnderTheSettingsOfTheirTime) {
    start(WITHOUT_2D);
    const QString file = _folders.drop(ServiceFolders::storm(0));
    ASSERT_TRUE(waitForImage(FIRST_IMAGE));
    configure(QByteArray(WITHOUT_2D) + "outputformat=JPEG\nwidth=200\n");
    _folders.drop(ServiceFolders::storm(5));
    const QString second = QStringLiteral("TEST_Z_240601120500.jpg");
    ASSERT_TRUE(waitForImage(second));
    EXPECT_EQ(_service.terminate(), 0);
    EXPECT_EQ(QImage(_folders.image(FIRST_IMAGE)).size(), QSize(160, 120));
    EXPECT_EQ(QImage(_folders.image(second)).size(), QSize(200, 120));
    EXPECT_EQ(QFile::permissions(_folders.image(FIRST_IMAGE)) & 0x777, QFile::Permissions(0x644));
    EXPECT_EQ(count(QStringLiteral("N: QUORLiveDataThread: new 3D file arrived ") + file), 1);
    EXPECT_TRUE(_service.log().contains(
        QRegularExpression(QStringLiteral("File visualized in \\d+\\.\\d{3} seconds\\."))));
    EXPECT_EQ(images(), (QStringList{FIRST_IMAGE, second}));
}

TEST_F(ServiceImagesTest, ALogThatNobodyReadsStopsNothingInTheForeground) {
    int pipe[2] = {-1, -1};
    ASSERT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
    ASSERT_GE(::fcntl(pipe[1], F_SETPIPE_SZ, 4096), 4096);
    _service.write(QStringLiteral(".config/QUOR/QUOR3D.conf"), _folders.mainSettings());
    configure(WITHOUT_2D);
    ASSERT_TRUE(_service.startForeground({QStringLiteral("--loglevel=3")}, pipe[1]));
    // The pipe is full before the start is over, so that no line can tell when it is.
    int minutes = 0;
    EXPECT_TRUE(waitUntil(
        [&] {
            _folders.drop(ServiceFolders::storm(minutes++));
            return !images().isEmpty();
        },
        DEADLINE));
    QByteArray text(65536, '\0');
    text.truncate(::read(pipe[0], text.data(), std::size_t(text.size())));
    EXPECT_TRUE(text.contains("quor3dd starting\n"));
    EXPECT_EQ(_service.terminate(), 0);
    text.resize(65536);
    text.truncate(::read(pipe[0], text.data(), std::size_t(text.size())));
    EXPECT_TRUE(text.contains(" log lines were dropped, because nobody took them in time\n"));
    ::close(pipe[0]);
    ::close(pipe[1]);
}

TEST_F(ServiceImagesTest, ABadFileIsOneLineAndTheNextGoodOneAnImage) {
    start(WITHOUT_2D);
    _service.write(QStringLiteral("data/3d/CAZ240601110000.cap"), QByteArray(2000, 'x'));
    TestProduct flat = ServiceFolders::rain();
    flat.prefix = QStringLiteral("FLT");
    const QString wrongKind = _folders.drop(flat);
    TestProduct empty = ServiceFolders::storm(-30);
    empty.points[0] = 0;
    _folders.drop(empty);
    QDir().mkpath(_folders.path(QStringLiteral("3d/folder")));
    _folders.drop(ServiceFolders::storm());
    ASSERT_TRUE(waitForImage(FIRST_IMAGE));
    ASSERT_TRUE(waitForCount(IGNORED, 1)); // the newest goes first
    EXPECT_EQ(_service.terminate(), 0);
    static const QRegularExpression complaint(QStringLiteral(" [WE]: [^\\n]*"));
    QStringList complaints;
    for (const QRegularExpressionMatch& match : complaint.globalMatch(_service.log())) {
        complaints.append(match.captured());
    }
    // the line that says once what a directory's first bad file may mean stands beside the file's own
    const QStringList hints = complaints.filter(QStringLiteral("The first file of this directory"));
    EXPECT_EQ(hints.size(), 1) << qPrintable(hints.join('\n'));
    complaints.removeAll(hints.value(0));
    for (const QString& name :
         {QStringLiteral("CAZ240601110000.cap"), QFileInfo(wrongKind).fileName(), empty.fileName()}) {
        EXPECT_EQ(complaints.filter(name).size(), 1) << qPrintable(name) << '\n'
                                                     << qPrintable(complaints.join('\n'));
    }
    EXPECT_TRUE(complaints.filter(QStringLiteral("folder")).isEmpty());
    EXPECT_EQ(images(), QStringList{FIRST_IMAGE});
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(ServiceImagesTest, AnElementThatCannotBeBuiltCostsItsImageAndNothingElse) {
    start(WITHOUT_2D);
    _folders.drop(ServiceFolders::storm(0));
    ASSERT_TRUE(waitForImage(FIRST_IMAGE));
    TestProduct large = ServiceFolders::storm(1);
    large.points = {800, 800, 60};
    const auto pid = pid_t(_service.daemonPid());
    const QString statm = QStringLiteral("/proc/%1/statm").arg(pid);
    const rlim_t pages = readFile(statm).split(' ').first().toULong();
    rlimit before{};
    ASSERT_EQ(::prlimit(pid, RLIMIT_AS, nullptr, &before), 0);
    const rlimit tight{pages * rlim_t(::sysconf(_SC_PAGESIZE)) + (8U << 20U), before.rlim_max};
    ASSERT_EQ(::prlimit(pid, RLIMIT_AS, &tight, nullptr), 0);
    _folders.drop(large);
    EXPECT_TRUE(waitForCount(IGNORED, 1)) << qPrintable(_service.log().right(3000));
    ASSERT_EQ(::prlimit(pid, RLIMIT_AS, &before, nullptr), 0);
    _folders.drop(ServiceFolders::storm(5));
    EXPECT_TRUE(waitForImage(SECOND_IMAGE));
    EXPECT_EQ(images(), (QStringList{FIRST_IMAGE, SECOND_IMAGE}));
    EXPECT_GE(count(QStringLiteral(" E: ")), 1);
}
#endif

TEST_F(ServiceImagesTest, SiteNamesStayInsideTheOutputDirectory) {
    start(WITHOUT_2D);
    const struct {
        const char* site;
        const char* image;
    } rows[] = {{"A/B", "A_B_Z_240601120000.png"},
                {"../../X", "______X_Z_240601120100.png"},
                {".HIDDEN", "_HIDDEN_Z_240601120200.png"},
                {"N\x01/\x7fT", "N___T_Z_240601120300.png"}};
    int minutes = 0;
    for (const auto& row : rows) {
        TestProduct product = ServiceFolders::storm(minutes++);
        product.site = row.site;
        _folders.drop(product);
        EXPECT_TRUE(waitForImage(QString::fromLatin1(row.image)))
            << row.image << images().join(' ').toStdString();
    }
    EXPECT_EQ(images().size(), std::ssize(rows));
}

TEST_F(ServiceImagesTest, AnImageThatCannotBeWrittenIsDrawnWhenItCanBe) {
    start(WITHOUT_2D);
    const QString out = _folders.path(QStringLiteral("out"));
    ASSERT_TRUE(QDir().rmdir(out));
    for (const int minutes : {0, 5, 10}) {
        _folders.drop(ServiceFolders::storm(minutes));
    }
    ASSERT_TRUE(waitForCount(QStringLiteral("E: Writing output failed: ") + out, 3));
    EXPECT_TRUE(
        _service.waitForLog(_folders.image(FIRST_IMAGE) + QStringLiteral(": No such file or directory\n")));
    EXPECT_TRUE(waitForCount(IGNORED, 3));
    EXPECT_EQ(count(VISUALIZED), 0);
    // One goes meanwhile.
    QFile::remove(_folders.path(QStringLiteral("3d/")) + ServiceFolders::storm(10).fileName());
    ASSERT_TRUE(_service.waitForLog(QStringLiteral("- removed filename=")));
    ASSERT_TRUE(QDir().mkdir(out));
    ASSERT_TRUE(waitForImage(FIRST_IMAGE));
    EXPECT_EQ(images(), (QStringList{FIRST_IMAGE, SECOND_IMAGE}));
    EXPECT_EQ(_service.terminate(), 0);
    const QString again = QStringLiteral("N: QUORLiveDataThread: image not written before, of ");
    EXPECT_EQ(count(again), 2);
    EXPECT_LT(_service.log().indexOf(again + QStringLiteral("2 ") +
                                     _folders.path(QStringLiteral("3d/CAZ240601120500"))),
              _service.log().indexOf(again + QStringLiteral("1 ") +
                                     _folders.path(QStringLiteral("3d/CAZ240601120000"))));
}

TEST_F(ServiceImagesTest, AProductWhose2DProductDoesNotComeIsDrawnWithoutItWhenItHasWaited) {
    _folders.drop(ServiceFolders::storm(-5));
    start("wait2d=2\n");
    QElapsedTimer timer;
    timer.start();
    _folders.drop(ServiceFolders::storm());
    ASSERT_TRUE(waitForImage(FIRST_IMAGE));
    EXPECT_GE(timer.elapsed(), 2000);
    ASSERT_TRUE(waitForCount(VISUALIZED, 1));
    const QByteArray without = _service.read(QStringLiteral("data/out/") + FIRST_IMAGE);
    TestProduct rain = ServiceFolders::rain();
    rain.points = {32, 32, 1};
    rain.radar = {15500, 15500, 0};
    _folders.drop(rain, QStringLiteral("2d"));
    ASSERT_TRUE(waitForCount(VISUALIZED, 2));
    EXPECT_NE(_service.read(QStringLiteral("data/out/") + FIRST_IMAGE), without);
    // Its 2D product is there in time.
    _folders.drop(ServiceFolders::rain(5), QStringLiteral("2d"));
    _folders.drop(ServiceFolders::storm(5));
    ASSERT_TRUE(waitForImage(SECOND_IMAGE));
    EXPECT_EQ(_service.terminate(), 0);
    EXPECT_EQ(images(), (QStringList{FIRST_IMAGE, SECOND_IMAGE}));
    EXPECT_EQ(count(QStringLiteral("E: Image of TEST Z drawn without its 2D product SRI, which has not come "
                                   "within 2 seconds: there is none at all")),
              1);
}

TEST_F(ServiceImagesTest, Missing2DDataIsExplainedOnceForEachCauseAtTheDefaultLevel) {
    start({}, 0);
    const QString beginning = QStringLiteral(" E: No image of TEST Z before its 2D product SRI arrives: ");
    _folders.drop(ServiceFolders::storm(0));
    ASSERT_TRUE(_service.waitForLog(beginning + QStringLiteral("there is none at all in ")));
    _folders.drop(ServiceFolders::storm(5));
    TestProduct elsewhere = ServiceFolders::rain(5);
    elsewhere.site = "OTHER";
    elsewhere.prefix = QStringLiteral("OTH");
    _folders.drop(elsewhere, QStringLiteral("2d"));
    EXPECT_TRUE(_service.waitForLog(beginning + QStringLiteral("there is only that of OTHER")));
    _folders.drop(ServiceFolders::rain(10), QStringLiteral("2d"));
    EXPECT_TRUE(
        _service.waitForLog(beginning + QStringLiteral("the closest of this site is 300 seconds away, and "
                                                       "timewindow=180 accepts half of that")));
    _folders.drop(ServiceFolders::rain(5), QStringLiteral("2d"));
    ASSERT_TRUE(waitForImage(SECOND_IMAGE));
    EXPECT_EQ(count(QStringLiteral(" E: ")), 3) << qPrintable(_service.log());
    for (const char* product : {"sri", "none"}) {
        configure(QByteArray("products\\size=4\nproducts\\4\\product=") + product + "\n");
        TestProduct later = ServiceFolders::storm(product[0]);
        _folders.drop(later);
        EXPECT_TRUE(
            _service.waitForLog(QStringLiteral("its 2D product %1 arrives: \"%1\" is no 2D product, valid "
                                               "are PPI, SRI, VIL, MAX, (none)")
                                    .arg(QLatin1String(product))));
    }
    EXPECT_EQ(_service.terminate(), 0);
    EXPECT_EQ(images(), QStringList{SECOND_IMAGE});
}

TEST_F(ServiceImagesTest, AWrongSetupIsNamedAtTheDefaultLevelWhenTheServiceStarts) {
    const struct {
        const char* main;
        const char* background;
        const char* line; ///< begins behind the file
    } rows[] = {
        {"verticalscle=3\ngarbage\n", "",
         ", line 5: GENERAL/verticalscle: is not known and does not count; write verticalscale"},
        {"verticalscle=3\ngarbage\n", "", ", line 6: is no comment, [section] or key=value of one line"},
        {"", "directory=out\n",
         ", line 7: BACKGROUND/directory: images go to \"out\" below the working directory"},
        {"verticalscle=3\n", "",
         ", line 5: GENERAL/verticalscle: is not known and does not count; write verticalscale"},
        {"[GENRAL]\ntimewindow=60\n", "", ", line 5: GENRAL: is no group of this file"},
        {"[PRODUCT CAPPI Z]\nrendering=Surface\n", "", ", line 6: PRODUCT CAPPI Z/rendering: \"Surface\""},
        {"", "outdir=/images\n", ", line 7: BACKGROUND/outdir: is not known"},
        {"", "width=1600px\n", ", line 7: BACKGROUND/width: \"1600px\" is not a whole number"},
        {"", "outputformat=png\n", ", line 7: BACKGROUND/outputformat: \"png\""},
        {"", "displaystate=Echo\n", ", line 7: BACKGROUND/displaystate: "},
        {"", "viewangle=South\n", ", line 7: BACKGROUND/viewangle: "}};
    for (const auto& row : rows) {
        _service.write(QStringLiteral(".config/QUOR/QUOR3D.conf"), _folders.mainSettings(row.main));
        configure(row.background);
        ASSERT_TRUE(_service.startDaemon({QStringLiteral("--loglevel=0")}));
        const QString file = _service.path(*row.main != '\0' ? QStringLiteral(".config/QUOR/QUOR3D.conf")
                                                             : QStringLiteral("bg.conf"));
        EXPECT_EQ(count(QStringLiteral(" E: ") + file + QString::fromLatin1(row.line)), 1)
            << row.line << '\n'
            << qPrintable(_service.log());
        EXPECT_EQ(_service.terminate(), 0);
        QFile::remove(_service.path(QStringLiteral("log")));
    }
}

TEST_F(ServiceImagesTest, ProductsInAFolderOfTheDirectoryAreAnError) {
    ASSERT_TRUE(QDir().mkpath(_folders.path(QStringLiteral("3d/north"))));
    _folders.drop(ServiceFolders::storm(), QStringLiteral("3d/north"));
    start({}, 0);
    EXPECT_EQ(count(QStringLiteral(" E: ") + _folders.path(QStringLiteral("3d")) +
                    QStringLiteral(" holds no products, but a folder of it does; write data3d=") +
                    _folders.path(QStringLiteral("3d/north"))),
              1)
        << qPrintable(_service.log());
    EXPECT_EQ(count(QStringLiteral(" E: ")), 1) << qPrintable(_service.log());
}

TEST_F(ServiceImagesTest, SwappedDirectoriesAreOneErrorForEach) {
    _folders.drop(ServiceFolders::storm(0), QStringLiteral("2d"));
    _folders.drop(ServiceFolders::storm(5), QStringLiteral("2d"));
    start({}, 0);
    const QString beginning = QStringLiteral(" E: The first file of this directory that gives no image: ");
    const QString reason = QStringLiteral(" but one of the other kind: are data3d and data2d swapped?\n");
    EXPECT_EQ(count(beginning + _folders.path(QStringLiteral("2d/")) + ServiceFolders::storm(0).fileName() +
                    QStringLiteral(" is no 2D product") + reason),
              1)
        << qPrintable(_service.log());
    _folders.drop(ServiceFolders::rain(0));
    const QString rain =
        beginning + _folders.path(QStringLiteral("3d/")) + ServiceFolders::rain(0).fileName();
    EXPECT_TRUE(_service.waitForLog(rain + QStringLiteral(" is no 3D product") + reason));
    _folders.drop(ServiceFolders::rain(5));
    waitUntil([] { return false; }, 300);
    EXPECT_EQ(count(beginning), 2);
}

TEST_F(ServiceImagesTest, A2DFileRendersTheFilesItCompletes) {
    start("products\\size=4\nproducts\\1\\product=VIL\n");
    TestProduct width = ServiceFolders::storm();
    width.type = 4;
    _folders.drop(ServiceFolders::storm());
    _folders.drop(width);
    ASSERT_TRUE(waitForCount(IGNORED, 2));
    const QString rain = _folders.drop(ServiceFolders::rain(), QStringLiteral("2d"));
    ASSERT_TRUE(waitForCount(VISUALIZED, 2));
    const qsizetype widthLine =
        _service.log().indexOf(QStringLiteral("N: Found W file matching 2d product ") + rain);
    EXPECT_GT(widthLine, 0);
    EXPECT_GT(_service.log().indexOf(QStringLiteral("N: Found Z file matching 2d product ") + rain),
              widthLine);
    EXPECT_EQ(images(), (QStringList{QStringLiteral("TEST_W_240601120000.png"), FIRST_IMAGE}));

    TestProduct unused = ServiceFolders::rain(1);
    unused.code = 16;
    _folders.drop(unused, QStringLiteral("2d"));
    ASSERT_TRUE(_service.waitForLog(QStringLiteral("new 2D file arrived ") +
                                    _folders.path(QStringLiteral("2d/MAX"))));
    EXPECT_EQ(_service.terminate(), 0);
    EXPECT_EQ(count(VISUALIZED), 2);
}

TEST_F(ServiceImagesTest, AProductIssuedAgainIsDrawnAgain) {
    start({});
    const QString flat = _folders.drop(ServiceFolders::rain(), QStringLiteral("2d"));
    ASSERT_TRUE(_service.waitForLog(QStringLiteral("new 2D file arrived")));
    const QString file = _folders.drop(ServiceFolders::storm());
    const auto picture = [&](qsizetype drawn) {
        EXPECT_TRUE(waitForCount(VISUALIZED, drawn));
        return _service.read(QStringLiteral("data/out/") + FIRST_IMAGE);
    };
    const QByteArray first = picture(1);
    TestProduct storm = ServiceFolders::storm();
    storm.groundElevationM = 7;
    storm.fill = [](int x, int y, int z) { return x < 4 && y < 4 && z < 3 ? 200U : 0U; };
    storm.writeTo(file);
    const QByteArray second = picture(2);
    EXPECT_NE(second, first);
    TestProduct rain = ServiceFolders::rain();
    rain.groundElevationM = 7;
    rain.points = {32, 32, 1};
    rain.radar = {15500, 15500, 0};
    rain.fill = [](int, int, int) { return 20000U; };
    _folders.drop(rain, QStringLiteral("2d"));
    EXPECT_NE(picture(3), second);
    EXPECT_EQ(_service.terminate(), 0);
    for (const QString& path : {flat, file}) {
        EXPECT_EQ(count(QStringLiteral("N: PRODUCT ISSUED AGAIN, REPLACES THE ONE BEFORE: ") +
                        QFileInfo(path).fileName()),
                  1);
    }
    EXPECT_EQ(count(QStringLiteral("Data not available anymore: ")), 0);
}

TEST_F(ServiceImagesTest, ADecimalCommaChangesNothing) {
    const QString locales = QFileInfo(_service.path(QStringLiteral("locales/x"))).path();
    if (QProcess::execute(QStringLiteral("localedef"),
                          {QStringLiteral("-i"), QStringLiteral("de_DE"), QStringLiteral("-f"),
                           QStringLiteral("UTF-8"), locales + QStringLiteral("/de_DE.utf8")}) > 1) {
        GTEST_SKIP() << "no locale with a decimal comma can be made";
    }
    QByteArray pictures[2];
    for (QByteArray& picture : pictures) {
        start(WITHOUT_2D);
        _folders.drop(ServiceFolders::storm());
        ASSERT_TRUE(waitForImage(FIRST_IMAGE));
        ASSERT_EQ(_service.terminate(), 0);
        picture = _service.read(QStringLiteral("data/out/") + FIRST_IMAGE);
        QFile::remove(_folders.image(FIRST_IMAGE));
        QFile::remove(_folders.path(QStringLiteral("3d/")) + ServiceFolders::storm().fileName());
        QFile::remove(_service.path(QStringLiteral("log")));
        _service.environment().insert(QStringLiteral("LOCPATH"), locales);
        _service.environment().insert(QStringLiteral("LC_ALL"), QStringLiteral("de_DE.utf8"));
    }
    EXPECT_FALSE(pictures[0].isEmpty());
    EXPECT_EQ(pictures[0], pictures[1]);
}
