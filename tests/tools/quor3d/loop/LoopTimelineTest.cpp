// SPDX-License-Identifier: MIT
#include "LoopTimeline.h"

#include <gtest/gtest.h>

TEST(LoopTimeline, HasAFrameForEachStep) {
    struct Row {
        const char* name;
        std::vector<const char*> times; // hour, minute, second
        int wanted;
        int step;
        const char* frames; // a letter for each picture
        int held;
        int leftOut;
    };
    const std::vector<Row> rows{
        {"even", {"120000", "120500", "121000"}, 0, 300, "abc", 0, 0},
        {"jitter", {"120000", "120458", "121003", "121501"}, 0, 298, "abcd", 0, 0},
        {"one missing", {"120000", "120500", "121500", "122000"}, 0, 300, "abbcd", 1, 0},
        {"two within a step", {"120000", "120500", "120600", "121000"}, 300, 300, "acd", 0, 0},
        {"coarser", {"120000", "120500", "121000", "121500", "122000"}, 600, 600, "ace", 0, 0},
        {"a night", {"000000", "000500", "001000", "060000"}, 0, 300, "abcccccccccccccd", 12, 57},
        {"one", {"120000"}, 0, 1, "a", 0, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<CataloguedPicture> pictures;
        for (const char* time : row.times) {
            pictures.push_back(
                {QStringLiteral("210511") + time, QString(QChar(char('a' + pictures.size()))), 0});
        }
        const LoopTimeline timeline(pictures, row.wanted);
        EXPECT_EQ(timeline.getFrames().join(QString()).toStdString(), row.frames);
        EXPECT_EQ(timeline.getStep(), row.step);
        EXPECT_EQ(timeline.getHeld(), row.held);
        EXPECT_EQ(timeline.getLeftOut(), row.leftOut);
    }
}
