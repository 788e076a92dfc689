// SPDX-License-Identifier: MIT
#include "LogCapture.h"
#include "QUOR2DTop.h"
#include "QUOR3DTop.h"
#include "QUORDirectoryListing.h"
#include "TestFiles.h"
#include "TestProduct.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

class QUORDirectoryTest : public testing::Test {
protected:
    /// Writes a volume and returns its name. The prefix keeps names of different sites apart.
    QString write(const char* site, const QTime& time, int dataType = 2, const char* prefix = "CAZ") const {
        TestProduct product;
        product.site = site;
        product.time.setTime(time);
        product.type = dataType;
        product.prefix = QLatin1String(prefix);
        product.write(_dir.path());
        return product.fileName();
    }
    QString writeFlat(const char* site, const QTime& time) const {
        TestProduct product = TestProduct::sri();
        product.site = site;
        product.time.setTime(time);
        product.write(_dir.path());
        return product.fileName();
    }
    QString path() const { return _dir.path(); }
    static QDateTime at(int hour, int minute, int second = 0) {
        return QDateTime({2024, 6, 1}, {hour, minute, second}, Qt::UTC);
    }
    static QStringList keys(const QUORDirTop::Leaves& leaves) { return leaves.keys(); }

    const QString _any = QStringLiteral("*");
    QTemporaryDir _dir;
};

} // namespace

