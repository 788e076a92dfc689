// SPDX-License-Identifier: MIT
#include "QUORColormap.h"

#include "LogCapture.h"
#include "QUORColorBar.h"
#include "QUORDataType.h"
#include "ScratchHome.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#include <vtkColorTransferFunction.h>
#include <vtkScalarBarActor.h>
#include <vtkTextProperty.h>

#include <set>

namespace {

using Color = std::array<int, 3>;
using Node = std::array<double, 6>;

constexpr int REFLECTIVITY = 2;
constexpr int REFLECTIVITY_2 = 9;
constexpr int VELOCITY = 3;

/// A point of a colour set: its lower and upper grey.
struct Grey {
    int lower;
    int upper;
};

QString array(const QString& name, const QStringList& entries) {
    QString text = name + QStringLiteral("\\size=%1\n").arg(entries.size());
    for (int i = 0; i < entries.size(); ++i) {
        for (const QString& line : entries[i].split(QLatin1Char(' '))) {
            text += QStringLiteral("%1\\%2\\%3\n").arg(name).arg(i + 1).arg(line);
        }
    }
    return text;
}

QString scaleGroup(int id, const QString& keys, const QList<double>& seams) {
    QStringList entries;
    for (const double seam : seams) {
        entries << QStringLiteral("seam=%1").arg(seam);
    }
    return QStringLiteral("[COLORSCALE ") + QString::number(id) + QStringLiteral("]\n") + keys +
           QLatin1Char('\n') + array(QStringLiteral("points"), entries);
}

QString setGroup(int id, const QList<Grey>& points) {
    QStringList entries;
    for (const Grey& point : points) {
        entries << QStringLiteral("lower\\r=%1 lower\\g=%1 lower\\b=%1 upper\\r=%2 upper\\g=%2 upper\\b=%2")
                       .arg(point.lower)
                       .arg(point.upper);
    }
    return QStringLiteral("[COLORSET%20") + QString::number(id) + QStringLiteral("]\nname=Set\n") +
           array(QStringLiteral("points"), entries);
}

QString mappingGroup(const QStringList& entries) {
    return QStringLiteral("[DATAMAPPING]\n") + array(QStringLiteral("data"), entries);
}

void writeColors(const QString& text) {
    ScratchHome::writeSettings(QStringLiteral("QUOR3DColors.conf"), text);
}

Node nodeOf(const QUORColormap& map, int index) {
    Node node{};
    map.getMap()->GetNodeValue(index, node.data());
    return node;
}

class QUORColormapTest : public testing::Test {
protected:
    void TearDown() override { ScratchHome::removeSettings(QStringLiteral("QUOR3DColors.conf")); }

