// SPDX-License-Identifier: MIT
#include "QUORSettingsWriter.h"

#include "LogCapture.h"
#include "ScratchHome.h"
#include "TestFiles.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QTemporaryDir>

#include <sys/stat.h>

namespace {

class QUORSettingsWriterTest : public testing::Test {
protected:
    QString path(const QString& name = QStringLiteral("a/b/test.conf")) const { return _dir.filePath(name); }

    void put(const QByteArray& text) { writeFile(path(), text); }
    QByteArray content() const { return readFile(path()); }
    bool save(const QString& group, const QString& key, const QUORSettingsWriter::Value& value) {
        QSettings settings(path(), QSettings::NativeFormat);
        QUORSettingsWriter writer(settings, group);
        writer.write(key, value);
        const bool good = writer.commit();
        if (good) {
            EXPECT_TRUE(settings.contains(group + QLatin1Char('/') + key));
        }
        return good;
    }

    QTemporaryDir _dir;
};

const QString GROUP = QStringLiteral("MINE");
const QString KEY = QStringLiteral("key");

TEST_F(QUORSettingsWriterTest, MakesPrivateFilesWhateverTheMask) {
    const mode_t previous = ::umask(0);
    EXPECT_TRUE(save(GROUP, KEY, QStringLiteral("a, b")));
    ::umask(previous);
    const struct {
        QString path;
        mode_t mode;
    } rows[] = {{path(QStringLiteral("a")), 0700}, {path(QStringLiteral("a/b")), 0700}, {path(), 0600}};
    for (const auto& row : rows) {
        struct stat info {};
        ASSERT_EQ(::stat(qPrintable(row.path), &info), 0);
        EXPECT_EQ(info.st_mode & 0777, row.mode) << qPrintable(row.path);
    }
    EXPECT_EQ(content(), "[MINE]\nkey=\"a, b\"\n");
    EXPECT_EQ(QDir(path(QStringLiteral("a/b"))).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

TEST_F(QUORSettingsWriterTest, LeavesEqualFilesAndOtherGroupsAlone) {
    const QByteArray text = "; a comment\n[MINE]\nkey=5.0\n[OTHER]\nkey=yes\n";
    put(text);
    EXPECT_TRUE(save(GROUP, KEY, 5.0));
    EXPECT_TRUE(save(QStringLiteral("OTHER"), KEY, true));
    EXPECT_EQ(content(), text);
    EXPECT_TRUE(save(GROUP, KEY, 6));
    EXPECT_EQ(content(), "; a comment\n[MINE]\nkey=6\n[OTHER]\nkey=yes\n");
}

TEST_F(QUORSettingsWriterTest, KeepsEditsOfOthersAndShowsItsOwn) {
    put("[MINE]\nkey=1\n");
    QSettings living(path(), QSettings::NativeFormat);
    ASSERT_EQ(living.value(QStringLiteral("MINE/key")).toInt(), 1);
    put("[EDITOR]\nother=2\n[MINE]\nkey=1\n");
    QUORSettingsWriter writer(living, GROUP);
    writer.write(KEY, 3);
    EXPECT_TRUE(writer.commit());
    EXPECT_EQ(content(), "[EDITOR]\nother=2\n[MINE]\nkey=3\n");
    // The same size within one tick of the file system's clock.
    for (int value = 4; value < 10; ++value) {
        EXPECT_TRUE(save(GROUP, KEY, value));
        EXPECT_EQ(QSettings(path(), QSettings::NativeFormat).value(QStringLiteral("MINE/key")).toInt(),
                  value);
    }
}

TEST_F(QUORSettingsWriterTest, ReplacesArraysAsAWhole) {
    put("[MINE]\nlist\\size=3\nlist\\1\\x=1\nlist\\2\\x=2\nlist\\3\\x=3\nlist\\3\\y=3\n");
    QSettings settings(path(), QSettings::NativeFormat);
    QUORSettingsWriter writer(settings, GROUP);
    writer.beginWriteArray(QStringLiteral("list"), 1);
    writer.setArrayIndex(0);
    writer.write(QStringLiteral("x"), 1);
    writer.endArray();
    writer.write(KEY, false);
    EXPECT_TRUE(writer.commit());
    EXPECT_EQ(content(), "[MINE]\nlist\\size=1\nlist\\1\\x=1\nkey=false\n");
}

TEST_F(QUORSettingsWriterTest, LeavesOneCopyOfTheGeneralGroup) {
    put("key=old\nkept=x\n[GENERAL]\nkey=older\n[%General]\nkey=oldest\nother=y\n[%47ENERAL]\nkey=hidden\n");
    QSettings settings(path(), QSettings::NativeFormat);
    QUORSettingsWriter writer(settings, QStringLiteral("GENERAL"));
    writer.write(KEY, QStringLiteral("new"));
    EXPECT_TRUE(writer.commit());
    EXPECT_EQ(content(), "kept=x\n[GENERAL]\n[%General]\nother=y\n[%47ENERAL]\nkey=new\n");
}

TEST_F(QUORSettingsWriterTest, LeavesAFileToTheProgramThatSavesIt) {
    put("[MINE]\nkey=1\n");
    QFile other(path());
    ASSERT_TRUE(other.open(QIODevice::ReadWrite));
    EXPECT_FALSE(save(GROUP, KEY, 2));
    other.close();
    EXPECT_EQ(content(), "[MINE]\nkey=1\n");
    EXPECT_TRUE(save(GROUP, KEY, 2));
}

TEST_F(QUORSettingsWriterTest, SparesFilesThatItDoesNotUnderstand) {
    const struct {
        QByteArray text;
        const char* line;
    } rows[] = {{"[MINE]\nkey=1\na line of prose\n", "3"},
                {"[MINE]\nkey=1\n; a\n[OPEN\n", "4"},
                {"[MINE]\nkey=1, \\\n 2\n\nprose\n", "5"}};
    for (const auto& row : rows) {
        put(row.text);
        const LogCapture log;
        EXPECT_FALSE(save(GROUP, KEY, 2));
        EXPECT_FALSE(save(GROUP, KEY, 2));
        EXPECT_EQ(content(), row.text);
        const QString line = QString::fromLatin1(row.line);
        EXPECT_EQ(log.count(QStringLiteral("because its line ") + line), 1);
    }
    put("\xEF\xBB\xBF[MINE]\n# key=0 is off\n# how many\nkey=1\nlist=a, \\\n# b\n");
    const LogCapture log;
    EXPECT_TRUE(save(GROUP, KEY, 2));
    EXPECT_EQ(content(), "\xEF\xBB\xBF[MINE]\n# key=0 is off\n# how many\nkey=2\nlist=a, \\\n# b\n");
    EXPECT_FALSE(log.contains(QStringLiteral("W: ")));
}

TEST_F(QUORSettingsWriterTest, AddsWhatIsMissing) {
    put("[MINE]\nkey=mine\nlist\\size=1\nbare\\1\\x=7\n");
    QSettings settings(path(), QSettings::NativeFormat);
    QUORSettingsWriter writer(settings, GROUP);
    writer.write(KEY, QStringLiteral("default"));
    writer.write(QStringLiteral("more"), 1);
    for (const char* name : {"list", "bare"}) {
        writer.beginWriteArray(QString::fromLatin1(name), 1);
        writer.setArrayIndex(0);
        writer.write(QStringLiteral("x"), 2);
        writer.write(QStringLiteral("y"), 3);
        writer.endArray();
    }
    // Behind the back of the living object.
    put("[MINE]\nkey=mine\nlist\\size=1\nbare\\1\\x=7\nmore=yes\n");
    EXPECT_TRUE(writer.commitMissing());
    EXPECT_EQ(content(), "[MINE]\nkey=mine\nlist\\size=1\nbare\\1\\x=7\nbare\\size=1\nbare\\1\\y=3\n"
                         "more=yes\n");
}

TEST_F(QUORSettingsWriterTest, StoresArraysThatOnlySeemStored) {
    const QString name = QStringLiteral("OnlySeems");
    ScratchHome::writePackaged(name + QStringLiteral(".conf"), "[MINE]\nlist\\size=1\nlist\\1\\x=5\n");
    ScratchHome::writeSettings(name + QStringLiteral(".conf"), QStringLiteral("[MINE]\nlist\\1\\x=7\n"));
    for (const int value : {5, 7}) {
        QSettings settings(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("QUOR"), name);
        QUORSettingsWriter writer(settings, GROUP);
        writer.beginWriteArray(QStringLiteral("list"), 1);
        writer.setArrayIndex(0);
        writer.write(QStringLiteral("x"), value);
        writer.endArray();
        EXPECT_TRUE(writer.commit());
        settings.setFallbacksEnabled(false);
        EXPECT_EQ(settings.contains(QStringLiteral("MINE/list/size")), value == 7);
    }
}

TEST_F(QUORSettingsWriterTest, WritesNothingInPlaceOfWhatCannotBeRead) {
    ASSERT_TRUE(QDir().mkpath(path()));
    const LogCapture log;
    EXPECT_FALSE(save(GROUP, KEY, 2));
    EXPECT_FALSE(save(GROUP, KEY, 2));
    EXPECT_EQ(log.count(QStringLiteral("E: Settings could not be saved to ") + path() +
                        QStringLiteral(": it is not a regular file")),
              1);
    EXPECT_TRUE(QFileInfo(path()).isDir());
}

TEST_F(QUORSettingsWriterTest, ForgetsAFailedSave) {
    QFile obstacle(path(QStringLiteral("a")));
    ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
    const LogCapture log;
    EXPECT_FALSE(save(GROUP, KEY, 2));
    EXPECT_FALSE(save(GROUP, KEY, 2));
    EXPECT_EQ(log.count(QStringLiteral("E: Settings could not be saved")), 1);
    ASSERT_TRUE(obstacle.remove());
    put("[MINE]\nkey=7\n");
    EXPECT_TRUE(save(QStringLiteral("OTHER"), KEY, 1));
    EXPECT_EQ(content(), "[MINE]\nkey=7\n\n[OTHER]\nkey=1\n");
}

TEST_F(QUORSettingsWriterTest, GivesUpOnALockThatSomebodyKeeps) {
    put("[MINE]\nkey=1\n");
    QLockFile lock(path() + QStringLiteral(".lock"));
    ASSERT_TRUE(lock.lock());
    const LogCapture log;
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(save(GROUP, KEY, 2));
    EXPECT_LT(timer.elapsed(), 10000);
    EXPECT_TRUE(log.contains(QStringLiteral("another program keeps its lock file")));
    lock.unlock();
    EXPECT_TRUE(save(GROUP, KEY, 2));
}

TEST_F(QUORSettingsWriterTest, WritesThroughALink) {
    put("[MINE]\nkey=1\n");
    ASSERT_TRUE(QFile::rename(path(), path(QStringLiteral("a/real.conf"))));
    ASSERT_TRUE(QFile::link(path(QStringLiteral("a/real.conf")), path()));
    {
        QLockFile lock(path() + QStringLiteral(".lock"));
        ASSERT_TRUE(lock.lock());
        EXPECT_FALSE(save(GROUP, KEY, 2)) << "the name that the settings layer locks";
    }
    EXPECT_TRUE(save(GROUP, KEY, 2));
    EXPECT_TRUE(QFileInfo(path()).isSymLink());
    EXPECT_EQ(content(), "[MINE]\nkey=2\n");
}

} // namespace
