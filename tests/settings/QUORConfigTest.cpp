// SPDX-License-Identifier: MIT
#include "QUORConfig.h"

#include "LogCapture.h"
#include "ScratchHome.h"

#include "QUORSystem.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

QString mainFile() {
    return QSettings().fileName();
}

TEST(QUORConfigTest, GivesTheFileToOneThreadAtATime) {
    const ScratchHome home;
    ScratchHome::writeSettings(QStringLiteral("QUOR3D.conf"), QStringLiteral("[TEST]\ncount=0\n"));
    QUORConfig::instance();
    std::atomic<int> holders{0};
    std::atomic<bool> overlapped{false};
    const auto work = [&] {
        for (int i = 0; i < 50; ++i) {
            QSettings* settings = QUORConfig::instance()->get();
            overlapped = overlapped || holders.fetch_add(1) != 0;
            settings->setValue(QStringLiteral("TEST/count"),
                               settings->value(QStringLiteral("TEST/count")).toInt() + 1);
            holders.fetch_sub(1);
            QUORConfig::instance()->release();
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_FALSE(overlapped);
    EXPECT_EQ(QSettings().value(QStringLiteral("TEST/count")).toInt(), 100);
}

TEST(QUORConfigTest, ChangesUserAndComesBack) {
    const ScratchHome home;
    const LogCapture log;
    const QString own = mainFile();
    EXPECT_EQ(own, home.path() + QStringLiteral("/.config/QUOR/QUOR3D.conf"));
    EXPECT_EQ(QUORConfig::getSettingsPath(), home.path() + QStringLiteral("/.config"));
    QUORConfig::changeUser(QStringLiteral("root"));
    EXPECT_EQ(mainFile(), QUORSystem::getUserHomeDirectory(QStringLiteral("root")) +
                              QStringLiteral("/.config/QUOR/QUOR3D.conf"));
    QUORConfig::restoreUser();
    EXPECT_EQ(mainFile(), own);
    EXPECT_TRUE(log.contains(QStringLiteral("D: Remember settings path: ") + home.path()));
    EXPECT_TRUE(log.contains(QStringLiteral("D: Restored settings path to: ") + home.path()));
}

TEST(QUORConfigTest, ComesBackToABaseDirectoryOfAnotherForm) {
    const ScratchHome home;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home.path() + QStringLiteral("/conf"));
    const QString own = mainFile();
    EXPECT_EQ(QUORConfig::getSettingsPath(), QString());
    QUORConfig::changeUser(QStringLiteral("root"));
    EXPECT_NE(mainFile(), own);
    QUORConfig::restoreUser();
    EXPECT_EQ(mainFile(), own);
}

} // namespace
