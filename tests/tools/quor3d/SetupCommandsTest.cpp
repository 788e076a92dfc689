// SPDX-License-Identifier: MIT
#include "CheckCommand.h"
#include "CommandLineTool.h"
#include "InfoCommand.h"
#include "ScalesCommand.h"
#include "SetCommand.h"
#include "ShowCommand.h"
#include "StatesCommand.h"
#include "StatusCommand.h"
#include "UnsetCommand.h"
#include "ViewsCommand.h"

#include "ScratchHome.h"
#include "ServiceUser.h"
#include "TestFiles.h"
#include "TestProduct.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace {

struct Result {
    int status = 0;
    std::string out;
    std::string error;
    QJsonDocument json() const { return QJsonDocument::fromJson(QByteArray::fromStdString(out)); }
};

Result call(std::vector<std::string> words, bool user = true) {
    CommandLineTool tool;
    tool.add(std::make_unique<CheckCommand>());
    tool.add(std::make_unique<ShowCommand>());
    tool.add(std::make_unique<SetCommand>());
    tool.add(std::make_unique<UnsetCommand>());
    tool.add(std::make_unique<InfoCommand>());
    tool.add(std::make_unique<StatusCommand>());
    tool.add(std::make_unique<ViewsCommand>());
    tool.add(std::make_unique<StatesCommand>());
    tool.add(std::make_unique<ScalesCommand>());
    words.insert(words.begin(), "quor3d");
    if (user) {
        words.insert(words.begin() + 2, {"--user", ServiceUser::current().toStdString()});
    }
    std::vector<const char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(word.c_str());
    }
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    Result result;
    result.status = tool.run(int(arguments.size()), arguments.data());
    result.out = testing::internal::GetCapturedStdout();
    result.error = testing::internal::GetCapturedStderr();
    return result;
}

class SetupCommandsTest : public testing::Test {
protected:
    SetupCommandsTest() { qputenv("QUOR3D_BG_SETTINGS", QFile::encodeName(background())); }
    ~SetupCommandsTest() override { qunsetenv("QUOR3D_BG_SETTINGS"); }
    static QString background() { return ScratchHome::settingsDirectory() + QStringLiteral("/quor3dd.conf"); }
    static QByteArray mainFile() {
        return readFile(ScratchHome::settingsDirectory() + QStringLiteral("/QUOR3D.conf"));
    }

    ScratchHome _home;
};

TEST_F(SetupCommandsTest, SetsWhatTheTableAllowsAndKeepsTheRest) {
    ScratchHome::writeSettings(QStringLiteral("QUOR3D.conf"),
                               QStringLiteral("; mine\n[GENERAL]\ntimewindow=60 ; s\n"));
    ::chmod(qPrintable(ScratchHome::settingsDirectory() + QStringLiteral("/QUOR3D.conf")), 0640);
    const struct {
        std::vector<std::string> words;
        int status;
        const char* said;
    } rows[] = {
        {{"set", "timewindow", "300"}, 0, "timewindow=300"},
        {{"set", "GENERAL/data3d", "/data/3d, new"}, 0, "no directory yet"},
        {{"set", "width", "800"}, 0, "BACKGROUND/width=800"},
        {{"set", "outputformat", "png"}, 2, "TIFF, PNG or JPEG"},
        {{"set", "width", "800px"}, 2, "not a whole number"},
        {{"set", "BACKGROUND/height", "99999"}, 2, "1 to 16384"},
        {{"set", "timewindoww", "1"}, 2, "GENERAL/timewindow"},
        {{"set", "name", "x"}, 2, "Did you mean"},
        {{"set", "products/4/product", "(none)"}, 0, "(none)"},
        {{"set", "PRODUCT CAPPI Z/surface/2/isovalue", "40"}, 0, "isovalue=40"},
        {{"unset", "height"}, 0, "BACKGROUND/height=1200 (built in)"},
    };
    for (const auto& row : rows) {
        const Result result = call(row.words);
        EXPECT_EQ(result.status, row.status) << row.words.at(1) << result.error;
        EXPECT_NE((result.out + result.error).find(row.said), std::string::npos)
            << result.out << result.error;
    }
    EXPECT_EQ(mainFile(), "; mine\n[GENERAL]\ntimewindow=300 ; s\ndata3d=\"/data/3d, new\"\n\n"
                          "[PRODUCT CAPPI Z]\nsurface\\size=2\nsurface\\2\\isovalue=40\n");
    EXPECT_EQ(readFile(background()),
              "[BACKGROUND]\nwidth=800\nproducts\\size=4\nproducts\\4\\product=(none)\n");
    struct stat info {};
    ::stat(qPrintable(ScratchHome::settingsDirectory() + QStringLiteral("/QUOR3D.conf")), &info);
    EXPECT_EQ(info.st_mode & 0777, 0640U);
    EXPECT_EQ(call({"unset", "timewindow"}).status, 0);
    EXPECT_FALSE(mainFile().contains("timewindow"));
}

