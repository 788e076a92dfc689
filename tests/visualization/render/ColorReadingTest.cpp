// SPDX-License-Identifier: MIT
// What a forecaster reads from a picture: the colour of a surface, looked up on the colour bar.
#include "QUORColormap.h"
#include "QUORDataType.h"
#include "TestFiles.h"
#include "VisualizerFixture.h"

#include <QImage>

#include <cstdio>

namespace {

using Color = std::array<double, 3>;

/// A display state without all that is not the 3D product, and a view that looks down on 160 x 160 km.
const QString SCENE = QStringLiteral(R"([GENERAL]
datashrink_h=1
datasmooth=0

[VIEWANGLE]
VIEWANGLES\size=2
VIEWANGLES\1\viewAngleName=Custom
VIEWANGLES\2\viewAngleName=Oblique
VIEWANGLES\2\viewAngleCamPosX=-90000
VIEWANGLES\2\viewAngleCamPosY=-90000
VIEWANGLES\2\viewAngleCamPosZ=50000
VIEWANGLES\2\viewAngleCamDirX=0.9
VIEWANGLES\2\viewAngleCamDirY=0.9
VIEWANGLES\2\viewAngleCamDirZ=-0.45

[DISPLAYSTATE]
DISPLAYSTATES\size=2
DISPLAYSTATES\1\displayStateName=Custom
DISPLAYSTATES\2\displayStateName=Data
DISPLAYSTATES\2\displayStateLayerVisible10=true
DISPLAYSTATES\2\displayStateLayerVisible12=true
)");

QString productGroup(const QString& configuration, const std::vector<double>& values) {
    QString text =
        QStringLiteral("\n[PRODUCT%20CAPPI%20%1]\nrendering=surface\ncolormap=Default\n").arg(configuration);
    text += QStringLiteral("surface\\size=%1\n").arg(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        text +=
            QStringLiteral("surface\\%1\\isovalue=%2\nsurface\\%1\\opacity=100\n").arg(i + 1).arg(values[i]);
    }
    return text;
}

Color proportion(const Color& color) {
    const double sum = std::max(color[0] + color[1] + color[2], 1.0);
    return {color[0] / sum, color[1] / sum, color[2] / sum};
}

/// The values of a bar, by colour.
class Bar {
public:
    explicit Bar(const QUORDataType& type) {
        const QUORColormap map(QStringLiteral("Default"), type, QUORColormap::Display);
        _seams = map.getScale();
        for (int i = 0; i <= STEPS; ++i) {
            const double value = _seams.first() + (_seams.last() - _seams.first()) * i / STEPS;
            const std::array<int, 3> rgb = map.getColor(value);
            const Color color{double(rgb[0]), double(rgb[1]), double(rgb[2])};
            _entries.push_back({value, color, proportion(color)});
        }
    }

    /// The value from `low` on whose colour is nearest; by proportion, whatever the brightness.
    double read(const Color& color, double low, bool byProportion) const {
        const Color wanted = byProportion ? proportion(color) : color;
        const auto distance = [&](const Entry& entry) {
            const Color& own = byProportion ? entry.proportion : entry.color;
            return entry.value < low ? 1e9
                                     : std::hypot(own[0] - wanted[0], own[1] - wanted[1], own[2] - wanted[2]);
        };
        return std::min_element(_entries.begin(), _entries.end(),
                                [&](const Entry& a, const Entry& b) { return distance(a) < distance(b); })
            ->value;
    }

    /// The number of the interval of the scale in which the value lies, and how far in.
    double step(double value) const {
        const auto above = std::upper_bound(_seams.begin() + 1, _seams.end() - 1, value);
        const double low = *(above - 1);
        return double(above - _seams.begin() - 1) + (value - low) / (*above - low);
    }

    double lowest() const { return _seams.first(); }

private:
    static constexpr int STEPS = 4000;

    struct Entry {
        double value;
        Color color;
        Color proportion;
    };

