// SPDX-License-Identifier: MIT
#include "QUORArrivalQueue.h"

#include <gtest/gtest.h>

namespace {

QDateTime at(int minute) {
    return QDateTime({2024, 6, 1}, {12, minute}, Qt::UTC);
}

QUORArrival arrival(const char* series, const QDateTime& time) {
    QUORArrival result;
    result.series = QString::fromLatin1(series);
    result.time = time;
    result.path = result.series + QString::number(time.time().minute());
    return result;
}

/// Draws all and says in which order.
QStringList drain(QUORArrivalQueue& queue) {
    QStringList order;
    while (!queue.isEmpty()) {
        const auto live = queue.takeLive();
        const QUORArrival next = live ? *live : queue.takeFirst().value();
        queue.noteDrawn(next.series, next.time);
        order.append((live ? QStringLiteral("!") : QString()) + next.path);
    }
    return order;
}

} // namespace

TEST(QUORArrivalQueueTest, TheNewestOfASeriesGoesFirstAndAllOthersInTheirOrder) {
    const QDateTime tomorrow = QDateTime::currentDateTimeUtc().addDays(1);
    const struct {
        const char* name;
        QList<QUORArrival> arrivals;
        QStringList order;
    } rows[] = {
        {"an archive before a live volume",
         {arrival("A", at(1)), arrival("A", at(2)), arrival("A", at(3)), arrival("A", at(9))},
         {"!A9", "A1", "A2", "A3"}},
        {"two sites", {arrival("A", at(1)), arrival("B", at(4)), arrival("A", at(2))}, {"!B4", "!A2", "A1"}},
        {"equal times",
         {arrival("A", at(3)), arrival("B", at(3)), arrival("A", at(3))},
         {"!A3", "!B3", "A3"}},
        {"older than what was drawn before", {arrival("D", at(5)), arrival("D", at(4))}, {"D5", "D4"}},
        {"a clock that is wrong",
         {arrival("A", at(1)), arrival("A", tomorrow)},
         {"!A1", "A" + QString::number(tomorrow.time().minute())}},
        {"no time", {arrival("A", {}), arrival("A", at(1)), arrival("", at(2))}, {"!A1", "A-1", "2"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QUORArrivalQueue queue;
        queue.noteDrawn(QStringLiteral("D"), at(30));
        queue.noteDrawn(QStringLiteral("A"), tomorrow);
        for (const QUORArrival& next : row.arrivals) {
            queue.append(next);
        }
        EXPECT_EQ(drain(queue), row.order) << drain(queue).join(' ').toStdString();
    }
}

TEST(QUORArrivalQueueTest, AVolumeThatComesDuringAnArchiveWaitsForNoOther) {
    QUORArrivalQueue queue;
    for (int i = 0; i < 500; ++i) {
        queue.append(arrival("A", at(0).addSecs(-60 * (500 - i))));
    }
    for (int i = 0; i < 5; ++i) {
        const auto live = queue.takeLive();
        const QUORArrival next = live ? *live : queue.takeFirst().value();
        queue.noteDrawn(next.series, next.time);
        EXPECT_EQ(bool(live), i == 0);
    }
    queue.append(arrival("A", at(1)));
    EXPECT_EQ(queue.takeLive().value().path, QStringLiteral("A1"));
    // Not drawn, for want of its 2D product: it is not newer than anything that was.
    queue.append(arrival("A", at(0)));
    EXPECT_TRUE(queue.takeLive());
}