/// An array comes from one file, so that one element alone would hide the others.
TEST_F(SetupCommandsTest, AnElementBringsThePackagedOnesWithIt) {
    ScratchHome::writePackaged(QStringLiteral("QUOR3D.conf"),
                               QStringLiteral("[PRODUCT CAPPI Z]\nsurface\\size=2\nsurface\\1\\isovalue=20\n"
                                              "surface\\1\\opacity=30\nsurface\\2\\isovalue=50\n"));
    EXPECT_EQ(call({"set", "PRODUCT CAPPI Z/surface/1/isovalue", "25"}).status, 0);
    const QJsonArray values = call({"show", "PRODUCT CAPPI Z", "--json"}).json().array();
    QMap<QString, QString> surfaces;
    for (const QJsonValue& value : values) {
        surfaces.insert(value["key"].toString(), value["value"].toString());
    }
    EXPECT_EQ(surfaces["surface/size"], QStringLiteral("2"));
    EXPECT_EQ(surfaces["surface/1/isovalue"], QStringLiteral("25"));
    EXPECT_EQ(surfaces["surface/1/opacity"], QStringLiteral("30"));
    EXPECT_EQ(surfaces["surface/2/isovalue"], QStringLiteral("50"));
}

TEST_F(SetupCommandsTest, ShowsWhereAValueComesFrom) {
    ScratchHome::writeSettings(QStringLiteral("QUOR3D.conf"),
                               QStringLiteral("[GENERAL]\nverticalscale=3\ntimewindow=abc\n"));
    ScratchHome::writePackaged(QStringLiteral("QUOR3D.conf"),
                               QStringLiteral("[GENERAL]\nverticalscale=4\ndatasmooth=200\n"));
    const struct {
        const char* key;
        const char* value;
        const char* source;
        int line;
        bool good;
    } rows[] = {{"verticalscale", "3", "user", 2, true},
                {"datasmooth", "100", "packaged", 3, false},
                {"timewindow", "180", "user", 3, false},
                {"datashrink_h", "4", "built_in", 0, true}};
    for (const auto& row : rows) {
        const Result result = call({"show", row.key, "--json"});
        ASSERT_EQ(result.status, 0) << result.error;
        const QJsonObject value = result.json().array().at(0).toObject();
        EXPECT_EQ(value["value"].toString().toStdString(), row.value);
        EXPECT_EQ(value["source"].toString().toStdString(), row.source);
        EXPECT_EQ(value["line"].toInt(), row.line);
        EXPECT_EQ(value["problem"].toString().isEmpty(), row.good);
    }
    EXPECT_NE(call({"show", "background"}).out.find("BACKGROUND/width"), std::string::npos);
    EXPECT_EQ(call({"show", "nothing"}).status, 2);
}

TEST_F(SetupCommandsTest, KeepsListsOfViewsAndStates) {
    const struct {
        std::vector<std::string> words;
        int status;
        const char* said;
    } rows[] = {
        {{"views", "add", "South", "--heading", "0", "--pitch", "40", "--distance", "400"}, 0, "400.0 km"},
        {{"views", "add", "Fits", "--extent", "300", "300", "12"}, 0, "Fits"},
        {{"views", "add", "South", "--distance", "1"}, 1, "already"},
        {{"views", "add", "Any size", "--heading", "90", "--fit"}, 0, "fits every product"},
        {{"views", "add", "Steep", "--pitch", "91"}, 2, "91"},
        {{"views", "rename", "Suoth", "East"}, 1, "South"},
        {{"views", "rename", "South", "From the south"}, 0, ""},
        {{"views", "remove", "Fits"}, 0, ""},
        {{"views"}, 0, "From the south"},
        {{"states", "add", "3D only", "--hide", "2d,landmarks"}, 0, "outline, product, terrain, grid, rings"},
        {{"states", "set", "3D only", "--show", "landmarks", "--hide", "terrain"},
         0,
         "grid, rings, landmarks"},
        {{"states", "add", "Default"}, 1, "no name"},
        {{"states", "add", "X", "--hide", "everything"}, 2, "everything"},
        {{"states", "rename", "3D only", "Plain"}, 0, ""},
    };
    for (const auto& row : rows) {
        const Result result = call(row.words);
        EXPECT_EQ(result.status, row.status) << row.words.back() << result.error;
        EXPECT_NE((result.out + result.error).find(row.said), std::string::npos)
            << result.out << result.error;
    }
    const QJsonArray views = call({"views", "--json"}).json().array();
    ASSERT_EQ(views.size(), 2);
    EXPECT_TRUE(views.at(1)["fit"].toBool());
    EXPECT_EQ(views.at(1)["heading_deg"].toDouble(), 90.0);
    EXPECT_NEAR(views.at(0)["pitch_deg"].toDouble(), 40.0, 1e-9);
    EXPECT_NEAR(views.at(0)["position_m"].toArray().at(1).toDouble(), -306417.8, 1.0);
    const QJsonArray states = call({"states", "--json"}).json().array();
    ASSERT_EQ(states.size(), 1);
    EXPECT_EQ(states.at(0)["hidden"].toArray(), (QJsonArray{"2d", "terrain"}));
}

