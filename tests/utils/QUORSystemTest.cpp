// SPDX-License-Identifier: MIT
#include "QUORSystem.h"

#include "QUORThreadStart.h"
#include "TestFiles.h"

#include <QDir>
#include <QThread>

#include <gtest/gtest.h>

TEST(QUORSystemTest, HomeDirectoriesComeFromWholeNamesOfThePasswordFile) {
    const struct {
        const char* user;
        const char* home;
    } rows[] = {{"root", "/root"},       {"oot", "/home/oot"},         {"roo", "/home/roo"},
                {"daemon", "/usr/sbin"}, {"no.such", "/home/no.such"}, {"r..t", "/home/r..t"},
                {"r(t", "/home/r(t"}};
    for (const auto& row : rows) {
        EXPECT_EQ(QUORSystem::getUserHomeDirectory(QString::fromLatin1(row.user)).toStdString(), row.home);
    }
    EXPECT_EQ(QUORSystem::getUserSettingsDirectory(QStringLiteral("no.such")),
              QStringLiteral("/home/no.such/.config/QUOR"));
}

TEST(QUORSystemTest, OnlyALeadingTildeAloneOrBeforeASlashIsTheHomeDirectory) {
    EXPECT_EQ(QUORSystem::expandHome(QStringLiteral("~")), QDir::homePath());
    EXPECT_EQ(QUORSystem::expandHome(QStringLiteral("~/.quor3d/cache")), QDir::homePath() + "/.quor3d/cache");
    for (const QString& path :
         {QStringLiteral("/a/~/b"), QStringLiteral("~else/a"), QStringLiteral("a"), QString()}) {
        EXPECT_EQ(QUORSystem::expandHome(path), path);
        EXPECT_EQ(QUORSystem::toPath(path), path);
    }
    EXPECT_EQ(QUORSystem::toPath(QStringLiteral("~/a")), QDir::homePath() + "/a");
    EXPECT_EQ(QUORSystem::toPath(QStringLiteral(":a/b")), QDir::currentPath() + "/:a/b");
}

#ifndef __SANITIZE_ADDRESS__
TEST(QUORSystemTest, AThreadThatTheSystemRefusesIsAnError) {
    QThread thread;
    thread.setStackSize(2U << 30);
    {
        const ResourceLimit little(RLIMIT_AS, rlim_t(1) << 30);
        EXPECT_THROW(QUORThreadStart::start(thread, "test"), std::runtime_error);
    }
    thread.setStackSize(0);
    QUORThreadStart::start(thread, "test");
    thread.quit();
    EXPECT_TRUE(thread.wait());
}
#endif
