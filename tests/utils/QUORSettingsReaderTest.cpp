// SPDX-License-Identifier: MIT
#include "QUORSettingsReader.h"

#include "LogCapture.h"
#include "QUORSettingsWriter.h"
#include "ScratchHome.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QThread>

#include <sys/stat.h>

namespace {

TEST(QUORSettingsReaderTest, ReadsHandWrittenValues) {
    enum Type { Bool, Int, Double, Text };
    const struct {
        const char* name;
        const char* written;
        Type type;
        const char* expected;
        bool warns;
    } rows[] = {
        {"yes", "yes", Bool, "1", false},
        {"off", "OFF", Bool, "0", false},
        {"zero", "0", Bool, "0", false},
        {"noBool", "maybe", Bool, "1", true},
        {"emptyBool", "", Bool, "1", true},
        {"int", "-12", Int, "-12", false},
        {"fraction", "180.5", Int, "7", true},
        {"unit", "180s", Int, "7", true},
        {"tooLong", "99999999999", Int, "7", true},
        {"emptyInt", "", Int, "7", true},
        {"double", "2.5", Double, "2.5", false},
        {"decimalComma", "2,5", Double, "0.5", true},
        {"nan", "nan", Double, "0.5", true},
        {"infinite", "inf", Double, "0.5", true},
        {"list", "/data/a,b/c", Text, "/data/a,b/c", false},
        {"quoted", "\"/data/a;b, c\"", Text, "/data/a;b, c", false},
        {"emptyText", "", Text, "", false},
        {"utf8", "Jyväskylä", Text, "Jyväskylä", false},
    };
    QString file = QStringLiteral("[GROUP]\n");
    for (const auto& row : rows) {
        file += QString::fromUtf8(row.name) + QLatin1Char('=') + QString::fromUtf8(row.written) +
                QLatin1Char('\n');
    }
    ScratchHome::writeSettings(QStringLiteral("Values.conf"), file);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const LogCapture log;
        const QString key = QString::fromUtf8(row.name);
        QString value;
        for (int load = 0; load < 2; ++load) {
            QUORSettingsReader reader(QStringLiteral("Values"));
            reader.beginGroup(QStringLiteral("GROUP"));
            value = row.type == Bool     ? QString::number(int(reader.readBool(key, true)))
                    : row.type == Int    ? QString::number(reader.readInt(key, 7))
                    : row.type == Double ? QString::number(reader.readDouble(key, 0.5))
                                         : reader.readText(key, QStringLiteral("default"));
        }
        EXPECT_EQ(value, QString::fromUtf8(row.expected));
        EXPECT_EQ(log.count(QStringLiteral("Values.conf: GROUP/") + key), row.warns ? 1 : 0);
    }
}

TEST(QUORSettingsReaderTest, WarnsAgainWhenAValueTurnsBadAgain) {
    const LogCapture log;
    for (const char* text :
         {"size=big", "size=big", "size=1600", "size=big", "other=1", "size=big", "size=big"}) {
        ScratchHome::writeSettings(QStringLiteral("Again.conf"), QString::fromLatin1(text));
        QUORSettingsReader(QStringLiteral("Again")).readInt(QStringLiteral("size"), 1);
    }
    EXPECT_EQ(log.count(QStringLiteral("size=big is not a whole number, using the default 1")), 3);
}

TEST(QUORSettingsReaderTest, WarnsAgainAboutARivalThatIsBack) {
    const LogCapture log;
    const QString twice = QStringLiteral("[GENERAL]\nkey=a\n[%General]\nkey=b\n");
    for (const QString& text :
         {twice, twice, QStringLiteral("[GENERAL]\nkey=a\n"), twice, QString(), twice}) {
        ScratchHome::writeSettings(QStringLiteral("Rival.conf"), text);
        QUORSettingsReader reader(QStringLiteral("Rival"));
        reader.beginGroup(QStringLiteral("GENERAL"));
        reader.readText(QStringLiteral("key"), {});
    }
    EXPECT_EQ(log.count(QStringLiteral("sets key twice")), 3);
}