TEST_F(SetupCommandsTest, SaysWhatAProductIsAndHowItPairs) {
    TestProduct volume;
    volume.fill = [](int x, int, int) { return x == 0 ? 0U : 100U; };
    const std::string path = volume.write(_home.path()).toStdString();
    const std::string rain = TestProduct::sri().write(_home.path() + QStringLiteral("/2d")).toStdString();
    const Result result = call({"info", path, "--pair", _home.path().toStdString() + "/2d", "--json"}, false);
    ASSERT_EQ(result.status, 0) << result.error;
    const QJsonObject report = result.json().array().at(0).toObject();
    EXPECT_EQ(report["configuration"].toString(), QStringLiteral("Z"));
    EXPECT_EQ(report["pair"]["path"].toString().toStdString(), rain);
    const QJsonObject values = report["values"].toObject();
    EXPECT_LT(values["with_data"].toInt(), values["points"].toInt());
    EXPECT_DOUBLE_EQ(values["minimum"].toDouble(), 18.0);
    EXPECT_EQ(values["histogram"].toArray().size(), 20);
    const Result text = call({"info", path}, false);
    EXPECT_NE(text.out.find("18.0"), std::string::npos) << text.out;
    const QString prose = _home.path() + QStringLiteral("/prose");
    writeFile(prose, QByteArray(1000, 'x'));
    EXPECT_EQ(call({"info", prose.toStdString()}, false).status, 1);
}

/// The program finds the files that the service reads, without a test around it that names them.
TEST_F(SetupCommandsTest, TheProgramReadsTheUsersFiles) {
    ScratchHome::writeSettings(QStringLiteral("QUOR3D.conf"),
                               QStringLiteral("[GENERAL]\ndata3d=/somewhere\n"));
    QProcess program;
    const QString user = ServiceUser::current();
    for (const QStringList& words :
         {QStringList{"check", "--json", "--user", user}, QStringList{"show", "data3d", "--user", user}}) {
        program.start(QStringLiteral(QUOR3D_BINARY), words);
        ASSERT_TRUE(program.waitForFinished(60000));
        EXPECT_TRUE(program.readAllStandardOutput().contains("/somewhere")) << qPrintable(words.first());
    }
}

TEST_F(SetupCommandsTest, ChecksForPeopleAndForScripts) {
    const Result text = call({"check"});
    EXPECT_EQ(text.status, 1);
    EXPECT_NE(text.out.find("GENERAL/data3d"), std::string::npos) << text.out;
    const QJsonObject report = call({"check", "--json"}).json().object();
    EXPECT_FALSE(report["good"].toBool(true));
    EXPECT_EQ(report["findings"].toArray().at(0)["cost"].toString(), QStringLiteral("none"));
}

