// SPDX-License-Identifier: MIT
#include "StormProducts.h"

#include <QHash>

#include <gtest/gtest.h>

namespace {

using Products = QHash<QString, SampleProduct>;

SampleProduct frame() {
    SampleProduct result;
    result.points = {240, 240, 24};
    result.radar = {120000, 120000, 0};
    return result;
}

/// Products by folder and the first three letters of the name, such as "3d/CAZ".
Products make(std::uint32_t seed = 1, int seconds = 0) {
    Products products;
    const StormProducts storm(frame(), StormModel(seed, 240000.0));
    EXPECT_TRUE(storm.make(seconds, [&](const QString& folder, const SampleProduct& product) {
        products.insert(folder + QLatin1Char('/') + ProductWriter::fileName(product).left(3), product);
        return true;
    }));
    return products;
}

const Products& standard() {
    static const Products products = make();
    return products;
}

class Grid {
public:
    explicit Grid(const QString& name) : _product(standard().value(name)) {}
    std::uint16_t raw(int x, int y, int z) const {
        return _product.values[std::size_t(x + 240 * (y + 240 * z))];
    }

private:
    SampleProduct _product;
};

} // namespace

TEST(StormProducts, MakesEveryProductInBothItemSizes) {
    QStringList names = standard().keys();
    names.sort();
    EXPECT_EQ(
        names.join(QLatin1Char(' ')),
        QStringLiteral("2d/MAX 2d/PPI 2d/SRI 2d/VIL 3d/CAR 3d/CAV 3d/CAW 3d/CAZ 3d_2byte/CAV 3d_2byte/CAW "
                       "3d_2byte/CAZ"));
    for (const SampleProduct& product : standard()) {
        const std::size_t levels = product.code == SampleProduct::Cappi ? 24 : 1;
        EXPECT_EQ(std::size_t(product.points[2]), levels);
        EXPECT_EQ(product.values.size(), 240 * 240 * levels);
    }
}

TEST(StormProducts, FlatProductsAgreeWithTheVolume) {
    const Grid z(QStringLiteral("3d/CAZ"));
    const Grid rain(QStringLiteral("3d/CAR"));
    const Grid highest(QStringLiteral("2d/MAX"));
    const Grid surface(QStringLiteral("2d/SRI"));
    const Grid water(QStringLiteral("2d/VIL"));
    int most = 0;
    for (int y = 0; y < 240; ++y) {
        for (int x = 0; x < 240; ++x) {
            int column = 0;
            for (int k = 0; k < 24; ++k) {
                column = std::max<int>(column, z.raw(x, y, k));
            }
            ASSERT_EQ(int(highest.raw(x, y, 0)), column);
            ASSERT_EQ(surface.raw(x, y, 0), rain.raw(x, y, 2));
            most = std::max<int>(most, water.raw(x, y, 0));
        }
    }
    EXPECT_GT(most, 30);
    EXPECT_LT(most, 120);
}

TEST(StormProducts, SeedAndTimeDecideTheStorm) {
    const auto values = [](const Products& products) {
        return products.value(QStringLiteral("3d/CAZ")).values;
    };
    EXPECT_EQ(values(make(1)), values(standard()));
    EXPECT_NE(values(make(2)), values(standard()));
    const Products later = make(1, 600);
    EXPECT_NE(values(later), values(standard()));
    EXPECT_EQ(later.value(QStringLiteral("2d/SRI")).time, frame().time.addSecs(600));
}
