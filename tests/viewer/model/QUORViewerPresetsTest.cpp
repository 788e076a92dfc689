// SPDX-License-Identifier: MIT
#include "QUORViewerPresets.h"

#include "QUORGeneralSettings.h"
#include "ScratchHome.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

namespace {

using QUORViewerPresets::Result;

class QUORViewerPresetsTest : public testing::Test {
protected:
    QUORViewerPresetsTest() { hidden.getLayer(QUORDisplayState::TERRAIN_LAYER)->setVisible(false); }

    static QString text() {
        return QString::fromUtf8(readFile(ScratchHome::settingsDirectory() + QStringLiteral("/QUOR3D.conf")));
    }

    ScratchHome home;
    QUORDisplayState hidden;
    const QUORViewGeometry::View view{{1000.5, -2000.25, 90000.0}, {0.0, 0.6, -0.8}};
};

TEST_F(QUORViewerPresetsTest, TheServiceFindsWhatIsSaved) {
    ScratchHome::writeSettings(QStringLiteral("QUOR3D.conf"),
                               QStringLiteral("# ours\n[GENERAL]\nverticalscale=3\n"));
    ASSERT_EQ(QUORViewerPresets::save(QStringLiteral("Käse, \"S\""), view, hidden), Result::Done);
    EXPECT_TRUE(text().startsWith(QStringLiteral("# ours\n[GENERAL]\nverticalscale=3\n")));
    QUORGeneralSettings service;
    service.loadViewAngles(std::make_shared<QUORViewAngle>());
    service.loadDisplayStates(std::make_shared<QUORDisplayState>());
    ASSERT_EQ(service.getViewAnglePresets().size(), 1);
    const auto angle = service.getViewAnglePresets().first();
    EXPECT_EQ(angle->getName(), QStringLiteral("Käse, \"S\""));
    EXPECT_EQ(angle->getCameraPosition().y, -2000.25);
    EXPECT_EQ(angle->getCameraDirection().z, -0.8);
    ASSERT_EQ(service.getDisplayStatePresets().size(), 1);
    const auto state = service.getDisplayStatePresets().first();
    EXPECT_FALSE(state->getLayer(QUORDisplayState::TERRAIN_LAYER)->isVisible());
    EXPECT_TRUE(state->getLayer(QUORDisplayState::PRODUCT_3D_LAYER)->isVisible());
    EXPECT_EQ(state->getLayer(QUORDisplayState::PRODUCT_3D_LAYER)->getOpacity(), 100);
}

TEST_F(QUORViewerPresetsTest, SavesAgainRenamesAndRemoves) {
    const QUORDisplayState all;
    ASSERT_EQ(QUORViewerPresets::save(QStringLiteral("A"), view, hidden), Result::Done);
    ASSERT_EQ(QUORViewerPresets::save(QStringLiteral("B"), view, hidden), Result::Done);
    ASSERT_EQ(QUORViewerPresets::save(QStringLiteral("A"), {{1, 2, 3}, view.direction}, all), Result::Done);
    EXPECT_EQ(QUORViewerPresets::getNames(), (QStringList{"A", "B"}));
    EXPECT_EQ(QUORViewerPresets::find(QStringLiteral("A")).view->position.x, 1);
    EXPECT_TRUE(QUORViewerPresets::find(QStringLiteral("A"))
                    .state->getLayer(QUORDisplayState::TERRAIN_LAYER)
                    ->isVisible());
    const struct {
        const char* name;
        const char* newName;
        Result result;
    } renames[] = {{"A", "B", Result::NameTaken},
                   {"C", "D", Result::NoSuchName},
                   {"A", "Default", Result::BadName},
                   {"A", " ", Result::BadName},
                   {"A", "C", Result::Done}};
    for (const auto& row : renames) {
        EXPECT_EQ(QUORViewerPresets::rename(QLatin1String(row.name), QLatin1String(row.newName)), row.result)
            << row.name << " to " << row.newName;
    }
    EXPECT_EQ(QUORViewerPresets::remove(QStringLiteral("A")), Result::NoSuchName);
    EXPECT_EQ(QUORViewerPresets::remove(QStringLiteral("C")), Result::Done);
    EXPECT_EQ(QUORViewerPresets::getNames(), QStringList{"B"});
    EXPECT_FALSE(QUORViewerPresets::find(QStringLiteral("C")).view);
    EXPECT_EQ(QUORViewerPresets::save(QStringLiteral("Custom"), view, all), Result::BadName);
}

// A view that is saved over one that fits every product is where it was saved.
TEST_F(QUORViewerPresetsTest, KnowsViewsThatFit) {
    ScratchHome::writeSettings(QStringLiteral("QUOR3D.conf"),
                               QStringLiteral("[VIEWANGLE]\nVIEWANGLES\\size=2\n"
                                              "VIEWANGLES\\2\\viewAngleName=Fit\n"
                                              "VIEWANGLES\\2\\viewAngleHeading=30\n"
                                              "VIEWANGLES\\2\\viewAnglePitch=20\n"
                                              "VIEWANGLES\\2\\viewAngleFit=true\n"));
    const auto preset = QUORViewerPresets::find(QStringLiteral("Fit"));
    ASSERT_TRUE(preset.fit);
    EXPECT_FALSE(preset.view);
    EXPECT_EQ(preset.fit->heading, 30.0);
    ASSERT_EQ(QUORViewerPresets::save(QStringLiteral("Fit"), view, hidden), Result::Done);
    EXPECT_FALSE(QUORViewerPresets::find(QStringLiteral("Fit")).fit);
    EXPECT_EQ(QUORViewerPresets::find(QStringLiteral("Fit")).view->position.x, 1000.5);
}

TEST_F(QUORViewerPresetsTest, SaysWhatCannotBeStored) {
    ASSERT_EQ(QUORViewerPresets::save(QStringLiteral("A"), view, hidden), Result::Done);
    const QString before = text();
    {
        const ResourceLimit fullDisk(RLIMIT_FSIZE, 64);
        EXPECT_EQ(QUORViewerPresets::save(QStringLiteral("B"), view, hidden), Result::NotStored);
    }
    EXPECT_EQ(text(), before);
}

} // namespace