TEST(QUORSettingsReaderTest, KeepsNumbersInTheirRange) {
    ScratchHome::writeSettings(QStringLiteral("Ranges.conf"),
                               QStringLiteral("low=-3\nhigh=100000\ngood=12\nopacity=100.5\n"));
    const LogCapture log;
    QUORSettingsReader reader(QStringLiteral("Ranges"));
    EXPECT_EQ(reader.readInt(QStringLiteral("low"), 1600, 1, 16384), 1600);
    EXPECT_EQ(reader.readInt(QStringLiteral("high"), 1600, 1, 16384), 1600);
    EXPECT_EQ(reader.readInt(QStringLiteral("good"), 1600, 1, 16384), 12);
    EXPECT_EQ(reader.readInt(QStringLiteral("missing"), 0, 1, 16384), 0);
    EXPECT_EQ(reader.readIntClamped(QStringLiteral("low"), 4, 1, 10), 1);
    EXPECT_EQ(reader.readDoubleClamped(QStringLiteral("opacity"), 1.0, 0.0, 100.0), 100.0);
    EXPECT_TRUE(log.contains(QStringLiteral("high=100000 is out of range, using 1600")));
}

TEST(QUORSettingsReaderTest, FindsTheGeneralGroupInEveryForm) {
    const struct {
        const char* name;
        const char* text;
        const char* expected;
    } rows[] = {
        {"handWritten", "[GENERAL]\nkey=a\n", "a"},
        {"saved", "[%General]\nkey=b\n", "b"},
        {"withoutGroup", "key=c\n", "c"},
        {"savedAndHandWritten", "[GENERAL]\nkey=a\n[%General]\nkey=b\n", "b"},
        {"otherGroup", "[OTHER]\nkey=d\n", "none"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const LogCapture log;
        ScratchHome::writeSettings(QString::fromLatin1(row.name) + QStringLiteral(".conf"),
                                   QString::fromLatin1(row.text));
        QUORSettingsReader reader(QString::fromLatin1(row.name));
        reader.beginGroup(QStringLiteral("GENERAL"));
        EXPECT_EQ(reader.readText(QStringLiteral("key"), QStringLiteral("none")),
                  QString::fromLatin1(row.expected));
        EXPECT_EQ(log.contains(QStringLiteral("sets key twice")),
                  qstrcmp(row.name, "savedAndHandWritten") == 0);
    }
}

TEST(QUORSettingsReaderTest, TakesAnArrayFromOneFile) {
    ScratchHome::writePackaged(QStringLiteral("Packaged.conf"),
                               QStringLiteral("[%General]\nkey=packaged\nonly=packaged\n[A]\n"
                                              "a\\size=2\na\\1\\x=10\na\\2\\x=20\nb\\size=1\nb\\1\\x=30\n"));
    ScratchHome::writeSettings(
        QStringLiteral("Packaged.conf"),
        QStringLiteral("key=user\n[A]\na\\size=2\na\\1\\x=1\nb\\1\\x=99\nb\\2\\x=99\n"));
    QUORSettingsReader reader(QStringLiteral("Packaged"));
    const QString x = QStringLiteral("x");
    reader.beginGroup(QStringLiteral("GENERAL"));
    EXPECT_EQ(reader.readText(QStringLiteral("key"), {}), QStringLiteral("user"));
    EXPECT_EQ(reader.readText(QStringLiteral("only"), {}), QStringLiteral("packaged"));
    reader.endGroup();
    reader.beginGroup(QStringLiteral("A"));
    EXPECT_EQ(reader.beginReadArray(QStringLiteral("a"), 4), 2);
    reader.setArrayIndex(0);
    EXPECT_EQ(reader.readInt(x, -1), 1);
    reader.setArrayIndex(1);
    EXPECT_EQ(reader.readInt(x, -1), -1) << "an element of another file";
    reader.endArray();
    EXPECT_EQ(reader.beginReadArray(QStringLiteral("b")), 1);
    reader.setArrayIndex(0);
    EXPECT_EQ(reader.readInt(x, -1), 30) << "not the user's, who has no size";
    reader.setArrayIndex(1);
    EXPECT_EQ(reader.readInt(x, -1), -1);
    reader.endArray();
    reader.endGroup();
}

TEST(QUORSettingsReaderTest, BoundsArraysByWhatTheFileHolds) {
    ScratchHome::writeSettings(QStringLiteral("Bounds.conf"),
                               QStringLiteral("huge\\size=2000000000\nhuge\\1\\x=1\nhuge\\3\\x=3\n"
                                              "less\\size=1\nless\\1\\x=1\nless\\2\\x=2\n"
                                              "negative\\size=-5\nnegative\\1\\x=1\n"
                                              "stray\\size=2000000000\nstray\\2000000\\x=1\n"));
    const struct {
        const char* name;
        int held;
        int cut;
    } rows[] = {{"huge", 3, 2}, {"less", 1, 1}, {"negative", 0, 0}, {"missing", 0, 0}, {"stray", 1000, 2}};
    const LogCapture log;
    QUORSettingsReader reader(QStringLiteral("Bounds"));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(reader.beginReadArray(QString::fromLatin1(row.name)), row.held);
        reader.endArray();
        EXPECT_EQ(reader.beginReadArray(QString::fromLatin1(row.name), 2), row.cut);
        reader.endArray();
    }
    EXPECT_EQ(reader.beginReadArray(QStringLiteral("stray")), 1000);
    EXPECT_EQ(reader.getArrayIndexes(), QList<int>{1999999});
    EXPECT_EQ(log.count(QStringLiteral("Bounds.conf: elements of stray beyond number 1000 do not count")), 1);
}

