// SPDX-License-Identifier: MIT
#include "QUOR3DTerrainElement.h"

#include "ElementFixture.h"
#include "OffscreenScene.h"
#include "QUORTerrainDir.h"
#include "TerrainWriter.h"
#include "TestFiles.h"

#include <QTemporaryDir>

#include <vtkAssembly.h>

#include <cmath>

class QUOR3DTerrainElementTest : public ElementFixture<QUOR3DTerrainElement, 41> {
protected:
    QUOR3DTerrainElementTest() {
        writeFile(tiles.filePath("N41E001.hgt"), QByteArray(2 * 1201 * 1201, '\0'));
        directory = std::make_unique<QUORTerrainDir>(tiles.path(), tiles.filePath("cache"));
        directory->scanFiles();
    }

    QUORTerrainSet::Ptr makeSet(const QUORCoordinate& southWest, const QUORCoordinate& northEast) const {
        return directory->getTerrainSet(
            std::make_shared<QUORGeoProjection>("aeqd", QUORCoordinate(42.0, 1.5), 6378137.0, 298.257),
            southWest, northEast);
    }
    void updateWith(const QUORTerrainSet::CPtr& set) {
        QUORLayerParametersTerrain record;
        record.setTerrainSet(set);
        update(record);
    }

    QTemporaryDir tiles;
    std::unique_ptr<QUORTerrainDir> directory;
};

TEST_F(QUOR3DTerrainElementTest, ShowsThePropOfItsSetAndLoadsItOnce) {
    const QUORTerrainSet::Ptr set = makeSet({41.0, 1.0}, {42.0, 2.0});
    updateWith(set);
    ASSERT_NE(element.getProp(), nullptr);
    EXPECT_EQ(element.getProp(), set->getProp());
    updateWith(set);
    EXPECT_EQ(log.count(QStringLiteral("QUOR3DTerrainElement::update(): No need to update.")), 1);
    EXPECT_EQ(log.count(QStringLiteral("QUORTerrainSet::loadFiles() called.")), 1);

    const QUORTerrainSet::Ptr nothing = makeSet({10.0, 1.0}, {11.0, 2.0});
    updateWith(nothing);
    EXPECT_EQ(vtkAssembly::SafeDownCast(element.getProp())->GetParts()->GetNumberOfItems(), 0);
    element.invalidate();
    EXPECT_EQ(element.getProp(), nullptr);
}

TEST_F(QUOR3DTerrainElementTest, LeavesOutMissingTilesWhereTheStyleSaysSo) {
    const QUORTerrainSet::Ptr set =
        makeSet({41.0, 1.0}, {43.0, 2.0}); // of which the northern tiles are missing
    const auto countShown = [&] {
        int shown = 0;
        for (vtkActor* actor : actors()) {
            shown += actor->GetVisibility();
        }
        return shown;
    };
    updateWith(set);
    const int all = countShown();
    ScratchHome::writeSettings(QStringLiteral("QUOR3DVisStyles.conf"),
                               QStringLiteral("[RENDERER_DAY]\nterrain\\missing=0\n"));
    element.invalidate();
    updateWith(set);
    const int measured = countShown();
    EXPECT_GT(measured, 0);
    EXPECT_LT(measured, all);
    for (vtkActor* actor : actors()) {
        EXPECT_EQ(bool(actor->GetVisibility()), actor->GetBounds()[3] < 60000.0) << "south of 42.5 N";
    }
    ScratchHome::removeSettings(QStringLiteral("QUOR3DVisStyles.conf"));
    element.invalidate();
    updateWith(set);
    EXPECT_EQ(countShown(), all);
}

TEST_F(QUOR3DTerrainElementTest, TriesAgainAfterAnAbort) {
    const auto record = std::make_shared<QUORLayerParametersTerrain>();
    record->setTerrainSet(makeSet({41.0, 1.0}, {42.0, 2.0}));
    QUORAbortFlag stop;
    stop.set();
    element.update(record, true, stop);
    element.update(record, true, abort);
    EXPECT_NE(element.getProp(), nullptr);
}

class TerrainPictureTest : public OffscreenScene {
protected:
    QTemporaryDir tiles;
};

/// Two tiles from above: land and sea are where they should be, and the background shows nowhere between.
TEST_F(TerrainPictureTest, ShowsLandAndSeaInPlace) {
    const TerrainWriter land(1, 42.0, 1.5);
    for (const int lat : {41, 42}) {
        writeFile(tiles.filePath(TerrainWriter::fileName(lat, 1)), land.makeTile(lat, 1));
    }
    QUORTerrainDir directory(tiles.path(), {});
    directory.scanFiles();
    const QUORTerrainSet::Ptr set = directory.getTerrainSet(
        std::make_shared<QUORGeoProjection>("aeqd", QUORCoordinate(42.0, 1.5), 6378137.0, 298.257),
        {41.0, 1.0}, {43.0, 2.0});
    ASSERT_TRUE(set->loadFiles(QUORAbortFlag()));
    renderer->AddViewProp(set->getProp());
    renderer->SetBackground(1.0, 0.0, 1.0);
    lookDown(100000.0); // 500 m a pixel
    window->Render();

    const auto isSea = [](const std::array<int, 3>& rgb) { return rgb[2] > rgb[0] + 20; };
    constexpr int MIDDLE = SIDE / 2;
    int wrong = 0;
    int sea = 0;
    int background = 0;
    for (int y = 5; y < SIDE; y += 10) {
        for (int x = MIDDLE - 75; x < MIDDLE + 75; x += 5) {
            const std::array<int, 3> rgb = pixel(x, y);
            const double north = (y - MIDDLE) * 500.0 / 111080.0;
            const double east = (x - MIDDLE) * 500.0 / (111320.0 * std::cos((42.0 + north) * 0.0174533));
            const int height = land.heightAt(42.0 + north, 1.5 + east);
            wrong += isSea(rgb) != (height == 0) ? 1 : 0;
            sea += height == 0 ? 1 : 0;
            background += rgb == std::array<int, 3>{255, 0, 255} ? 1 : 0;
        }
    }
    EXPECT_GT(sea, 100);
    EXPECT_EQ(background, 0);
    EXPECT_LE(wrong, 6); // of 1200: the coast itself is averaged
    set->getProp()->ReleaseGraphicsResources(window);
}
