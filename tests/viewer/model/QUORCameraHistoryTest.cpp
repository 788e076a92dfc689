// SPDX-License-Identifier: MIT
#include "QUORCameraHistory.h"

#include <gtest/gtest.h>

namespace {

QUORCameraHistory::View at(double x) {
    return {{x, 0.0, 5000.0}, {0.0, 0.8, -0.6}};
}

TEST(QUORCameraHistoryTest, GoesBackAndOn) {
    QUORCameraHistory history;
    EXPECT_FALSE(history.canUndo());
    history.add(at(0));
    history.add(at(100));
    history.add(at(100.2)); // the same place
    history.add(at(200));
    EXPECT_EQ(history.undo().position.x, 100);
    EXPECT_EQ(history.undo().position.x, 0);
    EXPECT_FALSE(history.canUndo());
    EXPECT_EQ(history.redo().position.x, 100);
    history.add(at(300)); // 200 is nobody's any more
    EXPECT_FALSE(history.canRedo());
    EXPECT_EQ(history.undo().position.x, 100);
}

TEST(QUORCameraHistoryTest, ForgetsTheOldest) {
    QUORCameraHistory history;
    for (int i = 0; i < 1000; ++i) {
        history.add(at(100.0 * i));
    }
    int count = 0;
    double oldest = 0.0;
    for (; history.canUndo(); ++count) {
        oldest = history.undo().position.x;
    }
    EXPECT_EQ(count, 199);
    EXPECT_EQ(oldest, 80000.0);
}

} // namespace
