// SPDX-License-Identifier: MIT
#include "QUORImageWriter.h"

#include "TestFiles.h"

#include <vtkImageData.h>
#include <vtkNew.h>

#include <gtest/gtest.h>

#include <QColor>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>

#include <sys/stat.h>

namespace {

/// Noise that no format can shrink below some hundred kilobytes, with a red corner.
vtkSmartPointer<vtkImageData> noise(int width, int height) {
    auto picture = vtkSmartPointer<vtkImageData>::New();
    picture->SetDimensions(width, height, 1);
    picture->AllocateScalars(VTK_UNSIGNED_CHAR, 3);
    auto* samples = static_cast<unsigned char*>(picture->GetScalarPointer());
    unsigned state = 1;
    for (int i = 0; i < width * height * 3; ++i) {
        state = state * 1664525U + 1013904223U;
        samples[i] = static_cast<unsigned char>(state >> 24);
    }
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 16; ++x) {
            auto* p = static_cast<unsigned char*>(picture->GetScalarPointer(x, y, 0));
            p[0] = 255;
            p[1] = p[2] = 0;
        }
    }
    return picture;
}

/// The size and the colour 4 pixels right of and above the lower left corner, as other programs see them.
struct Seen {
    QSize size;
    QColor corner;
};

Seen look(const QString& path) {
    const QImage image(path);
    if (!image.isNull()) {
        return {image.size(), image.pixelColor(4, image.height() - 5)};
    }
    // Plain TIFF, which the toolkit cannot read: rows from the top, after a header of 8 bytes.
    QFile file(path);
    constexpr qint64 row = 200 * 3;
    if (!file.open(QIODevice::ReadOnly) || !file.seek(8 + 115 * row + 4 * 3)) {
        return {};
    }
    const QByteArray p = file.read(3);
    return {QSize(200, int((file.size() - 8) / row)), QColor(uchar(p[0]), uchar(p[1]), uchar(p[2]))};
}

} // namespace

TEST(QUORImageWriterTest, EachFormatReadsBackAsTheSamePicture) {
    struct Row {
        int format;
        const char* name;
        const char* magic;
        int tolerance;
    };
    const QTemporaryDir dir;
    const vtkSmartPointer<vtkImageData> picture = noise(200, 120);
    ::umask(0);
    for (const Row& row : {Row{0, "a.tiff", "II*", 0}, Row{1, "a.png", "\x89PNG", 0},
                           Row{2, "a.jpg", "\xff\xd8\xff", 40}, Row{3, "a.", "\x89PNG", 0}}) {
        const QString path = dir.filePath(QLatin1String(row.name));
        QUORImageWriter writer(path);
        ASSERT_TRUE(writer.canOpen()) << qPrintable(writer.getError());
        ASSERT_TRUE(writer.write(picture, row.format)) << qPrintable(writer.getError());
        EXPECT_TRUE(readFile(path).startsWith(row.magic)) << row.name;
        struct stat info = {};
        ::stat(QFile::encodeName(path).constData(), &info);
        EXPECT_EQ(info.st_mode & 0777U, 0644U) << row.name;
        const Seen seen = look(path);
        EXPECT_EQ(seen.size, QSize(200, 120)) << row.name;
        EXPECT_NEAR(seen.corner.red(), 255, row.tolerance) << row.name;
        EXPECT_NEAR(seen.corner.green(), 0, row.tolerance) << row.name;
    }
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 4);
}

TEST(QUORImageWriterTest, RefusesWhatIsNoPlaceForAnImage) {
    const QTemporaryDir dir;
    QDir(dir.path()).mkdir(QStringLiteral("folder"));
    ::mkfifo(dir.filePath(QStringLiteral("pipe")).toLocal8Bit().constData(), 0600);
    const vtkSmartPointer<vtkImageData> picture = noise(20, 20);
    for (const char* name : {"missing/a.png", "folder", "pipe"}) {
        QUORImageWriter writer(dir.filePath(QLatin1String(name)));
        EXPECT_FALSE(writer.canOpen()) << name;
        EXPECT_FALSE(writer.getError().isEmpty()) << name;
    }
    QUORImageWriter writer(dir.filePath(QStringLiteral("missing/a.png")));
    EXPECT_FALSE(writer.write(picture, 1));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("missing"))));
}

TEST(QUORImageWriterTest, TheTestForOpeningChangesNothing) {
    const QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("a.png"));
    QUORImageWriter writer(path);
    EXPECT_TRUE(writer.canOpen());
    EXPECT_FALSE(QFileInfo::exists(path));
    ASSERT_TRUE(writer.write(noise(20, 20), 1));
    const qint64 size = QFileInfo(path).size();
    EXPECT_TRUE(writer.canOpen());
    EXPECT_EQ(QFileInfo(path).size(), size);
}

TEST(QUORImageWriterTest, AFullDiskKeepsTheOldImage) {
    const vtkSmartPointer<vtkImageData> picture = noise(400, 400);
    for (int i = 0; i < 6; ++i) {
        const int format = i % 3;
        const QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("image"));
        QUORImageWriter writer(path);
        ASSERT_TRUE(writer.write(picture, format));
        const auto whole = rlim_t(QFileInfo(path).size());
        writeFile(path, "the old image");
        {
            // The last bytes matter as much: some encoders do not look at what becomes of them.
            const ResourceLimit small(RLIMIT_FSIZE, i < 3 ? 20000 : whole - 1);
            EXPECT_FALSE(writer.write(picture, format)) << format;
        }
        EXPECT_FALSE(writer.getError().isEmpty()) << format;
        EXPECT_EQ(QFileInfo(path).size(), 13) << format;
        EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 1) << format;
    }
}
