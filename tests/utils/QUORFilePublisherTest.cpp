// SPDX-License-Identifier: MIT
#include "QUORFilePublisher.h"

#include "TestFiles.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace {

class QUORFilePublisherTest : public testing::Test {
protected:
    QString path(const QString& name) const { return _dir.filePath(name); }

    /// All names in the folder, hidden ones too.
    QStringList names() const {
        return QDir(_dir.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    QTemporaryDir _dir;
};

TEST_F(QUORFilePublisherTest, ReplacesTheTargetWholeAndOnlyWhenPublished) {
    const mode_t mask = ::umask(0);
    writeFile(path(QStringLiteral("image")), "old");
    {
        QUORFilePublisher publisher(path(QStringLiteral("image")));
        ASSERT_TRUE(publisher.isReady());
        EXPECT_TRUE(QFileInfo(publisher.getTemporaryPath()).isHidden());
        writeFile(publisher.getTemporaryPath(), "new");
        EXPECT_EQ(readFile(path(QStringLiteral("image"))), "old");
        EXPECT_TRUE(publisher.publish());
    }
    ::umask(mask);
    EXPECT_EQ(readFile(path(QStringLiteral("image"))), "new");
    EXPECT_EQ(names(), QStringList(QStringLiteral("image")));
    struct stat info {};
    ASSERT_EQ(::stat(path(QStringLiteral("image")).toLocal8Bit().constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0644U);
}

TEST_F(QUORFilePublisherTest, CopiesToTheLastByteOrFails) {
    QFile source(path(QStringLiteral("source")));
    ASSERT_TRUE(source.open(QIODevice::ReadWrite));
    source.write(QByteArray(100000, 'x'));
    source.flush();
    for (const rlim_t most : {rlim_t(99999), rlim_t(100000)}) {
        QUORFilePublisher publisher(path(QStringLiteral("copy")));
        const bool copied = [&] {
            const ResourceLimit limit(RLIMIT_FSIZE, most);
            return publisher.copyFrom(source.handle());
        }();
        EXPECT_EQ(copied, most == 100000);
        EXPECT_EQ(publisher.getError().isEmpty(), copied);
        EXPECT_EQ(copied && publisher.publish(), copied);
    }
    EXPECT_EQ(QFileInfo(path(QStringLiteral("copy"))).size(), 100000);
}

TEST_F(QUORFilePublisherTest, RemovesWhatDeadProcessesLeft) {
    const QString living = QStringLiteral(".image.%1.0.tmp").arg(::getppid());
    for (const QString& name : {QStringLiteral(".image.png.2147483647.3.tmp"), living,
                                QStringLiteral(".other.tmp"), QStringLiteral("a.2147483647.3.tmp")}) {
        writeFile(path(name), "x");
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite) &&
                    file.setFileTime(QDateTime::currentDateTime().addDays(-1), QFile::FileModificationTime));
    }
    writeFile(path(QStringLiteral(".young.2147483647.3.tmp")), "x");
    QUORFilePublisher::removeLeftovers(_dir.path());
    EXPECT_EQ(names(),
              QStringList({living, QStringLiteral(".other.tmp"), QStringLiteral(".young.2147483647.3.tmp"),
                           QStringLiteral("a.2147483647.3.tmp")}));
}

TEST_F(QUORFilePublisherTest, FailsWithoutTraceAndWithAReason) {
    struct Row {
        const char* what;
        QString target;
        QByteArray content;
        bool ready;
    };
    writeFile(path(QStringLiteral("folder/inside")), "x");
    const Row rows[] = {
        {"no folder", path(QStringLiteral("missing/image")), "new", false},
        {"the target is a folder", path(QStringLiteral("folder")), "new", true},
        {"nothing was written", path(QStringLiteral("image")), "", true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        writeFile(path(QStringLiteral("image")), "old");
        {
            QUORFilePublisher publisher(row.target);
            EXPECT_EQ(publisher.isReady(), row.ready);
            if (publisher.isReady()) {
                writeFile(publisher.getTemporaryPath(), row.content);
            }
            EXPECT_FALSE(publisher.publish());
            EXPECT_FALSE(publisher.getError().isEmpty());
        }
        EXPECT_EQ(readFile(path(QStringLiteral("image"))), "old");
        EXPECT_EQ(names(), QStringList({QStringLiteral("folder"), QStringLiteral("image")}));
    }
}

TEST_F(QUORFilePublisherTest, AnUnpublishedFileGoesWithTheObjectAndALinkIsReplacedNotFollowed) {
    writeFile(path(QStringLiteral("elsewhere")), "kept");
    ASSERT_TRUE(QFile::link(path(QStringLiteral("elsewhere")), path(QStringLiteral("image"))));
    {
        const QUORFilePublisher forgotten(path(QStringLiteral("image")));
        EXPECT_EQ(names().size(), 3);
    }
    EXPECT_EQ(names().size(), 2);

    QUORFilePublisher publisher(path(QStringLiteral("image")));
    writeFile(publisher.getTemporaryPath(), "new");
    EXPECT_TRUE(publisher.publish(false));
    EXPECT_EQ(readFile(path(QStringLiteral("elsewhere"))), "kept");
    EXPECT_EQ(readFile(path(QStringLiteral("image"))), "new");
}

} // namespace