TEST_F(QUORDirectoryTest, TakesInWhatBelongsIntoTheTree) {
    const QUOR3DTop volumes(path());
    QUOR3DTop top(path());
    QUOR2DTop flat(path());
    const QString good = write("A", {12, 0});
    TestProduct twoBytes;
    twoBytes.site = "A";
    twoBytes.type = 9;
    twoBytes.prefix = QStringLiteral("CAB");
    const QString sri = writeFlat("A", {12, 0});
    TestProduct vil;
    vil.code = 10;
    TestProduct half;
    half.totalSize = 10000;
    half.prefix = QStringLiteral("HAF");
    writeFile(path() + QStringLiteral("/empty"), {});
    writeFile(path() + QStringLiteral("/text"), QByteArray(1000, 'x'));
    const struct {
        QString name;
        QUORDirTop::Result volumeResult;
        QUORDirTop::Result flatResult;
        const char* message;
    } rows[] = {
        {good, QUORDirTop::ResultOk, QUORDirTop::ResultWrongType,
         "Adding to directory file A.CAPPI.Z.240601120000"},
        {good, QUORDirTop::ResultDuplicate, QUORDirTop::ResultWrongType,
         "NOT ADDED: DATA FILE IS DUPLICATE "},
        {QFileInfo(twoBytes.write(path())).fileName(), QUORDirTop::ResultDuplicate,
         QUORDirTop::ResultWrongType, "NOT ADDED: DATA FILE IS DUPLICATE "},
        {sri, QUORDirTop::ResultWrongType, QUORDirTop::ResultOk, "NOT ADDED: DATA FILE OF WRONG TYPE "},
        {QFileInfo(vil.write(path())).fileName(), QUORDirTop::ResultWrongType, QUORDirTop::ResultWrongType,
         "NOT ADDED: DATA FILE OF WRONG TYPE "},
        {QFileInfo(half.write(path())).fileName(), QUORDirTop::ResultIncomplete, QUORDirTop::ResultIncomplete,
         "NOT ADDED: INCOMPLETE "},
        {QStringLiteral("empty"), QUORDirTop::ResultNoData, QUORDirTop::ResultNoData, "NOT ADDED: NO DATA "},
        {QStringLiteral("text"), QUORDirTop::ResultInvalid, QUORDirTop::ResultInvalid, "NOT ADDED: INVALID "},
        {QStringLiteral("missing"), QUORDirTop::ResultInvalid, QUORDirTop::ResultInvalid,
         "NOT ADDED: INVALID "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(qPrintable(row.name));
        const LogCapture log;
        EXPECT_EQ(top.addFile(row.name), row.volumeResult);
        EXPECT_TRUE(log.contains(QLatin1String(row.message)));
        EXPECT_EQ(flat.addFile(path() + QLatin1Char('/') + row.name), row.flatResult);
    }
    EXPECT_EQ(top.listSites(), QStringList{QStringLiteral("A")});
    EXPECT_TRUE(volumes.listSites().isEmpty());
    EXPECT_EQ(QUOR3DTop(path()).findLeaves(_any, _any, _any, _any).size(), 1);
    EXPECT_EQ(QUOR2DTop(path()).findLeaves(_any, _any, _any, _any).size(), 1);
}

TEST_F(QUORDirectoryTest, RemovesEmptyLevelsAndLetsGoOfLeaves) {
    const QString first = write("A", {12, 0});
    const QString second = write("B", {12, 0}, 2, "CBZ");
    QUORFileLeaf::Ptr held;
    {
        QUOR3DTop top(path());
        held = top.findLeaf(second);
        ASSERT_TRUE(held);
        const LogCapture log;
        EXPECT_EQ(top.removeFile(first), QUORDirTop::ResultOk);
        EXPECT_TRUE(log.contains(QStringLiteral("D: REMOVING ") + first));
        EXPECT_EQ(top.removeFile(first), QUORDirTop::ResultInvalid);
        EXPECT_TRUE(log.contains(QStringLiteral("D: NOTHING TO REMOVE ") + first));
        EXPECT_EQ(top.listSites(), QStringList{QStringLiteral("B")});
        EXPECT_FALSE(top.findLeaf(first));
        EXPECT_NE(held->getParent(), nullptr);
        EXPECT_EQ(top.removeFile(second), QUORDirTop::ResultOk);
        EXPECT_TRUE(top.getChildren().isEmpty());
        EXPECT_EQ(held->getParent(), nullptr);
        EXPECT_EQ(top.addFile(second), QUORDirTop::ResultOk);
        held = top.findLeaf(second);
    }
    EXPECT_EQ(held->getParent(), nullptr);
    EXPECT_EQ(held->getKey(), QStringLiteral("B/CAPPI/Z/240601120000"));
    EXPECT_TRUE(held->isValid());
}

TEST_F(QUORDirectoryTest, PatternsMatchWholeNamesWithoutCase) {
    const struct {
        const char* site;
        const char* prefix;
    } sites[] = {{"AB1", "CAA"}, {"ab2", "CAB"}, {"xab", "CAC"}, {"a_b", "CAD"}};
    for (const auto& site : sites) {
        write(site.site, {12, 0}, 2, site.prefix);
    }
    const QUOR3DTop top(path());
    const struct {
        const char* pattern;
        QStringList found;
    } rows[] = {
        {"ab*", {QStringLiteral("AB1"), QStringLiteral("AB2")}},
        {"AB?", {QStringLiteral("AB1"), QStringLiteral("AB2")}},
        {"?ab", {QStringLiteral("XAB")}},
        {"*a*b*",
         {QStringLiteral("AB1"), QStringLiteral("AB2"), QStringLiteral("A_B"), QStringLiteral("XAB")}},
        {"ab", {}},
        {"*b", {QStringLiteral("A_B"), QStringLiteral("XAB")}},
        {"", {}},
        {"a.1", {}},
    };
    for (const auto& row : rows) {
        QStringList found;
        for (const auto& leaf :
             top.findLeaves(QLatin1String(row.pattern), _any, _any, QStringLiteral("24*"))) {
            found.append(leaf->getSite());
        }
        EXPECT_EQ(found, row.found) << row.pattern;
    }
}

TEST_F(QUORDirectoryTest, ResultsFollowTheJoinedKey) {
    write("AB", {12, 0}, 2, "CAA");
    write("AB C", {12, 0}, 2, "CAB");
    const QUOR3DTop top(path());
    EXPECT_EQ(top.listSites(), QStringList({QStringLiteral("AB"), QStringLiteral("AB C")}));
    EXPECT_EQ(keys(top.findLeaves(_any, _any, _any, at(12, 0), 60)),
              QStringList(
                  {QStringLiteral("AB C/CAPPI/Z/240601120000"), QStringLiteral("AB/CAPPI/Z/240601120000")}));
}

TEST_F(QUORDirectoryTest, TimeWindowsIncludeBothEnds) {
    write("A", {11, 54, 59});
    write("A", {11, 55, 0});
    write("A", {12, 0, 0});
    write("A", {12, 5, 0});
    write("A", {12, 5, 1});
    const QUOR3DTop top(path());
    const struct {
        int window;
        int count;
    } rows[] = {{601, 3}, {600, 3}, {599, 1}, {602, 5}, {0, 1}, {1, 1}, {-600, 0}};
    for (const auto& row : rows) {
        EXPECT_EQ(top.findLeaves(_any, _any, _any, at(12, 0), row.window).size(), row.count) << row.window;
    }
    EXPECT_TRUE(top.findLeaves(_any, _any, _any, QDateTime(), 600).isEmpty());
}

TEST_F(QUORDirectoryTest, ClosestMatchPrefersTheFirstOfEqualOnes) {
    write("A", {12, 0});
    write("A", {12, 10});
    TestProduct impossible;
    impossible.site = "A";
    impossible.time = QDateTime();
    impossible.prefix = QStringLiteral("0000BAD");
    impossible.write(path());
    const QUOR3DTop top(path());
    const QUORDirTop::Leaves leaves = top.findLeaves(_any, _any, _any, _any);
    ASSERT_EQ(leaves.size(), 3);
    const auto closest = [&leaves](const QDateTime& t) {
        return QUORDirTop::findClosestMatch(leaves, t)->getFile()->getDataTime();
    };
    EXPECT_EQ(closest(at(12, 5)), at(12, 0));
    EXPECT_EQ(closest(at(12, 5, 1)), at(12, 10));
    EXPECT_EQ(closest(at(12, 4, 59)), at(12, 0));
    EXPECT_EQ(closest(at(23, 0)), at(12, 10));
    EXPECT_EQ(top.findLeaves(_any, _any, _any, at(12, 5), 1000).size(), 2);
}

TEST_F(QUORDirectoryTest, FindsTheMatchingFilesOfBothTrees) {
    const QString volume = write("S*", {12, 0});
    const QString velocity = write("S*", {12, 2}, 3, "CAV");
    write("SX", {12, 0}, 2, "CAX");
    const QString early = writeFlat("S*", {11, 56});
    const QString late = writeFlat("S*", {12, 3});
    writeFlat("SX", {12, 0, 1});
    const QUOR3DTop top3d(path());
    const QUOR2DTop top2d(path());
    const QUORFileLeaf::Ptr leaf = top3d.findLeaf(volume);
    const QUORFileLeaf::Ptr leaf2d = top2d.findLeaf(late);
    const QString sri = QStringLiteral("SRI");
    EXPECT_EQ(top2d.findBestMatching2DFile(leaf, sri, 600), leaf2d);
    EXPECT_EQ(top2d.findBestMatching2DFile(leaf, sri, 300), nullptr);
    EXPECT_EQ(top2d.findBestMatching2DFile(leaf, QStringLiteral("VIL"), 600), nullptr);
    EXPECT_EQ(top3d.findBestMatching3DFile(leaf, QStringLiteral("V"), 240), top3d.findLeaf(velocity));
    EXPECT_EQ(top3d.findBestMatching3DFile(leaf, QStringLiteral("V"), 238), nullptr);
    EXPECT_EQ(top3d.find3DFileMatching2DFile(leaf2d, QStringLiteral("Z"), 360), leaf);
    EXPECT_EQ(top3d.find3DFileMatching2DFile(top2d.findLeaf(early), _any, 600), leaf);
    EXPECT_EQ(top3d.findAllMatchingProducts(leaf2d, 600, true),
              QStringList({QStringLiteral("CAPPI - V"), QStringLiteral("CAPPI - Z")}));
    EXPECT_EQ(top3d.listProductsForSite(QStringLiteral("s*"), false), QStringList{QStringLiteral("CAPPI")});
}

TEST_F(QUORDirectoryTest, ListsRegularVisibleReadableNames) {
    for (const char* name : {"b", "a", ".hidden", "caf\xe9", "z\xc3\xa4"}) {
        const std::string file = path().toStdString() + "/" + name;
        ::close(::creat(file.c_str(), 0644));
    }
    QDir(path()).mkdir(QStringLiteral("folder"));
    QFile::link(path() + QStringLiteral("/a"), path() + QStringLiteral("/link"));
    ::mkfifo(qPrintable(path() + QStringLiteral("/pipe")), 0600);
    const QUORDirectoryListing listing(path());
    EXPECT_TRUE(listing.isComplete());
    EXPECT_EQ(listing.getNames(),
              QStringList({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral(u"z\u00e4")}));
    EXPECT_EQ(listing.getUnreadableNames(), 1);
    EXPECT_TRUE(QUORDirectoryListing(path() + QStringLiteral("/none")).isGone());
    EXPECT_TRUE(QUORDirectoryListing(path() + QStringLiteral("/a")).isGone());
    EXPECT_TRUE(QUORDirectoryListing(QString()).isGone());
    const QUORDirectoryListing tooLong(path() + QLatin1Char('/') + QString(300, QLatin1Char('x')));
    EXPECT_FALSE(tooLong.isComplete() || tooLong.isGone());
    ::unlink((path().toStdString() + "/caf\xe9").c_str());
}

TEST_F(QUORDirectoryTest, SearchesRunWhileTheTreeChanges) {
    const QString stays = write("A", {12, 0});
    QStringList names;
    for (int i = 0; i < 20; ++i) {
        names << write("B", {13, i}, 2, "CBZ");
    }
    QUOR3DTop top(path());
    std::atomic<bool> running{true};
    const auto search = [&] {
        while (running) {
            const QUORFileLeaf::Ptr leaf = top.findLeaf(stays);
            EXPECT_TRUE(leaf && top.findBestMatching3DFile(leaf, _any, 600) == leaf);
            for (const auto& found : top.findLeaves(_any, _any, _any, _any)) {
                EXPECT_FALSE(found->getPath().isEmpty());
                found->getParent();
            }
        }
    };
    std::thread searchers[] = {std::thread(search), std::thread(search)};
    for (int i = 0; i < 400; ++i) {
        EXPECT_EQ(top.removeFile(names[i % 20]), QUORDirTop::ResultOk);
        EXPECT_EQ(top.addFile(names[i % 20]), QUORDirTop::ResultOk);
    }
    running = false;
    for (std::thread& searcher : searchers) {
        searcher.join();
    }
}
