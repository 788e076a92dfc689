// SPDX-License-Identifier: MIT
#include "QUORSettingsText.h"

#include "TestFiles.h"

#include <gtest/gtest.h>

#include <QSettings>
#include <QTemporaryDir>

namespace {

QString readBack(const QByteArray& content, const QString& path) {
    const QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("a.conf"));
    writeFile(name, content);
    QSettings settings(name, QSettings::NativeFormat);
    settings.allKeys();
    return settings.value(path).toString();
}

TEST(QUORSettingsTextTest, EditsOneLineAndKeepsTheRest) {
    const struct {
        const char* name;
        QByteArray before;
        const char* section;
        const char* key;
        const char* value;
        QByteArray after;
    } rows[] = {
        {"a comment behind", "; top\n[A]\n k = 1 ; why\n# x=1\nz=2\n", "A", "k", "5",
         "; top\n[A]\n k =5 ; why\n# x=1\nz=2\n"},
        {"windows", "[A]\r\nk=1\r\n[B]\r\n", "A", "n", "2", "[A]\r\nk=1\r\nn=2\r\n[B]\r\n"},
        {"no end", "[A]\nk=1", "A", "n", "2", "[A]\nk=1\nn=2\n"},
        {"twice", "[A]\nk=1\n[B]\nx=1\n[A]\nk=3\n", "A", "k", "4", "[A]\n[B]\nx=1\n[A]\nk=4\n"},
        {"over lines", "[A]\nk=a, \\\n b\nz=1\n", "A", "k", "c", "[A]\nk=c\nz=1\n"},
        {"quoted", "[A]\nk=\"a; b\" ; c\n", "A", "k", "d; e", "[A]\nk=\"d; e\" ; c\n"},
        {"array", "[A]\nl\\1\\x=1\nz=1\n", "A", "l/2/x", "2", "[A]\nl\\1\\x=1\nl\\2\\x=2\nz=1\n"},
        {"slashes", "[A B]\nl/1/x=1\n", "A B", "l/1/x", "2", "[A B]\nl/1/x=2\n"},
        {"escaped names", "[A%20B]\nk%20k=1\n", "A B", "k k", "2", "[A%20B]\nk%20k=2\n"},
        {"no section", "; c\nk=1\n[A]\n", "", "k", "2", "; c\nk=2\n[A]\n"},
        {"general", "[GENERAL]\nk=1\n", "", "k", "2", "[GENERAL]\nk=2\n"},
        {"general as saved", "[%General]\nk=1\n", "General", "n", "2", "[%General]\nk=1\nn=2\n"},
        {"new", "[A]\nk=1\n", "B C", "x/1/y", "2", "[A]\nk=1\n\n[B C]\nx\\1\\y=2\n"},
        {"empty file", "", "General", "k", "2", "[%General]\nk=2\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QUORSettingsText text(row.before);
        EXPECT_EQ(text.toBytes(), row.before);
        const QString section = QString::fromLatin1(row.section);
        const QString key = QString::fromLatin1(row.key);
        text.set(section, key, QString::fromLatin1(row.value));
        EXPECT_EQ(text.toBytes(), row.after);
        const QString path = section.isEmpty() ? key : section + QLatin1Char('/') + key;
        EXPECT_EQ(readBack(text.toBytes(), path), QString::fromLatin1(row.value));
        text.remove(path);
        EXPECT_EQ(readBack(text.toBytes(), path), QString());
    }
}

TEST(QUORSettingsTextTest, IsWrittenAsItWasRead) {
    for (const char* content : {"[A]\nk=\"never closed\nn=1\n", "[A]\nk=1, \\\n", "\n", "[A]\nk=\"\n"}) {
        EXPECT_EQ(QUORSettingsText(content).toBytes(), content);
    }
}

/// What a person, or a directory, may be called.
TEST(QUORSettingsTextTest, ValuesAreReadBackByTheSettingsLayer) {
    for (const char* value : {"", "plain", "a, b", "a; b", "\"quoted\"", "back\\slash", " blanks ",
                              "@Variant(x)", "@", "a=b", "Köln 日本", "tab\tline\nend",
                              "\x01"
                              "1f",
                              "%20", "C:\\new"}) {
        QUORSettingsText text{QByteArray()};
        const QString wanted = QString::fromUtf8(value);
        text.set(QStringLiteral("A"), QStringLiteral("k"), wanted);
        const QByteArray content = text.toBytes();
        const QTemporaryDir dir;
        const QString name = dir.filePath(QStringLiteral("a.conf"));
        writeFile(name, content);
        const QVariant read = QSettings(name, QSettings::NativeFormat).value(QStringLiteral("A/k"));
        EXPECT_EQ(read.toString(), wanted) << content.constData();
        EXPECT_EQ(read.typeId(), QMetaType::QString) << content.constData();
    }
}

} // namespace
