// SPDX-License-Identifier: MIT
#include "QUORLandmarkList.h"

#include "LandmarkWriter.h"
#include "LogCapture.h"
#include "ScratchHome.h"

#include <gmock/gmock.h>

namespace {

const QString FILE_NAME = QStringLiteral("QUOR3DLandmarks.conf");

QString entry(int number, const QString& values) {
    QString text;
    for (const QString& value : values.split(QLatin1Char('|'))) {
        text += QStringLiteral("landmarks\\%1\\").arg(number) + value + QLatin1Char('\n');
    }
    return text;
}

QString file(const QString& size, const QStringList& entries) {
    QString text = QStringLiteral("[LANDMARKS]\nlandmarks\\size=") + size + QLatin1Char('\n');
    for (qsizetype i = 0; i < entries.size(); ++i) {
        text += entry(int(i) + 1, entries[i]);
    }
    return text;
}

QStringList labels(const QVector<QUORLandmark::Ptr>& landmarks) {
    QStringList result;
    for (const QUORLandmark::Ptr& landmark : landmarks) {
        result.append(landmark->getLabel());
    }
    return result;
}

class LandmarkList : public testing::Test {
protected:
    ~LandmarkList() override { ScratchHome::removeSettings(FILE_NAME); }
    LogCapture _log;
};

TEST_F(LandmarkList, keepsValidEntriesInFileOrder) {
    ScratchHome::writeSettings(
        FILE_NAME,
        file("13",
             {"label=Åsvik|priority=9|location\\lat=59.5|location\\lon=10.25|location\\alt=120|"
              "color\\r=1|color\\g=0.5|color\\b=2",
              "label=Pole|location\\lat=90|location\\lon=-180",
              "label=Beyond|location\\lat=90.0001|location\\lon=0", "location\\lat=1|location\\lon=1",
              "label=Nowhere|location\\lat=1", "label=Far|location\\lat=1|location\\lon=180.5",
              "label=Comma|location\\lat=41,5|location\\lon=1",
              "label=Text|location\\lat=north|location\\lon=1", "label=NaN|location\\lat=nan|location\\lon=1",
              "label=Orm, the old|location\\lat=1|location\\lon=2",
              "label=Minus|priority=-1|location\\lat=1|location\\lon=2",
              "label=Odd|priority=high|location\\lat=1|location\\lon=2",
              "label=Huge|priority=4294967295|location\\lat=1|location\\lon=2"}));
    const QUORLandmarkList list;
    const QVector<QUORLandmark::Ptr>& landmarks = list.getLandmarks();
    ASSERT_EQ(labels(landmarks), QStringList({"Åsvik", "Pole", "Orm,the old", "Minus", "Odd", "Huge"}));
    EXPECT_EQ(landmarks[0]->getLocation(), QUORCoordinate(59.5, 10.25));
    EXPECT_EQ(landmarks[0]->getAlt(), 120.0);
    EXPECT_EQ(landmarks[0]->getR(), 1.0);
    EXPECT_EQ(landmarks[0]->getG(), 0.5);
    EXPECT_EQ(landmarks[0]->getB(), 2.0);
    EXPECT_EQ(landmarks[1]->getLocation(), QUORCoordinate(90.0, -180.0));
    std::vector<unsigned> priorities;
    for (const QUORLandmark::Ptr& landmark : landmarks) {
        priorities.push_back(landmark->getPriority());
    }
    EXPECT_THAT(priorities, testing::ElementsAre(5, 1, 1, 5, 0, 5));
}

TEST_F(LandmarkList, iteratesOverWhatTheFileHolds) {
    struct Row {
        const char* name;
        QString text;
        QStringList labels;
    };
    const QString town = QStringLiteral("|location\\lat=1|location\\lon=2");
    for (const Row& row :
         {Row{"no file", {}, {}}, Row{"no entries", "[LANDMARKS]\nlandmarks\\size=0\n", {}},
          Row{"no size", "[LANDMARKS]\n" + entry(1, "label=A" + town), {}},
          Row{"a size beyond all memory",
              file("2147483647", {"label=A" + town}) + entry(2000000000, "label=Z" + town),
              {"A", "Z"}},
          Row{"a smaller size", file("1", {"label=A" + town, "label=B" + town}), {"A"}},
          Row{"a negative size", file("-5", {"label=A" + town}), {}},
          Row{"a gap", file("3", {"label=A" + town}) + entry(3, "label=C" + town), {"A", "C"}},
          Row{"no numbers", "[LANDMARKS]\nlandmarks\\size=2\nlandmarks\\x\\label=A\n", {}},
          Row{"rubbish", "\x01\x02[[[\n=\n", {}}}) {
        ScratchHome::writeSettings(FILE_NAME, row.text);
        EXPECT_EQ(labels(QUORLandmarkList().getLandmarks()), row.labels) << row.name;
    }
}

TEST_F(LandmarkList, selectsAnAreaWithItsBounds) {
    QStringList entries;
    const std::pair<double, double> places[] = {{40, 0},     {42, 3},   {41, 1},   {39.999, 1},
                                                {41, 3.001}, {41, 179}, {41, -179}};
    for (const auto& [lat, lon] : places) {
        entries.append(QStringLiteral("label=%1/%2|location\\lat=%1|location\\lon=%2").arg(lat).arg(lon));
    }
    ScratchHome::writeSettings(FILE_NAME, file(QString::number(entries.size()), entries));
    auto list = std::make_unique<QUORLandmarkList>();
    const QUORLandmarkSet::Ptr set = list->getLandmarkSet({9.0, 8.0}, {40.0, 0.0}, {42.0, 3.0});
    const QUORLandmarkSet::Ptr again = list->getLandmarkSet({9.0, 8.0}, {40.0, 0.0}, {42.0, 3.0});
    const QUORLandmarkSet::Ptr dateLine = list->getLandmarkSet({}, {40.0, 178.0}, {42.0, -178.0});
    list.reset();
    EXPECT_EQ(labels(set->getLandmarks()), QStringList({"40/0", "42/3", "41/1"}));
    EXPECT_EQ(again->getLandmarks(), set->getLandmarks());
    EXPECT_EQ(labels(dateLine->getLandmarks()), QStringList({"41/179", "41/-179"}));
    EXPECT_EQ(set->getCentre(), QUORCoordinate(9.0, 8.0));
    EXPECT_EQ(set->getUpperBound(), QUORCoordinate(42.0, 3.0));
}

TEST_F(LandmarkList, readsWhatTheSampleToolWrites) {
    const auto towns = LandmarkWriter::makeTowns(3, 42.0, 1.5);
    ASSERT_GE(towns.size(), 5U);
    ScratchHome::writeSettings(
        FILE_NAME,
        LandmarkWriter::toText(towns).replace(QStringLiteral("size=%1").arg(towns.size()), "size=99") +
            entry(99, "label=\"A;b \\\"c\\\" \\\\d, =e\"|location\\lat=1|location\\lon=2"));
    const QUORLandmarkList list;
    ASSERT_EQ(list.getLandmarks().size(), qsizetype(towns.size()) + 1);
    EXPECT_EQ(list.getLandmarks().last()->getLabel(), QStringLiteral("A;b \"c\" \\d, =e"));
}

} // namespace
