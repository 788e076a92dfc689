// SPDX-License-Identifier: MIT
#include "QUORApplication.h"

#include "LogCapture.h"
#include "QUORProcessSetup.h"
#include "QUORToolMessages.h"
#include "TestFiles.h"

#include <QFile>
#include <QTemporaryDir>

#include <vtkOutputWindow.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

void writeScript(const QString& path, const QByteArray& commands) {
    writeFile(path, "#!/bin/sh\n" + commands);
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

} // namespace

TEST(QUORApplicationTest, DiskSpaceOfAPath) {
    int total = -1;
    int available = -1;
    EXPECT_TRUE(QUORApplication::getDiskSpace(QStringLiteral("/"), total, available));
    EXPECT_GT(total, 0);
    EXPECT_LE(available, total);
    const LogCapture log;
    EXPECT_FALSE(QUORApplication::getDiskSpace(QStringLiteral("/no/such/place"), total, available));
    EXPECT_EQ(total, 0);
    EXPECT_EQ(available, 0);
    EXPECT_TRUE(log.contains(QStringLiteral("D: stat returns 2")));
}

TEST(QUORApplicationTest, AServiceRunsWhenItsStatusSaysSo) {
    const QTemporaryDir dir;
    const QString command = dir.filePath(QStringLiteral("service"));
    writeScript(dir.filePath(QStringLiteral("whereis")),
                "[ \"$*\" = '-b service' ] && echo 'service: " + command.toUtf8() + " /usr/share/man'\n");
    writeScript(command, "[ \"$*\" = 'quor3dd status' ] || exit 3\n");
    const QByteArray previous = qgetenv("PATH");
    qputenv("PATH", dir.path().toUtf8() + ":" + previous);
    const LogCapture log;
    EXPECT_TRUE(QUORApplication::isServiceRunning(QStringLiteral("quor3dd")));
    EXPECT_FALSE(QUORApplication::isServiceRunning(QStringLiteral("other")));
    qputenv("PATH", previous);
    EXPECT_EQ(log.count(QStringLiteral("D: Service command is: ") + command), 1);
    EXPECT_TRUE(log.contains(QStringLiteral("D: Service status check: quor3dd -> 0")));
    EXPECT_TRUE(log.contains(QStringLiteral("D: Service status check: other -> 3")));
}

// A sanitizer reserves terabytes for itself.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(QUORApplicationTest, TooLittleAddressSpaceIsRefused) {
    EXPECT_NO_THROW(QUORProcessSetup::requireAddressSpace());
    const ResourceLimit limit(RLIMIT_AS, rlim_t(1000) << 20);
    EXPECT_THROW(QUORProcessSetup::requireAddressSpace(), std::runtime_error);
}
#endif

TEST(QUORApplicationTest, WhatTheLibrariesPrintIsLogged) {
    const LogCapture log;
    QUORToolMessages::install();
    qWarning("first\nsecond");
    vtkOutputWindowDisplayErrorText("ERROR: In x.cxx, line 1\nbroken\n\n");
    qInstallMessageHandler(nullptr);
    vtkOutputWindow::SetInstance(nullptr);
    EXPECT_EQ(log.lines(), (QStringList{QStringLiteral("W: Qt: first second"),
                                        QStringLiteral("E: VTK: ERROR: In x.cxx, line 1 broken")}));
}