    QVector<double> _seams;
    std::vector<Entry> _entries;
};

class ColorReadingTest : public VisualizerFixture {
protected:
    static constexpr int WIDTH = 640;
    static constexpr int HEIGHT = 480;

    void SetUp() override {
        VisualizerFixture::SetUp();
        ScratchHome::writeSettings(
            QStringLiteral("QUOR3DColors.conf"),
            QString::fromUtf8(readFile(sourcePath(QStringLiteral("share/QUOR3DColors.conf")))));
    }

    /// Without values with the packaged surfaces.
    QImage draw(const TestProduct& product, const QString& configuration, const std::vector<double>& values,
                const QString& view) {
        ScratchHome::writeSettings(QStringLiteral("QUOR3D.conf"),
                                   SCENE +
                                       (values.empty() ? QString() : productGroup(configuration, values)));
        writeBackground(QStringLiteral("displaystate=Data\noutputformat=PNG\nviewangle=") + view, WIDTH,
                        HEIGHT);
        static int number = 0;
        const QString path = _store.folder("3d") + QStringLiteral("/../%1.png").arg(++number);
        TestProduct unique = product;
        unique.time = unique.time.addSecs(300 * number);
        EXPECT_TRUE(render(_visualizer, _store.frame(unique), path));
        return QImage(path);
    }

    QUOROffscreenVisualizer _visualizer;
};

Color colorAt(const QImage& image, int x, int y) {
    const QColor color = image.pixelColor(x, y);
    return {double(color.red()), double(color.green()), double(color.blue())};
}

/// Four strips from west to east; in each the field falls through its value at half height, so that the
/// surface of that value is level there and no other value has one.
TestProduct strips(int type, const QUORDataType& dataType, const std::vector<double>& values) {
    TestProduct product;
    product.type = std::uint16_t(type);
    product.points = {80, 80, 8};
    product.radar = {40000, 40000, 0};
    product.fill = [=](int x, int, int z) {
        const double value = values[std::size_t(std::min(x / 20, 3))];
        const int raw = int(dataType.displayToAbsoluteValue(value));
        return unsigned(std::max(raw + (z < 4 ? 1 : -1), 1));
    };
    return product;
}

struct Reading {
    double value;
    double read;
    double error;
};

void printTable(const char* title, const std::vector<Reading>& readings) {
    std::printf("%s\n%10s %10s %8s\n", title, "value", "read", "error");
    for (const Reading& reading : readings) {
        std::printf("%10.2f %10.2f %8.2f\n", reading.value, reading.read, reading.error);
    }
}

} // namespace

TEST_F(ColorReadingTest, ALevelSurfaceHasTheColorOfItsValueOnTheBar) {
    struct Row {
        const char* name;
        int type;
        const char* configuration;
        double low;
        double high;
        int count;
        double allowed; ///< of rain in steps of the scale
    };
    const Row rows[] = {{"dBZ", 9, "Z", -28.0, 74.0, 40, 1.5},
                        {"m/s", 10, "V", -39.0, 39.0, 40, 1.5},
                        {"mm/h", 13, "R", 0.3, 98.0, 40, 1.0}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const QUORDataType type(row.type);
        const Bar bar(type);
        const bool rain = row.type == 13;
        std::vector<Reading> readings;
        for (int first = 0; first < row.count; first += 4) {
            std::vector<double> values;
            for (int i = first; i < first + 4; ++i) {
                const double part = double(i) / (row.count - 1);
                const double value = rain ? row.low * std::pow(row.high / row.low, part)
                                          : row.low + part * (row.high - row.low);
                // A stored value is what the surface is drawn for.
                values.push_back(type.absoluteToDisplayValue(type.displayToAbsoluteValue(value)));
            }
            const QImage image = draw(strips(row.type, type, values), QLatin1String(row.configuration),
                                      values, QStringLiteral("Default"));
            for (int strip = 0; strip < 4; ++strip) {
                // The picture is as high as 1.51 times the product's 158 km.
                const double pixelsPerKm = HEIGHT / (1.511 * 158.0);
                const int x = int(WIDTH / 2 + (strip * 40 + 19 - 80) * pixelsPerKm);
                const double value = values[std::size_t(strip)];
                const double read = bar.read(colorAt(image, x, HEIGHT / 2 + 60), bar.lowest(), false);
                readings.push_back({value, read, rain ? bar.step(read) - bar.step(value) : read - value});
            }
        }
        printTable(row.name, readings);
        for (const Reading& reading : readings) {
            EXPECT_LE(std::abs(reading.error), row.allowed) << reading.value;
        }
    }
}