TEST(QUORSettingsReaderTest, WaitsForASaveInPlace) {
    const QString name = QStringLiteral("Saved");
    ScratchHome::writeSettings(name + QStringLiteral(".conf"), QStringLiteral("x=1\n"));
    QFile editor(QUORSettingsReader::findUserFile(name));
    ASSERT_TRUE(editor.open(QIODevice::WriteOnly | QIODevice::Truncate));
    const std::unique_ptr<QThread> saving(QThread::create([&] {
        QThread::msleep(100);
        editor.write("y=2\n");
        editor.flush();
        QThread::msleep(100);
        editor.write("x=3\n");
        editor.close();
    }));
    saving->start();
    EXPECT_EQ(QUORSettingsReader(name).readInt(QStringLiteral("x"), 0), 3);
    saving->wait();
}

TEST(QUORSettingsReaderTest, FallsBackToThePackagedFileAlone) {
    const ScratchHome home;
    ScratchHome::writePackaged(QStringLiteral("Packaged.conf"), QStringLiteral("x=1\n"));
    const QString file = QUORSettingsReader::findUserFile(QStringLiteral("Packaged"));
    QDir().mkpath(ScratchHome::settingsDirectory());
    ASSERT_EQ(::mkfifo(qPrintable(file), 0600), 0);
    QUORSettingsReader reader(QStringLiteral("Packaged"));
    EXPECT_EQ(reader.readInt(QStringLiteral("x"), 0), 1);
    QUORSettingsWriter writer(reader.settings(), QStringLiteral("A"));
    writer.write(QStringLiteral("x"), 2);
    EXPECT_FALSE(writer.commit());
    EXPECT_TRUE(QFile::remove(file));
}

TEST(QUORSettingsReaderTest, TheStampFollowsEveryFileThatCounts) {
    const QString xdg = QFile::decodeName(qgetenv("XDG_CONFIG_DIRS"));
    qputenv("XDG_CONFIG_DIRS", QFile::encodeName(xdg + QStringLiteral("2:") + xdg));
    QString before = QUORSettingsReader::makeStamp(QStringLiteral("Stamped"));
    const QString folder = QFileInfo(QUORSettingsReader::findUserFile(QStringLiteral("Stamped"))).path();
    for (const QString& root : {folder, xdg + QStringLiteral("/QUOR"), xdg + QStringLiteral("2/QUOR")}) {
        for (const QString& file : {root + QStringLiteral("/Stamped.conf"), root + QStringLiteral(".conf")}) {
            writeFile(file, "x=1\n");
            const QString after = QUORSettingsReader::makeStamp(QStringLiteral("Stamped"));
            EXPECT_NE(after, before) << file.toStdString();
            before = after;
            QFile::remove(file);
            before = QUORSettingsReader::makeStamp(QStringLiteral("Stamped"));
        }
    }
    qputenv("XDG_CONFIG_DIRS", QFile::encodeName(xdg));
}

TEST(QUORSettingsReaderTest, AFileOfBadValuesDoesNotFloodTheLog) {
    QString text = QStringLiteral("a line of prose\n");
    for (int i = 0; i < 1200; ++i) {
        text += QStringLiteral("k%1=x\n").arg(i);
    }
    ScratchHome::writeSettings(QStringLiteral("Flood.conf"), text);
    const LogCapture log;
    for (int load = 0; load < 2; ++load) {
        QUORSettingsReader reader(QStringLiteral("Flood"));
        for (int i = 0; i < 1200; ++i) {
            reader.readInt(QStringLiteral("k") + QString::number(i), 0);
        }
    }
    EXPECT_EQ(log.count(QStringLiteral("Flood.conf: line 1 is no comment")), 1);
    EXPECT_EQ(log.count(QStringLiteral("W: ")), 1201);
}

} // namespace
