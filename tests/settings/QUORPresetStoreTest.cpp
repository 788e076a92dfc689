// SPDX-License-Identifier: MIT
#include "QUORGeneralSettings.h"

#include "ScratchHome.h"

#include <gtest/gtest.h>

#include <QSettings>

namespace {

class QUORPresetStoreTest : public testing::Test {
protected:
    static QUORDisplayState::Ptr makeState(const QString& name, int hiddenKey) {
        const auto state = std::make_shared<QUORDisplayState>();
        state->setName(name);
        state->getLayer(hiddenKey)->setVisible(false);
        state->getLayer(hiddenKey)->setOpacity(hiddenKey);
        return state;
    }
    static QUORViewAngle::Ptr makeAngle(const QString& name, double offset) {
        const auto angle = std::make_shared<QUORViewAngle>();
        angle->setName(name);
        angle->setCameraPosition({offset + 1, offset + 2, offset + 3.5});
        angle->setCameraDirection({offset + 4, offset + 5, -offset - 6});
        return angle;
    }

    ScratchHome _home;
};

TEST_F(QUORPresetStoreTest, ChangesNothingWithoutStoredPresets) {
    QUORGeneralSettings settings;
    const auto state = makeState(QStringLiteral("mine"), 12);
    const auto angle = makeAngle(QStringLiteral("mine"), 10);
    settings.loadDisplayStates(state);
    settings.loadViewAngles(angle);
    EXPECT_EQ(settings.getDisplayStateNames(), QStringList{QStringLiteral("Default")});
    EXPECT_EQ(settings.getViewAngleNames(), QStringList{QStringLiteral("Default")});
    EXPECT_FALSE(state->getLayer(12)->isVisible());
    EXPECT_EQ(angle->getCameraPosition(), (QUORPoint3D{11, 12, 13.5}));
}

TEST_F(QUORPresetStoreTest, BringsBackWhatItSaved) {
    {
        QUORGeneralSettings settings;
        settings.addDisplayStatePreset(makeState(QStringLiteral("No 2D, please"), 13));
        settings.addDisplayStatePreset(makeState(QStringLiteral("Bare"), 40));
        settings.addViewAnglePreset(makeAngle(QStringLiteral("South"), 20));
        const auto fitting = makeAngle(QStringLiteral("Fits"), 0);
        fitting->setFit(QUORViewAngle::Fit{270.0, 12.5});
        settings.addViewAnglePreset(fitting);
        settings.saveDisplayStates(makeState(QStringLiteral("current"), 44));
        settings.saveViewAngles(makeAngle(QStringLiteral("current"), 30));
    }
    QSettings stored;
    EXPECT_EQ(stored.value(QStringLiteral("DISPLAYSTATE/DISPLAYSTATES/size")).toInt(), 3);
    EXPECT_EQ(stored.value(QStringLiteral("DISPLAYSTATE/DISPLAYSTATES/1/displayStateName")),
              QStringLiteral("Custom"));
    EXPECT_EQ(stored.value(QStringLiteral("DISPLAYSTATE/DISPLAYSTATES/2/displayStateLayerVisible13")),
              QStringLiteral("false"));
    EXPECT_EQ(stored.value(QStringLiteral("VIEWANGLE/VIEWANGLES/2/viewAngleCamDirZ")).toDouble(), -26);

    QUORGeneralSettings settings;
    const auto state = std::make_shared<QUORDisplayState>();
    const auto angle = std::make_shared<QUORViewAngle>();
    settings.loadDisplayStates(state);
    settings.loadViewAngles(angle);
    EXPECT_EQ(state->getName(), QStringLiteral("Default"));
    EXPECT_FALSE(state->getLayer(44)->isVisible());
    EXPECT_EQ(state->getLayer(44)->getOpacity(), 44);
    EXPECT_TRUE(state->getLayer(13)->isVisible());
    EXPECT_EQ(angle->getName(), QString());
    EXPECT_EQ(angle->getCameraDirection(), (QUORPoint3D{34, 35, -36}));
    ASSERT_EQ(settings.getDisplayStatePresets().size(), 2);
    EXPECT_FALSE(settings.getDisplayStatePresets().at(0)->has2DEnabled());
    EXPECT_FALSE(settings.getDisplayStatePresets().at(1)->getGroup(40)->isVisible());
    ASSERT_EQ(settings.getViewAnglePresets().size(), 2);
    EXPECT_FALSE(settings.getViewAnglePresets().at(0)->getFit());
    ASSERT_TRUE(settings.getViewAnglePresets().at(1)->getFit());
    EXPECT_EQ(settings.getViewAnglePresets().at(1)->getFit()->heading, 270.0);
    EXPECT_EQ(settings.getViewAnglePresets().at(1)->getFit()->pitch, 12.5);
    EXPECT_EQ(settings.getViewAnglePresets().at(0)->getCameraPosition(), (QUORPoint3D{21, 22, 23.5}));

    settings.loadDisplayStates(state);
    EXPECT_EQ(settings.getDisplayStateNames(),
              (QStringList{QStringLiteral("Default"), QStringLiteral("No 2D, please"), QStringLiteral("Bare"),
                           QStringLiteral("No 2D, please"), QStringLiteral("Bare")}));
}

TEST_F(QUORPresetStoreTest, ReadsHandWrittenElements) {
    ScratchHome::writeSettings(QStringLiteral("QUOR3D.conf"),
                               QStringLiteral("[DISPLAYSTATE]\nDISPLAYSTATES\\size=1000000\n"
                                              "DISPLAYSTATES\\1\\displayStateName=Other\n"
                                              "DISPLAYSTATES\\1\\displayStateLayerVisible12=true\n"
                                              "DISPLAYSTATES\\2\\displayStateName=Storm, tilted\n"
                                              "DISPLAYSTATES\\2\\displayStateLayerVisible12=yes\n"
                                              "DISPLAYSTATES\\2\\displayStateLayerOpacity12=250\n"));
    QUORGeneralSettings settings;
    const auto state = std::make_shared<QUORDisplayState>();
    settings.loadDisplayStates(state);
    EXPECT_EQ(state->getName(), QStringLiteral("Default"));
    EXPECT_TRUE(state->getLayer(12)->isVisible());
    EXPECT_FALSE(state->getLayer(11)->isVisible()) << "a layer that is left out is hidden";
    EXPECT_EQ(state->getLayer(12)->getOpacity(), 0);
    ASSERT_EQ(settings.getDisplayStatePresets().size(), 1) << "only what the file holds";
    const auto preset = settings.getDisplayStatePresets().constFirst();
    EXPECT_EQ(preset->getName(), QStringLiteral("Storm,tilted"));
    EXPECT_TRUE(preset->getLayer(12)->isVisible());
    EXPECT_EQ(preset->getLayer(12)->getOpacity(), 100);
}

} // namespace
