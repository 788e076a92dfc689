// SPDX-License-Identifier: MIT
#include "QUORProductReader.h"

#include "QUORGridPlacement.h"
#include "TestProduct.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

namespace {

/// 10 x 8 x 5 points, a kilometre apart and 500 m upwards, whose stored value says where it stands; no data
/// at the west edge. The radar, 120 m above the sea, is in the middle.
class QUORProductReaderTest : public testing::Test {
protected:
    static unsigned int storedAt(int x, int y, int z) {
        return x == 0 ? 0U : unsigned(10 + x + 10 * y + 30 * z);
    }

    QUORProductReaderTest() {
        TestProduct product;
        product.points = {10, 8, 5};
        product.radar = {5000, 4000, 0};
        product.fill = storedAt;
        volume = std::make_shared<QUORFile>(product.write(_folder.path()));
        TestProduct rain = TestProduct::sri();
        rain.points = {10, 8, 1};
        rain.radar = {5000, 4000, 0};
        rain.fill = [](int x, int y, int) { return unsigned(1000 + x + 10 * y); };
        layer = std::make_shared<QUORFile>(rain.write(_folder.path()));
        place = QUORGridPlacement::ofVolume(*volume, 1.0);
    }

    QUORPoint3D pointOf(double x, double y, double z) const { return place.toScene({x, y, z}); }
    double shown(int x, int y, int z) const {
        return volume->getDataType().absoluteToDisplayValue(storedAt(x, y, z));
    }

    QTemporaryDir _folder;
    QUORFile::CPtr volume;
    QUORFile::CPtr layer;
    QUORGridPlacement place;
};

TEST_F(QUORProductReaderTest, ReadsTheNearestPoint) {
    const QUORProductReader reader(volume, layer);
    constexpr double FAR = std::numeric_limits<double>::infinity();
    const struct {
        const char* name;
        double x, y, z;
        bool inside;
        std::optional<double> value;
        bool insideLayer = true;
    } rows[] = {
        {"a point", 3, 2, 1, true, shown(3, 2, 1)},
        {"near it", 3.4, 1.6, 1.4, true, shown(3, 2, 1)},
        {"the next one", 3.6, 2, 1.6, true, shown(4, 2, 2)},
        {"the last one", 9, 7, 4, true, shown(9, 7, 4)},
        {"no data", 0, 3, 2, true, std::nullopt},
        {"beyond the east edge", 9.6, 3, 2, false, std::nullopt, false},
        {"under the lowest level", 4, 3, -0.6, false, std::nullopt},
        {"over the highest one", 4, 3, 4.6, false, std::nullopt},
        {"nowhere", FAR, 3, FAR, false, std::nullopt, false},
    };
    for (const auto& row : rows) {
        const auto point = reader.read(pointOf(row.x, row.y, row.z));
        EXPECT_EQ(point.volume.isInside, row.inside) << row.name;
        ASSERT_EQ(point.volume.value.has_value(), row.value.has_value()) << row.name;
        if (row.value) {
            EXPECT_DOUBLE_EQ(*point.volume.value, *row.value) << row.name;
        }
        EXPECT_EQ(point.layer.isInside, row.insideLayer) << row.name;
    }
    const auto point = reader.read(pointOf(3, 2, 1));
    EXPECT_DOUBLE_EQ(*point.layer.value, layer->getDataType().absoluteToDisplayValue(1023));
    EXPECT_NEAR(point.height, 120 + 500, 0.01 * 500 + 126); // (n - 1) steps span n levels' extent
    EXPECT_FALSE(QUORProductReader(volume, nullptr).read(pointOf(3, 2, 1)).layer.isInside);
}

// North is up: a place north-east of the radar has the larger latitude and longitude.
TEST_F(QUORProductReaderTest, KnowsWhereAPlaceIs) {
    const QUORProductReader reader(volume, nullptr);
    const auto site = reader.read({0, 0, 0}).coordinate;
    EXPECT_NEAR(site.getLat(), 60.0, 1e-6);
    EXPECT_NEAR(site.getLon(), 25.0, 1e-6);
    const auto northEast = reader.read({2000, 3000, 0}).coordinate;
    EXPECT_NEAR(northEast.getLat(), 60.0 + 3000.0 / 111195, 1e-4);
    EXPECT_NEAR(northEast.getLon(), 25.0 + 2000.0 / 111195 * 2, 1e-3);
}

TEST_F(QUORProductReaderTest, ReadsProfilesAndSections) {
    const QUORProductReader reader(volume, nullptr);
    const QUORPoint3D at = pointOf(5, 6, 0);
    const auto profile = reader.readProfile(at.x, at.y);
    ASSERT_EQ(profile.size(), 5);
    for (int z = 0; z < 5; ++z) {
        EXPECT_DOUBLE_EQ(profile.at(z).height, pointOf(0, 0, z).z) << z;
        EXPECT_DOUBLE_EQ(*profile.at(z).volume.value, shown(5, 6, z)) << z;
    }
    const auto section = reader.readSection(pointOf(1, 1, 0), pointOf(9, 7, 0), 9);
    ASSERT_EQ(section.columns.size(), 9);
    EXPECT_EQ(section.heights.size(), 5);
    EXPECT_NEAR(section.length, std::hypot(8 * place.step.x, 6 * place.step.y), 1e-6);
    EXPECT_DOUBLE_EQ(*section.columns.first().at(3).value, shown(1, 1, 3));
    EXPECT_DOUBLE_EQ(*section.columns.at(4).at(0).value, shown(5, 4, 0));
    EXPECT_DOUBLE_EQ(*section.columns.last().at(4).value, shown(9, 7, 4));
}

TEST_F(QUORProductReaderTest, GivesNothingOfAFileThatIsGone) {
    const auto gone = std::make_shared<QUORFile>(volume->getPath());
    QFile::remove(volume->getPath());
    const QUORProductReader reader(gone, nullptr);
    EXPECT_FALSE(reader.read(pointOf(3, 2, 1)).volume.isInside);
    EXPECT_TRUE(reader.readProfile(0, 0).isEmpty());
}

} // namespace
