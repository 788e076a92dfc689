// SPDX-License-Identifier: MIT
#include "PictureCatalogue.h"
#include "PictureName.h"
#include "TestFiles.h"

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

TEST(PictureName, IsTakenApart) {
    struct Row {
        const char* fileName;
        std::optional<std::array<const char*, 4>> parts;
    };
    const std::vector<Row> rows{
        {"KLOT_Z_210729123848.png", {{"KLOT", "Z", "210729123848", ""}}},
        {"KLOT_Z_210729123848.TIFF", {{"KLOT", "Z", "210729123848", ""}}},
        {"A_B_C_V_210729123848_From the south.jpeg", {{"A_B_C", "V", "210729123848", "From the south"}}},
        {"KLOT_Z_210729123848_low_Z_210729123848.webp",
         {{"KLOT", "Z", "210729123848", "low_Z_210729123848"}}},
        {"KLOT_Z_2107291238.png", {}},
        {"KLOT_210729123848.png", {}},
        {"KLOT_Z_210729123848.png.part", {}},
        {"KLOT_Z_210729123848_.png", {}},
        {"index.html", {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fileName);
        const auto name = PictureName::parse(QString::fromLatin1(row.fileName));
        ASSERT_EQ(name.has_value(), row.parts.has_value());
        if (name) {
            EXPECT_EQ(name->site, QLatin1String((*row.parts)[0]));
            EXPECT_EQ(name->configuration, QLatin1String((*row.parts)[1]));
            EXPECT_EQ(name->time, QLatin1String((*row.parts)[2]));
            EXPECT_EQ(name->view, QLatin1String((*row.parts)[3]));
        }
    }
}

TEST(PictureCatalogue, HoldsTheSeriesOfAFolder) {
    const QTemporaryDir folder;
    const auto write = [&](const char* name, int second) {
        const QString path = folder.filePath(QString::fromUtf8(name));
        writeFile(path, "picture");
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(
            file.setFileTime(QDateTime::fromSecsSinceEpoch(1000 + second), QFile::FileModificationTime));
    };
    write("B_Z_210729124000.png", 0);
    write("B_Z_210729123000.png", 5);
    write("B_Z_210729123000.tiff", 4);
    write("B_Z_210729125000.tiff", 7);
    write("A_Z_210729123000.png", 0);
    write("A_Z_210729123000_low.png", 0);
    write(".B_Z_210729129000.png", 0);
    write("notes.txt", 0);

    PictureCatalogue catalogue(folder.path());
    EXPECT_TRUE(catalogue.getError().isEmpty());
    const auto& series = catalogue.getSeries();
    ASSERT_EQ(series.size(), 3U);
    EXPECT_EQ(series[0].site + series[0].view, "A");
    EXPECT_EQ(series[1].site + series[1].view, "Alow");
    EXPECT_NE(series[0].id(), series[1].id());
    ASSERT_EQ(series[2].pictures.size(), 3U);
    EXPECT_EQ(series[2].pictures[0].fileName, "B_Z_210729123000.png") << "the later written one counts";
    EXPECT_EQ(series[2].pictures[0].stamp, 1005000);
    catalogue.keepNewest(2);
    ASSERT_EQ(series[2].pictures.size(), 2U);
    EXPECT_EQ(series[2].pictures[0].time, "210729124000");

    EXPECT_FALSE(PictureCatalogue(folder.filePath("none")).getError().isEmpty());
}
