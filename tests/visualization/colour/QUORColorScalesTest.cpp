// SPDX-License-Identifier: MIT
#include "QUORColorScales.h"

#include "QUORColormap.h"
#include "QUORDataType.h"
#include "ScratchHome.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

namespace {

struct PaletteRow {
    const char* name;
    QByteArray text;
    int intervals;
    double first;
    double end;
    QUORPaletteFile::Color lower; ///< of the last interval
    QUORPaletteFile::Color upper;
    const char* error;
};

void expectPalette(const PaletteRow& row) {
    SCOPED_TRACE(row.name);
    QString error;
    const QUORPaletteFile palette = QUORPaletteFile::parse(row.text, error);
    ASSERT_EQ(palette.getIntervals().size(), row.intervals) << qPrintable(error);
    EXPECT_TRUE(error.contains(QLatin1String(row.error)) && error.isEmpty() == (row.intervals > 0))
        << qPrintable(error);
    if (row.intervals > 0) {
        EXPECT_DOUBLE_EQ(palette.getIntervals().constFirst().value, row.first);
        EXPECT_DOUBLE_EQ(palette.getEnd(), row.end);
        EXPECT_EQ(palette.getIntervals().constLast().lower, row.lower);
        EXPECT_EQ(palette.getIntervals().constLast().upper, row.upper);
    }
}

} // namespace

TEST(QUORColorScalesTest, ReadsPalettesAndNamesBadLines) {
    const PaletteRow rows[] = {
        {"table",
         "# c\n0 0 0 255 10 0 255 0\n10 0 255 0 20 255 0 0\nB 0 0 0\nN 128\n",
         2,
         0,
         20,
         {0, 255, 0},
         {255, 0, 0},
         ""},
        {"slashes", "-5\t1/2/3\t5\t4/5/6\tL\r\n", 1, -5, 5, {1, 2, 3}, {4, 5, 6}, ""},
        {"names", "0 red 1 #0000ff ; low\n", 1, 0, 1, {255, 0, 0}, {0, 0, 255}, ""},
        {"hue", "# COLOR_MODEL = HSV\n0 120 1 1 1 240 1 0.5\n", 1, 0, 1, {0, 255, 0}, {0, 0, 128}, ""},
        {"radar",
         "Product: BR\nUnits: dBZ\nColor: 40 255 0 0\nColor: 20 0 255 0 0 100 0\nND: 0 0 0\n",
         2,
         20,
         60,
         {255, 0, 0},
         {255, 0, 0},
         ""},
        {"radar with a scale",
         "Scale: 2\nOffset: 5\nSolidColor: 20 1 1 1\nColor4: 40 2 2 2 255 3 3 3 255\n",
         2,
         5,
         25,
         {2, 2, 2},
         {3, 3, 3},
         ""},
        {"colours", "JASC-PAL\r\n0100\r\n2\r\n1 2 3\r\n4 5 6\r\n", 2, 0, 2, {4, 5, 6}, {4, 5, 6}, ""},
        {"empty", "", 0, 0, 0, {}, {}, "no colours"},
        {"prose", "0 0 0 255 10 0 255 0\nnone of this\n", 0, 0, 0, {}, {}, "line 2"},
        {"beyond 255", "0 0 0 256 10 0 255 0\n", 0, 0, 0, {}, {}, "out of range"},
        {"not finite", "nan 0 0 0 10 0 255 0\n", 0, 0, 0, {}, {}, "line 1"},
        {"two alike", "Color: 5 1 1 1\nColor: 5 2 2 2\n", 0, 0, 0, {}, {}, "two intervals"},
        {"too many", QByteArray("1 1 1 1 2 2 2 2\n").repeated(2000), 0, 0, 0, {}, {}, "1000"},
    };
    for (const PaletteRow& row : rows) {
        expectPalette(row);
    }
}

/// An imported scale is drawn in its colours, and the packaged ones stay as they are.
TEST(QUORColorScalesTest, AnImportedScaleColoursItsData) {
    const ScratchHome home;
    ScratchHome::writePackaged(
        QStringLiteral("QUOR3DColors.conf"),
        QString::fromUtf8(readFile(sourcePath(QStringLiteral("share/QUOR3DColors.conf")))));
    const auto before = QUORColorScales::list();
    QString error;
    const auto palette = QUORPaletteFile::parse("0 0 0 200 20 0 200 0\n20 100 0 0 40 200 0 0\n", error);
    const int reflectivity = QUORColorScales::findDataIndex(QStringLiteral("Z"));
    const QString name = QStringLiteral("Storm");
    ASSERT_TRUE(QUORColorScales::add(name, reflectivity, QStringLiteral("dBZ"), palette));
    const auto after = QUORColorScales::list();
    ASSERT_EQ(after.size(), before.size() + 1);
    const QUORColorScales::Scale& added = after.constLast();
    EXPECT_EQ(added.name, name);
    EXPECT_TRUE(added.isUser);
    EXPECT_FALSE(after.constFirst().isUser);

    const QUORColormap map(name, QUORDataType(2), QUORColormap::Display);
    const struct {
        double value;
        std::array<int, 3> color;
    } rows[] = {{0.0, {0, 0, 200}},
                {10.0, {0, 100, 100}},
                {19.9, {0, 199, 1}},
                {20.1, {100, 0, 0}},
                {40.0, {200, 0, 0}}};
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(map.getColor(row.value)[i], row.color[i], 3) << row.value;
        }
    }
    EXPECT_TRUE(QUORColorScales::rename(added.id, QStringLiteral("Hail")));
    EXPECT_EQ(QUORColorScales::list().constLast().name, QStringLiteral("Hail"));
    EXPECT_TRUE(QUORColorScales::remove(added.id));
    EXPECT_EQ(QUORColorScales::list().size(), before.size());
}

} // namespace