TEST_F(SetupCommandsTest, KeepsColourScalesFromPaletteFiles) {
    const std::string folder = _home.path().toStdString();
    ScratchHome::writePackaged(
        QStringLiteral("QUOR3DColors.conf"),
        QString::fromUtf8(readFile(sourcePath(QStringLiteral("share/QUOR3DColors.conf")))));
    writeFile(_home.path() + QStringLiteral("/storm.pal"),
              "; reflectivity\nunits: dBZ\ncolor: 0 0 0 128\ncolor: 30 0 200 0\ncolor: 60 255 0 0\n");
    writeFile(_home.path() + QStringLiteral("/wind.cpt"),
              "-20 0 0 255 0 255 255 255\n0 255 255 255 20 255 0 0\n");
    writeFile(_home.path() + QStringLiteral("/bad.pal"), "color: ten 1 2 3\n");
    const struct {
        std::vector<std::string> words;
        int status;
        const char* said;
    } rows[] = {
        {{"scales", "import", folder + "/storm.pal", "--name", "Storm", "--data", "Z"}, 0, "Storm"},
        {{"scales", "import", folder + "/wind.cpt", "--name", "Wind", "--data", "V"}, 0, "Wind"},
        {{"scales", "import", folder + "/storm.pal", "--name", "Storm", "--data", "Z"}, 1, "Storm"},
        {{"scales", "import", folder + "/bad.pal", "--name", "Bad", "--data", "Z"}, 1, "bad.pal"},
        {{"scales", "import", folder + "/none.pal", "--name", "Bad", "--data", "Z"}, 1, "none.pal"},
        {{"scales", "import", folder + "/storm.pal", "--name", "Bad", "--data", "Q"}, 2, "Q"},
        {{"scales", "rename", "Storm", "Storm 2", "--data", "Z"}, 0, ""},
        {{"scales", "preview", "Storm 2", folder + "/scale.png", "--data", "Z"}, 0, ""},
        {{"scales", "preview", "Nothing", folder + "/none.png", "--data", "Z"}, 1, "Nothing"},
        {{"scales", "remove", "Wind"}, 0, ""},
        {{"scales", "list"}, 0, "Storm 2"},
    };
    for (const auto& row : rows) {
        const Result result = call(row.words);
        EXPECT_EQ(result.status, row.status) << row.words.at(2) << ' ' << row.words.back() << result.error;
        EXPECT_NE((result.out + result.error).find(row.said), std::string::npos)
            << result.out << result.error;
    }
    EXPECT_EQ(call({"scales", "list"}).out.find("Wind"), std::string::npos);
    const QImage picture(_home.path() + QStringLiteral("/scale.png"));
    ASSERT_FALSE(picture.isNull());
    bool low = false;
    bool middle = false;
    for (int i = 0; i < picture.width() * picture.height(); ++i) {
        const QRgb pixel = picture.pixel(i % picture.width(), i / picture.width());
        low = low || (qRed(pixel) < 10 && qGreen(pixel) < 10 && std::abs(qBlue(pixel) - 128) < 10);
        middle = middle || (qRed(pixel) < 10 && std::abs(qGreen(pixel) - 200) < 10 && qBlue(pixel) < 10);
    }
    EXPECT_TRUE(low && middle);
    EXPECT_FALSE(QFile::exists(_home.path() + QStringLiteral("/none.png")));
}

TEST_F(SetupCommandsTest, KnowsUsersBeforeItDoesAnything) {
    for (const char* command : {"check", "show", "status"}) {
        const Result result = call({command, "--user", "nobody by that name"}, false);
        EXPECT_EQ(result.status, 2) << command;
        EXPECT_TRUE(result.out.empty()) << result.out;
    }
}

TEST_F(SetupCommandsTest, TellsALivingServiceFromASilentAndAnEndedOne) {
    const QString file = _home.path() + QStringLiteral("/status.json");
    const QString program = _home.path() + QStringLiteral("/quor3dd");
    ASSERT_TRUE(QFile::copy(QStringLiteral("/bin/sleep"), program));
    QProcess living;
    living.start(program, {QStringLiteral("60")});
    ASSERT_TRUE(living.waitForStarted());
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const struct {
        qint64 pid;
        int age;
        int status;
        const char* said;
    } rows[] = {{0, 10, 1, "ended"},
                {2147483000, 10, 1, "ended"},
                {-1, 10, 1, "ended"},
                {::getpid(), 10, 1, "ended"}, // another program has the number by now
                {living.processId(), 10, 0, "running"},
                {living.processId(), 400, 1, "silent"}};
    for (const auto& row : rows) {
        const QJsonObject status{
            {"pid", row.pid},
            {"version", "1.1.0"},
            {"started", now.addSecs(-7200).toString(Qt::ISODateWithMs)},
            {"updated", now.addSecs(-row.age).toString(Qt::ISODateWithMs)},
            {"written", 12},
            {"lastImage", QJsonObject{{"file", "/out/x.png"},
                                      {"written", now.addSecs(-240).toString(Qt::ISODateWithMs)},
                                      {"secondsAfterArrival", 0.84},
                                      {"secondsAfterProduct", 16909500.0}}},
            {"failed", QJsonObject{{"writing", 3}}}};
        writeFile(file, QJsonDocument(status).toJson());
        const Result result = call({"status", "--file", file.toStdString()}, false);
        EXPECT_EQ(result.status, row.status);
        for (const char* said : {row.said, "1.1.0", "2 h ago", "3 writing", "/out/x.png", "4 min ago",
                                 "0.8 s after its file", "196 days after its product time"}) {
            EXPECT_NE(result.out.find(said), std::string::npos) << result.out;
        }
    }
    writeFile(file, "[]");
    EXPECT_NE(call({"status", "--file", file.toStdString()}, false).error.find("no status"),
              std::string::npos);
    EXPECT_EQ(call({"status", "--file", "/none"}, false).status, 1);
    living.kill();
    living.waitForFinished();
}

} // namespace
