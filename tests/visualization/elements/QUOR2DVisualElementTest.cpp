// SPDX-License-Identifier: MIT
#include "QUOR2DVisualElement.h"

#include "ElementFixture.h"
#include "OffscreenScene.h"
#include "ProductWriter.h"
#include "QUORColormap.h"
#include "QUORFile.h"
#include "TestFiles.h"

#include <QFile>
#include <QTemporaryDir>

#include <vtkDataSet.h>
#include <vtkDataSetMapper.h>

namespace {

constexpr const char* COLORS = "[COLORSCALE%201]\nname=Default\ndata_index=0\ncolorset_index=1\n"
                               "points\\size=3\npoints\\1\\seam=0\npoints\\2\\seam=20\npoints\\3\\seam=60\n"
                               "[COLORSET%201]\npoints\\size=3\n"
                               "points\\1\\lower\\b=200\npoints\\2\\lower\\g=200\npoints\\3\\lower\\r=200\n";

/// A grid of values, x fastest; 0 stands for no data.
SampleProduct makeProduct(int columns, int rows, std::vector<std::uint16_t> values,
                          std::uint16_t type = SampleProduct::Reflectivity8) {
    SampleProduct product;
    product.code = SampleProduct::Max;
    product.type = type;
    product.points = {columns, rows, 1};
    product.values = std::move(values);
    return product;
}

/// 4 x 3 points, six cells; the corner without data takes one of them with it.
const std::vector<std::uint16_t> GRID{0, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110};

} // namespace

class QUOR2DVisualElementTest : public ElementFixture<QUOR2DVisualElement, 13> {
protected:
    QUORLayerParameters2d recordOf(const SampleProduct& product, const QString& name) {
        return recordOf(ProductWriter::toBytes(product), name);
    }
    QUORLayerParameters2d recordOf(const QByteArray& bytes, const QString& name) {
        path = folder.filePath(name);
        writeFile(path, bytes);
        QUORLayerParameters2d record;
        record.setDataFile(std::make_shared<const QUORFile>(path));
        return record;
    }

    vtkDataSet* cells() {
        actors().at(0)->GetMapper()->Update();
        return vtkDataSetMapper::SafeDownCast(actors().at(0)->GetMapper())->GetInput();
    }

    QTemporaryDir folder;
    QString path;
};

TEST_F(QUOR2DVisualElementTest, KeepsTheCellsWithData) {
    std::vector<std::uint16_t> wide = GRID;
    for (std::uint16_t& value : wide) {
        value = static_cast<std::uint16_t>(value * 256);
    }
    const struct {
        const char* name;
        SampleProduct product;
        vtkIdType cells;
    } rows[] = {
        {"SAM210729123801.one", makeProduct(4, 3, GRID), 5},
        {"SAM210729123802.two", makeProduct(4, 3, wide, SampleProduct::Reflectivity16), 5},
        {"SAM210729123803.nothing", makeProduct(4, 3, std::vector<std::uint16_t>(12, 0)), 0},
        {"SAM210729123804.beyond", makeProduct(4, 3, std::vector<std::uint16_t>(12, 255)), 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        update(recordOf(row.product, QString::fromLatin1(row.name)));
        ASSERT_EQ(actors().size(), 1U);
        ASSERT_EQ(cells()->GetNumberOfCells(), row.cells);
        EXPECT_TRUE(row.cells == 0 || (cells()->GetBounds()[1] == 3.0 && cells()->GetBounds()[3] == 2.0));
    }
}

TEST_F(QUOR2DVisualElementTest, NamesAFileThatCannotBeRead) {
    QByteArray good = ProductWriter::toBytes(makeProduct(4, 3, GRID));
    QByteArray huge = good;
    huge[115] = 0x7f; // two billion columns
    SampleProduct swapped = makeProduct(4, 3, GRID);
    swapped.points = {0, -3, 1};
    const struct {
        const char* name;
        QByteArray bytes;
    } rows[] = {
        {"SAM210729123801.huge", huge},
        {"SAM210729123802.cut", good.first(good.size() - 4)},
        {"SAM210729123803.negative", ProductWriter::toBytes(swapped)},
        {"SAM210729123804.text", QByteArray(2000, 'x')},
        {"SAM210729123806.row", ProductWriter::toBytes(makeProduct(4, 1, {10, 20, 30, 40}))},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        log.clear();
        const QString name = QString::fromLatin1(row.name);
        update(recordOf(row.bytes, name));
        EXPECT_FALSE(element.getProp());
        EXPECT_EQ(log.count("E: Tried to load invalid 2D data file: " + name), 1);
        EXPECT_TRUE(log.contains("Aborting 2D visualization."));
    }
    log.clear();
    const QUORLayerParameters2d gone = recordOf(good, QStringLiteral("SAM210729123807.gone"));
    QFile::remove(path);
    update(gone);
    EXPECT_FALSE(element.getProp());
    EXPECT_TRUE(log.contains("SAM210729123807.gone"));
}

TEST_F(QUOR2DVisualElementTest, AHiddenLayerKeepsItsDataUntilItIsShown) {
    const QUORLayerParameters2d record =
        recordOf(makeProduct(4, 3, GRID), QStringLiteral("SAM210729123801.max"));
    update(record, false);
    EXPECT_FALSE(element.getProp());
    QFile::remove(path);
    update(record, true);
    ASSERT_TRUE(element.getProp());
    EXPECT_EQ(cells()->GetNumberOfCells(), 5);
    update(recordOf(makeProduct(4, 3, GRID), QStringLiteral("SAM210729124801.max")), false);
    EXPECT_FALSE(element.getProp());
}

/// Draws the layer from above, 100 pixels a grid step, the window's middle at (1.5, 1).
class QUOR2DVisualElementPictureTest : public OffscreenScene {
protected:
    void SetUp() override {
        OffscreenScene::SetUp();
        ScratchHome::writeSettings("QUOR3DColors.conf", COLORS);
        lookDown(2.0, 1.5, 1.0);
    }

    ScratchHome home;
};

TEST_F(QUOR2DVisualElementPictureTest, ShowsExactlyTheColoursOfTheMap) {
    for (const std::uint16_t type : {SampleProduct::Reflectivity8, SampleProduct::Reflectivity16}) {
        SCOPED_TRACE(type);
        const QTemporaryDir folder;
        const std::uint16_t value = ProductWriter::encode(20.0, type, 0.0);
        const QString path = folder.filePath("SAM210729123801.max");
        ASSERT_EQ(ProductWriter::write(makeProduct(4, 3, std::vector<std::uint16_t>(12, value), type), path),
                  "");
        auto record = std::make_shared<QUORLayerParameters2d>();
        record->setDataFile(std::make_shared<const QUORFile>(path));
        const QUORVisualGroup::Ptr group = QUORVisualGroup::makeGroup(10);
        QUOR2DVisualElement element(group.get(), 13);
        element.update(record, true, QUORAbortFlag());
        ASSERT_TRUE(element.getProp());
        EXPECT_FALSE(element.getProp()->HasTranslucentPolygonalGeometry());
        renderer->RemoveAllViewProps();
        renderer->AddViewProp(element.getProp());
        window->Render();
        const QUORColormap map(QStringLiteral("Default"), record->getDataFile()->getDataType(),
                               QUORColormap::Absolute);
        const std::array<int, 3> expected = map.getColor(value);
        EXPECT_GT(expected[1], 150);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(pixel(SIDE / 2, SIDE / 2)[i], expected[i], 1);
        }
        EXPECT_EQ(pixel(20, 20), (std::array<int, 3>{0, 0, 0}));
    }
}
