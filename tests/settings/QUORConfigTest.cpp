// SPDX-License-Identifier: MIT
#include "QUORConfig.h"

#include "LogCapture.h"
#include "ScratchHome.h"
#include "TestFiles.h"

#include "QUORDataType.h"
#include "QUORGeneralSettings.h"
#include "QUORProductSettings.h"
#include "QUORSettingsReader.h"
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

TEST(QUORConfigTest, WhatWasReadLastStaysWhileTheFileIsDamaged) {
    const ScratchHome home;
    QUORConfig::destroy();
    const QString name = QStringLiteral("QUOR3D.conf");
    const QString whole =
        QStringLiteral("[GENERAL]\ndata3d=~/3d\n[PRODUCT CAPPI Z]\nrendering=volume\n"
                       "[VIEWANGLE]\nVIEWANGLES\\size=2\nVIEWANGLES\\2\\viewAngleName=South\n");
    ScratchHome::writePackaged(name, QStringLiteral("[GENERAL]\ndata3d=/packaged\ntimewindow=60\n"));
    EXPECT_EQ(QUORGeneralSettings().get3DDir(), QStringLiteral("/packaged"));
    const char* const damages[] = {nullptr, "", "[GEN", "[PRODUCT CAPPI Z]\nrendering=volume\n"};
    for (const char* damage : damages) {
        ScratchHome::writeSettings(name, whole);
        EXPECT_EQ(QUORGeneralSettings().get3DDir(), home.path() + QStringLiteral("/3d"));
        if (damage == nullptr) {
            ScratchHome::removeSettings(name);
        } else {
            ScratchHome::writeSettings(name, QString::fromLatin1(damage));
        }
        const LogCapture log;
        QUORGeneralSettings settings;
        EXPECT_EQ(settings.get3DDir(), home.path() + QStringLiteral("/3d"));
        EXPECT_EQ(settings.getTimeWindow(), 60);
        settings.loadViewAngles(std::make_shared<QUORViewAngle>());
        EXPECT_EQ(settings.getViewAngleNames().value(1), QStringLiteral("South"));
        const QUORProductSettings stored(QStringLiteral("CAPPI"), QStringLiteral("Z"), QUORDataType(2),
                                         QUORProductSettings::Saved);
        EXPECT_EQ(stored.renderingTypeToString(), QStringLiteral("volume"));
        const QUORProductSettings unknown(QStringLiteral("CAPPI"), QStringLiteral("V"), QUORDataType(3),
                                          QUORProductSettings::Saved);
        EXPECT_EQ(readFile(QUORSettingsReader::findUserFile(QStringLiteral("QUOR3D"))), QByteArray(damage));
        EXPECT_EQ(log.count(QStringLiteral("E: ")), 1) << log.lines().join('\n').toStdString();
    }
    ScratchHome::writeSettings(name, QStringLiteral("[GENERAL]\ntimewindow=30\n"));
    EXPECT_EQ(QUORGeneralSettings().get3DDir(), QStringLiteral("/packaged"));
    QUORConfig::destroy();
}

TEST(QUORConfigTest, OneHoldReadsTheFileOnce) {
    const ScratchHome home;
    QUORConfig::destroy();
    const QString key = QStringLiteral("TEST/count");
    const auto write = [](int count) {
        ScratchHome::writeSettings(QStringLiteral("QUOR3D.conf"),
                                   QStringLiteral("[TEST]\ncount=%1\n").arg(count));
    };
    write(1);
    std::atomic<int> seen{0};
    std::thread other;
    {
        const QUORConfig::Access held;
        write(22);
        {
            const QUORConfig::Access again;
            EXPECT_EQ(&*again, &*held);
            EXPECT_EQ((*again).value(key).toInt(), 1);
        }
        other = std::thread([&] {
            const QUORConfig::Access later;
            seen = (*later).value(key).toInt();
        });
        EXPECT_EQ((*held).value(key).toInt(), 1);
        EXPECT_EQ(seen, 0);
    }
    other.join();
    EXPECT_EQ(seen, 22);
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
