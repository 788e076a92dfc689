// SPDX-License-Identifier: MIT
#include "QUORConfig.h"

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
    const QString own = mainFile();
    EXPECT_EQ(own, home.path() + QStringLiteral("/.config/QUOR/QUOR3D.conf"));
    EXPECT_EQ(QUORConfig::getSettingsPath(), home.path() + QStringLiteral("/.config"));
    QUORConfig::changeUser(QStringLiteral("root"));
    EXPECT_EQ(mainFile(), QUORSystem::getUserHomeDirectory(QStringLiteral("root")) +
                              QStringLiteral("/.config/QUOR/QUOR3D.conf"));
    QUORConfig::restoreUser();
    EXPECT_EQ(mainFile(), own);
}

} // namespace
