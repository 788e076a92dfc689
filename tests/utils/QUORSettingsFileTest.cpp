// SPDX-License-Identifier: MIT
#include "QUORSettingsFile.h"

#include "TestFiles.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <sys/stat.h>

namespace {

TEST(QUORSettingsFileTest, ReadsAllOrNothing) {
    const QTemporaryDir dir;
    const QString pipe = dir.filePath(QStringLiteral("pipe"));
    ASSERT_EQ(::mkfifo(qPrintable(pipe), 0600), 0);
    QFile huge(dir.filePath(QStringLiteral("huge")));
    ASSERT_TRUE(huge.open(QIODevice::WriteOnly) && huge.resize(qint64(1) << 30));
    const auto nest = [&dir](const QByteArray& kind) { // lists in lists: reading them ends the process
        const QString nested = dir.filePath(QString::fromLatin1(kind));
        const QByteArray lists = QByteArray("\\0\\0\\0\\t\\0\\0\\0\\x1").repeated(30000);
        writeFile(nested, "[A]\nk=\"" + kind + "(" + lists + ")\"\n");
        return nested;
    };
    const QString kernel = QStringLiteral("/proc/self/");
    const struct {
        const char* name;
        QString path;
        bool good;
    } rows[] = {
        {"missing", dir.filePath(QStringLiteral("none")), true},
        {"folder", dir.path(), false},
        {"pipe", pipe, false},
        {"huge", huge.fileName(), false},
        {"nested", nest("@Variant"), false},
        {"nested time", nest("@DateTime"), false},
        {"nested and escaped", nest("\\x40Variant"), false},
        {"input/output error", kernel + QStringLiteral("mem"), false},
        {"another size than the file's", kernel + QStringLiteral("status"), false},
    };
    for (const auto& row : rows) {
        QString error;
        EXPECT_EQ(QUORSettingsFile::read(row.path, error).has_value(), row.good) << row.name;
        EXPECT_EQ(error.isEmpty(), row.good) << row.name;
    }
}

/// The settings layer must read every key of what is no bad line.
TEST(QUORSettingsFileTest, AgreesWithTheSettingsLayer) {
    const QByteArray mark = "\xEF\xBB\xBF";
    const struct {
        QByteArray text;
        int badLine;
        QString key;
        QString value;
    } rows[] = {
        {mark + "[A]\nk=1\n", 0, "A/k", "1"},
        {mark + "k=1\n", 0, "k", "1"},
        {"[A]\nk=a \\\n b \\\r\n c\nz=3\n", 0, "A/k", "a  b  c"},
        {"[A]\nz=1\nk=\"a\nb\n", 3, "A/k", "a\nb\n"},
        {"[A]\nz=1\nk=c:\\a\\\nb=2\n", 3, "A/z", "1"},
        {"[A]\nk=1;say \"\n; \"\n#\nz=2\n", 0, "A/z", "2"},
        {"[A]\n; a \\\nprose\nk=1\n", 3, "A/k", "1"},
        {"[A]\n# c:\\dir\\\nk=1\n", 2, "A/k", {}},
        {"[A\nk=1\n", 1, "A/k", "1"},
    };
    const QTemporaryDir dir;
    int number = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text.constData());
        EXPECT_EQ(QUORSettingsFile::findBadLine(row.text), row.badLine);
        const QString path = dir.filePath(QString::number(++number));
        writeFile(path, row.text);
        const QSettings settings(path, QSettings::NativeFormat);
        EXPECT_EQ(settings.value(row.key).toString(), row.value);
    }
}

} // namespace