    LogCapture _log;
};

TEST_F(QUORColormapTest, countsAndKindsFollowPointsAndSeams) {
    const Grey step{10, 10};
    const Grey slope{10, 20};
    struct Row {
        const char* name;
        int seams;
        QList<Grey> points;
        QUORColormap::Type type;
        int colorsInUse;
        int nodes;
        int rendered;
    };
    const Row rows[] = {
        {"one point less than seams", 16, QList<Grey>(15, step), QUORColormap::PiecewiseConstant, 15, 15, 15},
        {"more points than seams", 16, QList<Grey>(20, slope), QUORColormap::PiecewiseLinear, 15, 16, 2048},
        {"the last point has no say", 3, {step, step, slope}, QUORColormap::PiecewiseConstant, 2, 3, 2},
        {"a middle point differs", 4, {slope, step, slope, slope}, QUORColormap::Mixed, 3, 4, 3},
        {"the first of two decides", 2, {slope, step}, QUORColormap::PiecewiseLinear, 1, 2, 2048},
        {"a single point", 2, {step}, QUORColormap::PiecewiseConstant, 1, 1, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        QList<double> seams;
        for (int i = 0; i < row.seams; ++i) {
            seams << 4.0 * i;
        }
        writeColors(scaleGroup(12, QStringLiteral("name=Test\ncolorset_index=3"), seams) +
                    setGroup(3, row.points));
        const QUORColormap map(12, QUORDataType(REFLECTIVITY), QUORColormap::Display);
        EXPECT_EQ(map.getType(), row.type);
        EXPECT_EQ(map.getNDefinedSeams(), row.seams);
        EXPECT_EQ(map.getNDefinedColors(), row.points.size());
        EXPECT_EQ(map.getNColorsInUse(), row.colorsInUse);
        EXPECT_EQ(map.getNSeamsInUse(), row.colorsInUse + 1);
        EXPECT_EQ(map.getNRenderedColors(), row.rendered);
        ASSERT_EQ(map.getMap()->GetSize(), row.nodes);
        for (int i = 0; i < row.nodes; ++i) {
            EXPECT_EQ(nodeOf(map, i)[0], 4.0 * i);
            const bool isStep =
                row.type == QUORColormap::PiecewiseConstant ||
                (row.type == QUORColormap::Mixed && row.points[i].lower == row.points[i].upper);
            EXPECT_EQ(nodeOf(map, i)[5], isStep ? 1.0 : 0.0) << i;
        }
    }
}

TEST_F(QUORColormapTest, namesAreLookedUpInTheColorGroupOfTheDataType) {
    writeColors(mappingGroup({QStringLiteral("data_index=0"), QStringLiteral("data_index=0"),
                              QStringLiteral("data_index=7 name=dBZ"), QStringLiteral("data_index=8")}) +
                scaleGroup(1, QStringLiteral("name=First\ndata_index=9"), {0, 1}) +
                scaleGroup(12, QStringLiteral("name=Storm\ndata_index=7"), {0, 1}) +
                scaleGroup(123, QStringLiteral("name=Wind\ndata_index=8"), {0, 1}) +
                scaleGroup(4, QStringLiteral("name=Loose"), {0, 1}));
    EXPECT_EQ(QUORColormap::getColorGroupIdForDataType(REFLECTIVITY), 7);
    EXPECT_EQ(QUORColormap::getDataTypeLegendInfo(REFLECTIVITY), QStringLiteral("dBZ"));
    for (const int unmapped : {-1, 4, 2000000000}) {
        EXPECT_EQ(QUORColormap::getColorGroupIdForDataType(unmapped), 0);
        EXPECT_TRUE(QUORColormap::getDataTypeLegendInfo(unmapped).isEmpty());
    }
    ASSERT_EQ(QUORColormap::getScalesForDataType(VELOCITY).size(), 1);
    EXPECT_EQ(QUORColormap::getScalesForDataType(VELOCITY)[0].id, 123);

    EXPECT_EQ(QUORColormap::getColormapId(QStringLiteral("Storm"), REFLECTIVITY), 12);
    EXPECT_EQ(QUORColormap::getColormapId(QStringLiteral("Loose"), -1), 4);
    EXPECT_FALSE(_log.contains(QStringLiteral("COLORMAP NOT FOUND")));
    EXPECT_EQ(QUORColormap::getColormapId(QStringLiteral("Wind"), REFLECTIVITY), 1);
    EXPECT_EQ(_log.count(QStringLiteral("W: COLORMAP NOT FOUND: mapname Wind, type 2")), 1);
}

TEST_F(QUORColormapTest, seamsAreConvertedAndLimitedToWhatTheDataCanHold) {
    writeColors(scaleGroup(1, QStringLiteral("name=Test"), {-40.5, 0.0, 10.25, 20.0}) +
                setGroup(1, {{0, 1}, {100, 101}, {150, 151}, {200, 201}}));
    const QUORDataType dbz(REFLECTIVITY);
    QUORColormap map(1, dbz, QUORColormap::Absolute);
    EXPECT_EQ(map.getScale(), (QVector<double>{1, 64, 85, 104}));
    // The lowest value of the data, -31.5, lies 9 parts of 40.5 above the first seam.
    EXPECT_EQ(map.getMap()->GetSize(), 4);
    EXPECT_NEAR(nodeOf(map, 0)[1] * 255, 100 * 9 / 40.5, 0.01);
    EXPECT_EQ(map.getColor(64.0), (Color{100, 100, 100}));

    map.changeValueRange(QUORColormap::Display, dbz);
    EXPECT_EQ(map.getScale(), (QVector<double>{-31.5, 0.0, 10.5, 20.0}));

    // One-byte velocity of a Nyquist velocity of 10 m/s: the seams at 15 and 30 cannot be told apart.
    QUORDataType velocity(VELOCITY, 1000, 0, 400, 0);
    writeColors(scaleGroup(1, QStringLiteral("name=Test"), {0.0, 5.0, 15.0, 30.0}) +
                setGroup(1, {{0, 1}, {100, 101}, {200, 201}, {250, 251}}));
    const QUORColormap winds(1, velocity, QUORColormap::Absolute);
    ASSERT_EQ(winds.getMap()->GetSize(), 3);
    EXPECT_EQ(nodeOf(winds, 2)[0], 254.0);
    EXPECT_NEAR(nodeOf(winds, 2)[1] * 255, 100 + 100 * (velocity.getMaxDisplayValue() - 5) / 10, 0.01);
}

TEST_F(QUORColormapTest, whatCannotBeBuiltIsGreyOverTheDataRange) {
    const QUORDataType dbz(REFLECTIVITY_2);
    const struct {
        const char* name;
        QString text;
    } rows[] = {
        {"Nowhere", {}},
        {"Seamless", scaleGroup(1, QStringLiteral("name=Seamless"), {}) + setGroup(1, {{1, 2}})},
        {"Pointless", scaleGroup(1, QStringLiteral("name=Pointless"), {1, 2})},
        {"Absurd", QStringLiteral("[COLORSCALE 1]\nname=Absurd\npoints\\size=2000000000\n")},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        _log.clear();
        writeColors(row.text);
        const QUORColormap first(QLatin1String(row.name), dbz, QUORColormap::Absolute);
        const QUORColormap map(QLatin1String(row.name), dbz, QUORColormap::Absolute);
        EXPECT_EQ(
            _log.count(QStringLiteral("W: Color map %1 of data type 9 has no").arg(QLatin1String(row.name))),
            1);
        EXPECT_EQ(map.getName(), QStringLiteral("Fixed"));
        ASSERT_EQ(map.getMap()->GetSize(), 16);
        EXPECT_EQ(nodeOf(map, 0)[0], 1.0);
        EXPECT_EQ(nodeOf(map, 15)[0], 65534.0);
        EXPECT_EQ(map.getColor(1.0), (Color{31, 31, 31}));
        EXPECT_EQ(map.getColor(65534.0), (Color{241, 241, 241}));
    }
    const QUORColormap fixed;
    EXPECT_EQ(fixed.getMap(), nullptr);
    EXPECT_EQ(fixed.getColor(5.0), (Color{0, 0, 0}));
    EXPECT_EQ(fixed.getScale()[15], 240.0);
    EXPECT_EQ(fixed.getColors()[15].upperGreen, 255);
}

TEST_F(QUORColormapTest, copiesShareNoFunctionAndCanBeRewritten) {
    writeColors(scaleGroup(1, QStringLiteral("name=Test"), {0, 10}) + setGroup(1, {{0, 50}, {100, 101}}));
    const QUORColormap map(1, QUORDataType(REFLECTIVITY), QUORColormap::Display);
    QUORColormap copy(map);
    EXPECT_NE(copy.getMap(), map.getMap());
    EXPECT_EQ(copy.getColor(5.0), (Color{50, 50, 50}));
    copy.setPiecewiseConstant();
    EXPECT_EQ(copy.getType(), QUORColormap::PiecewiseConstant);
    EXPECT_EQ(copy.getColor(9.9), (Color{0, 0, 0}));
    EXPECT_EQ(copy.getColor(10.0), (Color{100, 100, 100}));
    EXPECT_EQ(nodeOf(copy, 1), (Node{10.0, 100 / 255.0, 100 / 255.0, 100 / 255.0, 1.0, 1.0}));
    copy.setPiecewiseLinear();
    EXPECT_EQ(nodeOf(copy, 1), (Node{10.0, 100 / 255.0, 100 / 255.0, 100 / 255.0, 0.5, 0.0}));
    EXPECT_EQ(copy.getColor(5.0), (Color{50, 50, 50}));
    const QUORColormap absolute(map, QUORDataType(REFLECTIVITY), QUORColormap::Absolute);
    EXPECT_EQ(absolute.getScale(), (QVector<double>{64, 84}));
}

TEST_F(QUORColormapTest, theBarShowsEveryColourWhereTheLayersHaveIt) {
    const QList<Grey> steps{{40, 40}, {80, 80}, {120, 120}, {160, 160}, {200, 200}};
    const struct {
        const char* name;
        QList<double> seams;
        QList<Grey> points;
    } rows[] = {{"even steps", {0, 10, 20, 30, 40, 50}, steps},
                {"uneven steps", {0, 1, 2.25, 10, 40, 60}, steps},
                {"as many seams as steps", {0, 0.5, 3, 30, 50}, steps},
                {"mixed", {0, 10, 12, 30, 50}, {{40, 40}, {80, 120}, {120, 120}, {160, 160}}},
                {"running", {0, 10, 12, 30, 50}, {{40, 80}, {80, 120}, {120, 160}, {160, 200}}}};
    const QUORDataType dbz(REFLECTIVITY);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        writeColors(scaleGroup(1, QStringLiteral("name=Test"), row.seams) + setGroup(1, row.points));
        const QUORColormap layer(1, dbz, QUORColormap::Absolute);
        const QUORColormap display(1, dbz, QUORColormap::Display);
        const auto bar = QUORColorBar::make(display);
        const auto shown = [&](double value) { return int(bar->GetLookupTable()->MapValue(value)[0]); };
        for (unsigned int raw = dbz.displayToAbsoluteValue(0.0); raw < 160; ++raw) {
            const double value = dbz.absoluteToDisplayValue(raw);
            ASSERT_NEAR(shown(value), layer.getColor(raw)[0], 3) << value;
        }
        const double* range = bar->GetLookupTable()->GetRange();
        EXPECT_EQ(range[0], row.seams.first());
        EXPECT_EQ(range[1], row.seams.last());
        std::set<int> colors;
        for (int i = 0; i < bar->GetMaximumNumberOfColors(); ++i) {
            colors.insert(shown(range[0] + (range[1] - range[0]) * i / bar->GetMaximumNumberOfColors()));
        }
        for (int i = 0; i < display.getNColorsInUse(); ++i) {
            EXPECT_TRUE(colors.contains(row.points[i].lower)) << i;
            const double upper = row.seams[i + 1];
            if (row.points[i].lower == row.points[i].upper) {
                EXPECT_EQ(shown(upper - 0.01), row.points[i].lower) << i;
            }
        }
    }
}

TEST_F(QUORColormapTest, theBarIsLegibleAndItsLabelFormatSafe) {
    const struct {
        const char* format;
        const char* expected;
    } formats[] = {{"3.0f", "%3.0f"}, {"-6.2e dBZ", "%-6.2e dBZ"}, {"s", "%3.0f"},
                   {"n", "%3.0f"},    {"3.0f%n", "%3.0f"},         {"d", "%3.0f"},
                   {"*f", "%3.0f"},   {"400.9f", "%3.0f"},         {"", "%3.0f"}};
    for (const auto& row : formats) {
        SCOPED_TRACE(row.format);
        writeColors(scaleGroup(1, QStringLiteral("name=Test\nlabel_format=") + QLatin1String(row.format),
                               {0, 10, 20}) +
                    setGroup(1, {{0, 0}, {1, 1}, {2, 2}}));
        const QUORColormap map(1, QUORDataType(REFLECTIVITY), QUORColormap::Display);
        EXPECT_EQ(map.getLabelFormat(), QLatin1String(row.expected));
    }
    const QUORColormap map(1, QUORDataType(REFLECTIVITY), QUORColormap::Display);
    const auto bar = map.makeBar(QStringLiteral("dBZ"), 0.1, 0.05, 0.8, 0.95);
    EXPECT_STREQ(bar->GetTitle(), "dBZ");
    EXPECT_EQ(bar->GetNumberOfLabels(), 3);
    EXPECT_EQ(bar->GetMaximumNumberOfColors(), 2);
    EXPECT_EQ(bar->GetLookupTable(), map.getMap());
    EXPECT_DOUBLE_EQ(bar->GetPosition()[1], 0.05);
    EXPECT_DOUBLE_EQ(bar->GetWidth(), 0.8);
    EXPECT_EQ(bar->GetTitleTextProperty()->GetFontSize(), 12);
    EXPECT_EQ(bar->GetLabelTextProperty()->GetShadow(), 0);
    EXPECT_DOUBLE_EQ(bar->GetLabelTextProperty()->GetColor()[0], 0.0);
}

TEST_F(QUORColormapTest, thePackagedScalesCoverEveryDataType) {
    writeColors(QString::fromUtf8(readFile(sourcePath(QStringLiteral("share/QUOR3DColors.conf")))));
    for (const QUORDataType::Row& row : QUORDataType::getRows()) {
        SCOPED_TRACE(row.code);
        const QUORDataType type(row.code, 1000, 1, 533, 0);
        const QUORColormap map(QStringLiteral("Default"), type, QUORColormap::Display);
        EXPECT_EQ(map.getType(), QUORColormap::PiecewiseLinear);
        EXPECT_GE(map.getNSeamsInUse(), 9);
        EXPECT_EQ(map.getNDefinedColors(), map.getNDefinedSeams());
        EXPECT_TRUE(std::is_sorted(map.getScale().begin(), map.getScale().end()));
        if (type.getRawType() >= 0) {
            EXPECT_EQ(map.getDataUnits(), type.getQuantityUnit());
            EXPECT_EQ(QUORColormap::getDataTypeLegendInfo(row.code), QLatin1String(row.name));
        }
    }
    EXPECT_FALSE(_log.contains(QStringLiteral("W: ")));
    const QUORColormap winds(QStringLiteral("Default"), QUORDataType(10), QUORColormap::Absolute);
    const Color towards = winds.getColor(32768.0 - 2000);
    const Color away = winds.getColor(32768.0 + 2000);
    EXPECT_GT(towards[1], 2 * towards[0]);
    EXPECT_GT(away[0], 2 * away[1]);
}

} // namespace
