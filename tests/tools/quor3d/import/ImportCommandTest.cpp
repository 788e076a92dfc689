// SPDX-License-Identifier: MIT
#include "ImportCommand.h"
#include "CommandLineTool.h"
#include "RadarFiles.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

Outcome run(std::vector<std::string> words) {
    words.insert(words.begin(), {"quor3d", "import"});
    std::vector<const char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(word.c_str());
    }
    CommandLineTool tool;
    tool.add(std::make_unique<ImportCommand>());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = tool.run(int(arguments.size()), arguments.data());
    const std::string out = testing::internal::GetCapturedStdout();
    return {status, out, testing::internal::GetCapturedStderr()};
}

QList<QJsonObject> objects(const std::string& lines) {
    QList<QJsonObject> found;
    for (const QByteArray& line : QByteArray::fromStdString(lines).split('\n')) {
        if (!line.isEmpty()) {
            found.append(QJsonDocument::fromJson(line).object());
        }
    }
    return found;
}

} // namespace

TEST(ImportCommand, ImportsGoodFilesAndNamesBadOnes) {
    QTemporaryDir folder;
    const auto path = [&folder](const char* name) {
        return folder.filePath(QLatin1String(name)).toStdString();
    };
    RadarFiles::writeOdim(folder.filePath("volume.h5"));
    RadarFiles::writeOdimScan(folder.filePath("s1"), 0.5, "DBZH", 0);
    RadarFiles::writeOdimScan(folder.filePath("s2"), 1.5, "DBZH", 20);
    writeFile(folder.filePath("bad"), "no radar data");

    Outcome outcome =
        run({path("volume.h5"), "--dry-run", "-o", path("out"), "--flat", "MAX", "--quantity", "Z"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("left out  ZDR, TH"), std::string::npos) << outcome.out;
    EXPECT_FALSE(QDir(folder.filePath("out")).exists());

    outcome = run({path("bad"), path("s1"), path("volume.h5"), path("s2"), "--json", "-o", path("out"),
                   "--grid", "20x20x4", "--spacing", "1000,1000,200", "--site", "my site"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "quor3d import: " + path("bad") +
                               ": none of ODIM_H5, CfRadial, gridded netCDF and NEXRAD Level II\n");
    const QList<QJsonObject> found = objects(outcome.out);
    ASSERT_EQ(found.size(), 3);
    EXPECT_EQ(found[0]["error"].toString().left(4), "none");
    EXPECT_EQ(found[1]["site"], "MY_SITE");
    EXPECT_EQ(found[2]["files"].toArray().size(), 2);
    for (const QJsonObject& object : found.mid(1)) {
        for (const QJsonValue product : object["products"].toArray()) {
            EXPECT_TRUE(QFile::exists(product.toObject()["path"].toString()));
        }
    }
    EXPECT_EQ(QDir(folder.filePath("out/3d")).entryList({"CAZ*-MY_SITE.cap"}).size(), 2);
}

TEST(ImportCommand, FollowsAFolderUntilItIsEnded) {
    QTemporaryDir folder;
    QDir(folder.path()).mkpath("in");
    RadarFiles::writeOdim(folder.filePath("in/volume.h5"));
    sigset_t mask;
    ::sigprocmask(SIG_BLOCK, nullptr, &mask);
    const QDir products(folder.filePath("out/3d"));
    const pid_t end = ::fork();
    if (end == 0) {
        for (int tenths = 0; tenths < 300 && products.entryList({"CAZ*.cap"}).isEmpty(); ++tenths) {
            ::usleep(100000);
        }
        ::kill(::getppid(), SIGTERM);
        ::_exit(0);
    }
    ASSERT_GT(end, 0);
    const Outcome outcome = run({"--watch", folder.filePath("in").toStdString(), "--existing", "-o",
                                 folder.filePath("out").toStdString(), "--grid", "20x20x4"});
    ::waitpid(end, nullptr, 0);
    ::sigprocmask(SIG_SETMASK, &mask, nullptr);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(products.entryList({"CAZ*.cap"}).size(), 1);
    EXPECT_EQ(outcome.err, "");
}

TEST(ImportCommand, RefusesWrongUse) {
    const std::vector<std::string> rows[] = {
        {},
        {"file"},
        {"file", "-o", "out", "--grid", "240x240"},
        {"file", "-o", "out", "--grid", "9000x9000x9"},
        {"file", "-o", "out", "--grid", "0.5x3x4"},
        {"file", "-o", "out", "--grid", "240.9x240x24"},
        {"file", "-o", "out", "--spacing", "2000,0,500"},
        {"file", "-o", "out", "--range", "-1"},
        {"file", "-o", "out", "--rain", "drizzle"},
        {"file", "-o", "out", "--quantity", "Z,X"},
        {"file", "-o", "out", "--bytes", "4"},
        {"file", "-o", "out", "--watch", "in"},
        {"file", "-o", "out", "--existing"},
    };
    for (const auto& row : rows) {
        const Outcome outcome = run(row);
        EXPECT_EQ(outcome.status, 2) << testing::PrintToString(row);
        EXPECT_FALSE(outcome.err.empty());
    }
}
