// SPDX-License-Identifier: MIT
#include "Gallery.h"
#include "TestFiles.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

class GalleryTest : public ::testing::Test {
protected:
    GalleryTest() {
        options.pictures = root.filePath("pictures");
        options.page = root.filePath("page");
        options.title = "Title";
        options.copies = "png";
        options.most = 3;
        options.refresh = 5;
        QDir().mkpath(options.pictures);
    }

    void draw(const QString& name, int width = 40) {
        QImage image(width, 30, QImage::Format_RGB32);
        image.fill(Qt::blue);
        ASSERT_TRUE(image.save(options.pictures + '/' + name));
    }

    QStringList made(const char* folder) const {
        return QDir(options.page + "/gallery/" + folder).entryList(QDir::Files | QDir::Hidden);
    }
    QByteArray list() const { return readFile(options.page + "/gallery/latest.js"); }
    QByteArray series() const {
        return readFile(options.page + "/gallery/series/" + made("series").value(0));
    }

    QTemporaryDir root;
    Gallery::Options options;
};

} // namespace

TEST_F(GalleryTest, LeavesAnotherPageAlone) {
    writeFile(options.page + "/index.html", "<title>Weather service</title>");
    EXPECT_TRUE(Gallery(options).writePage().contains("index.html"));
    EXPECT_EQ(readFile(options.page + "/index.html"), "<title>Weather service</title>");
    QFile::remove(options.page + "/index.html");
    EXPECT_EQ(Gallery(options).writePage(), "");
    EXPECT_EQ(Gallery(options).writePage(), "") << "its own page may be replaced";
    EXPECT_FALSE(readFile(options.page + "/index.html").contains("@S"));
}

TEST_F(GalleryTest, ListsTheNewestWithNamesThatAreNoMarkup) {
    const QString site = QString::fromUtf8("</script>&\u017d\u2028\"");
    QDir().mkpath(options.pictures);
    for (const char* time : {"210511120000", "210511120500", "210511121000", "210511121500"}) {
        writeFile(options.pictures + "/a_Z_" + time + ".png", "no picture");
    }
    const QString strange = options.pictures + "/" + QString(site).remove('/') + "_Z_210511120000.png";
    writeFile(strange, "no picture");
    Gallery gallery(options);
    ASSERT_EQ(gallery.writePage(), "");
    testing::internal::CaptureStderr();
    EXPECT_EQ(gallery.update(1s), "");
    EXPECT_EQ(gallery.update(1s), "");
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(gallery.getShownPictures(), 4);
    for (const char* character : {"<", "&", "\xc5", "\xe2"}) {
        EXPECT_FALSE(list().contains(character)) << character;
    }
    EXPECT_TRUE(list().contains("\\u003cscript\\u003e\\u0026\\u017d\\u2028\\\"")) << list().constData();
    // What cannot be read has no small picture, and is named once.
    EXPECT_EQ(said.find("a_Z_210511121500.png"), said.rfind("a_Z_210511121500.png"));
    EXPECT_NE(said.find("a_Z_210511121500.png"), std::string::npos);
    EXPECT_EQ(gallery.getFailures(), 2);
}

TEST_F(GalleryTest, MakesCopiesOnceAndTakesThemAwayWithTheirPictures) {
    draw("a_Z_210511120000.tiff");
    draw("a_Z_210511120500.tiff");
    writeFile(options.pictures + "/a_Z_210511121000.tiff", QByteArray("II*\0cut", 7));
    testing::internal::CaptureStderr();
    {
        Gallery gallery(options);
        ASSERT_EQ(gallery.writePage(), "");
        EXPECT_EQ(gallery.update(0s), "");
        EXPECT_TRUE(gallery.isBehind());
        EXPECT_EQ(gallery.getShownPictures(), 0);
        EXPECT_EQ(gallery.update(20s), "");
        EXPECT_FALSE(gallery.isBehind());
        EXPECT_EQ(gallery.getShownPictures(), 2) << "the cut one costs itself only";
    }
    EXPECT_TRUE(
        QString::fromStdString(testing::internal::GetCapturedStderr()).contains("a_Z_210511121000.tiff"));
    const QStringList copies{"a_Z_210511120000.tiff.png", "a_Z_210511120500.tiff.png"};
    EXPECT_EQ(made("copies"), copies);
    EXPECT_TRUE(series().contains("gallery/copies/a_Z_"));

    // Another run finds all as it stands, and writes nothing.
    QFile::remove(options.pictures + "/a_Z_210511121000.tiff");
    const QString copy = options.page + "/gallery/copies/" + copies[1];
    writeFile(copy, "marked");
    QFile file(copy);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    const QDateTime drawn = QFileInfo(options.pictures + "/a_Z_210511120500.tiff").lastModified();
    ASSERT_TRUE(file.setFileTime(drawn, QFile::FileModificationTime));
    file.close();
    Gallery gallery(options);
    EXPECT_EQ(gallery.update(20s), "");
    EXPECT_EQ(readFile(copy), "marked");
    const QByteArray before = series();

    // One drawn again is copied again, and looked for under another address.
    QFile::remove(options.pictures + "/a_Z_210511120000.tiff");
    draw("a_Z_210511120500.tiff", 50);
    QFile again(options.pictures + "/a_Z_210511120500.tiff");
    ASSERT_TRUE(again.open(QIODevice::ReadWrite));
    ASSERT_TRUE(again.setFileTime(drawn.addSecs(1), QFile::FileModificationTime));
    again.close();
    EXPECT_EQ(gallery.update(20s), "");
    EXPECT_EQ(made("copies"), QStringList{copies[1]});
    EXPECT_EQ(QImage(copy).width(), 50);
    EXPECT_NE(series(), before);

    QFile::remove(options.pictures + "/a_Z_210511120500.tiff");
    EXPECT_EQ(gallery.update(20s), "");
    for (const char* folder : {"copies", "latest", "series"}) {
        EXPECT_EQ(made(folder), QStringList{}) << folder;
    }
    QDir(options.pictures).removeRecursively();
    EXPECT_TRUE(gallery.update(20s).contains(options.pictures));
}
