// SPDX-License-Identifier: MIT
#include "QUORFile.h"
#include "TestFiles.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct Result {
    int status;
    QString out;
    QString error;
};

Result run(const QStringList& arguments, const QString& directory) {
    QProcess process;
    process.setWorkingDirectory(directory);
    process.start(QStringLiteral(QUOR3D_SAMPLE_BINARY), arguments);
    EXPECT_TRUE(process.waitForFinished(60000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

QStringList filesBelow(const QString& directory) {
    return QDir(directory).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

} // namespace

TEST(SampleCommand, WritesTheStepsAskedFor) {
    const QTemporaryDir dir;
    const Result result = run({QStringLiteral("--output=a/b"), QStringLiteral("--site=North Hill"),
                               QStringLiteral("--location=-10.5,170.25"),
                               QStringLiteral("--time=2026-05-11T23:58:00"), QStringLiteral("--steps=2"),
                               QStringLiteral("--grid=30x20x4"), QStringLiteral("--spacing=4,1.5")},
                              dir.path());
    ASSERT_EQ(result.status, 0) << qPrintable(result.error);
    EXPECT_EQ(result.out.count(QLatin1Char('\n')), 22);
    EXPECT_EQ(
        filesBelow(dir.filePath(QStringLiteral("a/b/3d"))).join(QLatin1Char(' ')),
        QStringLiteral("CAR260511235800.cap CAR260512000300.cap CAV260511235800.cap CAV260512000300.cap "
                       "CAW260511235800.cap CAW260512000300.cap CAZ260511235800.cap CAZ260512000300.cap"));
    const QUORFile file(dir.filePath(QStringLiteral("a/b/3d/CAZ260512000300.cap")));
    EXPECT_EQ(file.getGridError(), QString());
    EXPECT_EQ(file.getSite(), QStringLiteral("NORTH HILL"));
    EXPECT_NEAR(file.getSiteCoordinates().getLat(), -10.5, 1e-6);
    EXPECT_NEAR(file.getSiteCoordinates().getLon(), 170.25, 1e-6);
    EXPECT_EQ(file.getXPoints() * 10000 + file.getYPoints() * 100 + file.getZPoints(), 302004);
    EXPECT_EQ(file.getXRadar(), 15000);
    EXPECT_DOUBLE_EQ(file.getWidthM(), 29 * 4000.0);
    EXPECT_DOUBLE_EQ(file.getHeightM(), 3 * 1500.0);
}

TEST(SampleCommand, RefusesWrongOptions) {
    const QTemporaryDir dir;
    for (const char* argument :
         {"--nonsense", "--output=", "--site=", "--site=Seventeen letters", "--site=\xe6\x9d\xb1",
          "--location=42", "--location=91,0", "--location=nan,0", "--time=yesterday", "--steps=0",
          "--steps=x", "--grid=240x240", "--grid=1x10x10", "--grid=2.5x10x10", "--grid=2000x2000x2000",
          "--spacing=0,1", "--seed=-1", "thunder"}) {
        SCOPED_TRACE(argument);
        const Result result = run({QString::fromUtf8(argument)}, dir.path());
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.error.count(QLatin1Char('\n')), 1) << qPrintable(result.error);
        EXPECT_EQ(result.out, QString());
    }
    EXPECT_EQ(filesBelow(dir.path()), QStringList());
    const Result help = run({QStringLiteral("--help")}, dir.path());
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.out.contains(QStringLiteral("--spacing")));
}

TEST(SampleCommand, WritesLandmarks) {
    const QTemporaryDir dir;
    const Result result = run({QStringLiteral("landmarks"), QStringLiteral("--output=towns")}, dir.path());
    ASSERT_EQ(result.status, 0) << qPrintable(result.error);
    EXPECT_EQ(result.out, QStringLiteral("towns/QUOR3DLandmarks.conf\n"));
    EXPECT_EQ(filesBelow(dir.filePath(QStringLiteral("towns"))),
              QStringList(QStringLiteral("QUOR3DLandmarks.conf")));
}

TEST(SampleCommand, SaysWhatCouldNotBeWritten) {
    const QTemporaryDir dir;
    writeFile(dir.filePath(QStringLiteral("3d")), {});
    const struct {
        QStringList arguments;
        QString named;
    } rows[] = {{{QStringLiteral("--grid=4x4x4")}, QStringLiteral("./3d/CAZ")},
                {{QStringLiteral("terrain"), QStringLiteral("--output=3d/geo")}, QStringLiteral("3d/geo")},
                {{QStringLiteral("landmarks"), QStringLiteral("--output=3d")}, QStringLiteral("3d")}};
    for (const auto& row : rows) {
        SCOPED_TRACE(qPrintable(row.arguments.join(QLatin1Char(' '))));
        const Result result = run(row.arguments, dir.path());
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.error.count(QLatin1Char('\n')), 1);
        EXPECT_TRUE(result.error.contains(row.named)) << qPrintable(result.error);
    }
}
