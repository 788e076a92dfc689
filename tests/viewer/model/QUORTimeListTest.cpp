// SPDX-License-Identifier: MIT
#include "QUORTimeList.h"

#include "TestProduct.h"
#include "WaitUntil.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class QUORTimeListTest : public testing::Test {
protected:
    QUORTimeListTest() {
        for (const char* name : {"3d", "2d"}) {
            QDir().mkpath(_folder.filePath(QLatin1String(name)));
        }
        QObject::connect(&list, &QUORTimeList::currentChanged, [this] { ++changes; });
    }

    QString write(int minutes, TestProduct product = {}) const {
        product.time = product.time.addSecs(60 * minutes);
        return product.write(_folder.filePath(QStringLiteral("3d")));
    }
    static TestProduct velocity() {
        TestProduct product;
        product.type = SampleProduct::Velocity8;
        return product;
    }
    void open() {
        list.open(_folder.filePath(QStringLiteral("3d")), _folder.filePath(QStringLiteral("2d")), {},
                  _folder.filePath(QStringLiteral("cache")));
    }
    /// Minutes of the current product; -1 without one.
    int minutes() const {
        return list.getCurrent() ? list.getCurrent()->getFile()->getDataTime().time().minute() : -1;
    }

    QTemporaryDir _folder;
    QUORTimeList list;
    int changes = 0;
};

TEST_F(QUORTimeListTest, ChoosesAmongSeriesAndTimes) {
    for (const int time : {10, 0, 20}) {
        write(time);
    }
    write(12, velocity());
    open();
    EXPECT_EQ(list.getSites(), QStringList{"TEST"});
    EXPECT_EQ(list.getConfigurations(QStringLiteral("TEST")), (QStringList{"V", "Z"}));
    EXPECT_EQ(list.getTimes().size(), 3);
    EXPECT_EQ(minutes(), 20); // the newest of the usual quantity
    list.step(1);
    EXPECT_EQ(minutes(), 0);
    list.step(-2);
    EXPECT_EQ(minutes(), 10);
    EXPECT_EQ(list.getNeighbour(1), list.getTimes().at(2));
    list.choose(QStringLiteral("TEST"), QStringLiteral("V"));
    EXPECT_EQ(minutes(), 12);
    EXPECT_EQ(list.getNeighbour(1), nullptr);
    list.choose(QStringLiteral("TEST"), QStringLiteral("Z"));
    EXPECT_EQ(minutes(), 10); // the nearest
    list.choose(7);
    EXPECT_EQ(minutes(), 10);
}

TEST_F(QUORTimeListTest, FindsAFile) {
    write(0);
    const QString wanted = write(5, velocity());
    open();
    EXPECT_TRUE(list.chooseFile(wanted));
    EXPECT_EQ(list.getConfiguration(), QStringLiteral("V"));
    EXPECT_EQ(minutes(), 5);
    EXPECT_FALSE(list.chooseFile(QStringLiteral("/nowhere/CAZ1.cap")));
    EXPECT_EQ(minutes(), 5);
}

TEST_F(QUORTimeListTest, FollowsTheNewest) {
    write(0);
    write(10);
    open();
    write(20);
    ASSERT_TRUE(waitUntil([&] { return list.getTimes().size() == 3; }));
    EXPECT_EQ(minutes(), 10); // nobody asked for the new one
    list.setFollowing(true);
    EXPECT_EQ(minutes(), 20);
    write(30);
    EXPECT_TRUE(waitUntil([&] { return minutes() == 30; }));
    list.step(-1);
    EXPECT_FALSE(list.isFollowing());
    write(40);
    ASSERT_TRUE(waitUntil([&] { return list.getTimes().size() == 5; }));
    EXPECT_EQ(minutes(), 20);
}

TEST_F(QUORTimeListTest, KeepsItsPlaceWhenFilesGo) {
    const QString first = write(0);
    const QString second = write(10);
    write(20);
    open();
    list.choose(1);
    changes = 0;
    QFile::remove(first);
    ASSERT_TRUE(waitUntil([&] { return list.getTimes().size() == 2; }));
    EXPECT_EQ(minutes(), 10);
    EXPECT_EQ(changes, 0);
    QFile::remove(second);
    ASSERT_TRUE(waitUntil([&] { return list.getTimes().size() == 1; }));
    EXPECT_EQ(minutes(), 20);
}

TEST_F(QUORTimeListTest, StartsEmptyAndShowsWhatComes) {
    open();
    EXPECT_EQ(list.getCurrent(), nullptr);
    list.step(1);
    list.setFollowing(true);
    write(0);
    EXPECT_TRUE(waitUntil([&] { return minutes() == 0; }));
}

} // namespace
