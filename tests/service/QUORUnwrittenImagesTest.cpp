// SPDX-License-Identifier: MIT
#include "QUORUnwrittenImages.h"

#include "LogCapture.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

QUORArrival product(int minute) {
    QUORArrival result;
    result.key = QStringLiteral("TEST/CAPPI/Z/%1").arg(minute);
    result.time = QDateTime({2024, 6, 1}, {12, 0}, Qt::UTC).addSecs(60 * minute);
    return result;
}

} // namespace

TEST(QUORUnwrittenImagesTest, TheNewestIsDueFirstAndEachFailureDoublesItsPause) {
    const auto start = QUORUnwrittenImages::Clock::now();
    QUORUnwrittenImages images;
    EXPECT_EQ(images.getNextTime(), QUORUnwrittenImages::Clock::time_point::max());
    for (const int minute : {1, 3, 2}) {
        images.add(product(minute), start);
    }
    EXPECT_EQ(images.getNextTime(), start + 5s);
    EXPECT_FALSE(images.findDue(start + 4s));
    EXPECT_EQ(images.findDue(start + 5s)->key, product(3).key);
    images.postpone(start + 5s);
    EXPECT_FALSE(images.findDue(start + 9s));
    EXPECT_EQ(images.getNextTime(), start + 10s);
    // One that fails by itself does not hold up the others.
    images.add(product(3), start + 10s);
    EXPECT_EQ(images.findDue(start + 10s)->key, product(2).key);
    images.remove(product(2).key);
    images.remove(product(1).key);
    EXPECT_EQ(images.getNextTime(), start + 20s);
    for (int i = 0; i < 10; ++i) {
        images.add(product(3), start);
    }
    EXPECT_EQ(images.getNextTime(), start + 300s);
    EXPECT_EQ(images.getCount(), 1);
}

TEST(QUORUnwrittenImagesTest, OfTooManyTheOldestAreGivenUpWithOneLine) {
    const LogCapture log;
    QUORUnwrittenImages images;
    for (int minute = 0; minute < QUORUnwrittenImages::MOST + 10; ++minute) {
        images.add(product(minute));
    }
    EXPECT_EQ(images.getCount(), QUORUnwrittenImages::MOST);
    EXPECT_EQ(log.count(QStringLiteral("E: More than 1000 images could not be written: ")), 1);
    for (int minute = 0; minute < 10; ++minute) {
        images.remove(product(minute).key);
    }
    EXPECT_EQ(images.getCount(), QUORUnwrittenImages::MOST) << "those were given up";
}