/// The packaged opacities over a core of 50 dBZ that two shells lie over.
TEST_F(ColorReadingTest, ACoreBehindTwoShellsIsReadAsStrong) {
    const QString packaged = QString::fromUtf8(readFile(sourcePath(QStringLiteral("share/QUOR3D.conf"))));
    ScratchHome::writePackaged(QStringLiteral("QUOR3D.conf"), packaged);
    const QUORDataType type(9);
    TestProduct product;
    product.type = 9;
    product.points = {41, 41, 25};
    product.radar = {20000, 20000, 0};
    // Level shells, one over the other: 20 dBZ at level 20, 40 at level 14, 50 at level 8.
    product.fill = [&](int x, int y, int z) {
        const bool inside = std::max(std::abs(x - 20), std::abs(y - 20)) < 16;
        const double value = z > 14 ? 20.0 + (20 - z) * 20.0 / 6.0 : 40.0 + (14 - z) * 10.0 / 6.0;
        return inside ? type.displayToAbsoluteValue(std::clamp(value, 0.0, 55.0)) : 1.0;
    };
    const QImage image = draw(product, QString(), {}, QStringLiteral("Default"));
    const Bar bar(type);
    std::vector<Reading> readings;
    for (const auto& [x, y] : {std::pair(-60, 40), std::pair(60, 50), std::pair(0, 70)}) {
        const double read = bar.read(colorAt(image, WIDTH / 2 + x, HEIGHT / 2 + y), bar.lowest(), false);
        readings.push_back({50.0, read, read - 50.0});
    }
    printTable("dBZ of a core behind shells of 20 and 40 dBZ", readings);
    for (const Reading& reading : readings) {
        EXPECT_GE(reading.read, 48.0);
        EXPECT_LE(reading.read, 52.0);
    }
}

TEST_F(ColorReadingTest, AFaceOfAnyAngleHasTheProportionsOfItsColor) {
    const QUORDataType type(9);
    const Bar bar(type);
    std::vector<Reading> readings;
    for (const double value : {22.0, 25.0, 30.0, 36.0, 42.0, 47.0, 52.0, 57.0, 62.0}) {
        TestProduct product;
        product.type = 9;
        product.points = {41, 41, 25};
        product.radar = {20000, 20000, 0};
        product.fill = [&](int x, int y, int z) {
            const double r = std::hypot((x - 20) / 15.0, (y - 20) / 15.0, (z - 12) / 10.0);
            return type.displayToAbsoluteValue(value + 10.0 * (1.0 - r));
        };
        const QImage image = draw(product, QStringLiteral("Z"), {value}, QStringLiteral("Oblique"));
        Reading worst{value, value, 0.0};
        int drawn = 0;
        for (int y = 5; y < HEIGHT / 2 - 5; y += 5) { // the site marker lies below
            for (int x = WIDTH / 4; x < 3 * WIDTH / 4; x += 5) {
                const Color color = colorAt(image, x, y);
                if (image.pixel(x, y) == image.pixel(WIDTH - 10, HEIGHT - 10)) {
                    continue;
                }
                ++drawn;
                const double read = bar.read(color, 10.0, true);
                if (std::abs(read - value) > std::abs(worst.error)) {
                    worst = {value, read, read - value};
                }
            }
        }
        EXPECT_GT(drawn, 500);
        readings.push_back(worst);
    }
    printTable("dBZ by proportion, the worst pixel", readings);
    for (const Reading& reading : readings) {
        EXPECT_LE(std::abs(reading.error), 2.0) << reading.value;
    }
}
