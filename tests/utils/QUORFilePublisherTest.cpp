// SPDX-License-Identifier: MIT
#include "QUORFilePublisher.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class QUORFilePublisherTest : public testing::Test {
protected:
    QString path(const QString& name) const { return _dir.filePath(name); }

    static void write(const QString& name, const QByteArray& text) {
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(name);
        file.write(text);
    }
    static QByteArray read(const QString& name) {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(cannot be read)");
    }
    /// All names in the folder, hidden ones too.
    QStringList names() const {
        return QDir(_dir.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    QTemporaryDir _dir;
};

TEST_F(QUORFilePublisherTest, ReplacesTheTargetWholeAndOnlyWhenPublished) {
    const mode_t mask = ::umask(0);
    write(path(QStringLiteral("image")), "old");
    {
        QUORFilePublisher publisher(path(QStringLiteral("image")));
        ASSERT_TRUE(publisher.isReady());
        EXPECT_TRUE(QFileInfo(publisher.getTemporaryPath()).isHidden());
        write(publisher.getTemporaryPath(), "new");
        EXPECT_EQ(read(path(QStringLiteral("image"))), "old");
        EXPECT_TRUE(publisher.publish());
    }
    ::umask(mask);
    EXPECT_EQ(read(path(QStringLiteral("image"))), "new");
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
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit unlimited = {};
    ::getrlimit(RLIMIT_FSIZE, &unlimited);
    for (const rlim_t most : {rlim_t(99999), rlim_t(100000)}) {
        QUORFilePublisher publisher(path(QStringLiteral("copy")));
        const rlimit limit{most, unlimited.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        const bool copied = publisher.copyFrom(source.handle());
        ::setrlimit(RLIMIT_FSIZE, &unlimited);
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
        write(path(name), "x");
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite) &&
                    file.setFileTime(QDateTime::currentDateTime().addDays(-1), QFile::FileModificationTime));
    }
    write(path(QStringLiteral(".young.2147483647.3.tmp")), "x");
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
    ASSERT_TRUE(QDir().mkdir(path(QStringLiteral("folder"))));
    write(path(QStringLiteral("folder/inside")), "x");
    const Row rows[] = {
        {"no folder", path(QStringLiteral("missing/image")), "new", false},
        {"the target is a folder", path(QStringLiteral("folder")), "new", true},
        {"nothing was written", path(QStringLiteral("image")), "", true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        write(path(QStringLiteral("image")), "old");
        {
            QUORFilePublisher publisher(row.target);
            EXPECT_EQ(publisher.isReady(), row.ready);
            if (publisher.isReady()) {
                write(publisher.getTemporaryPath(), row.content);
            }
            EXPECT_FALSE(publisher.publish());
            EXPECT_FALSE(publisher.getError().isEmpty());
        }
        EXPECT_EQ(read(path(QStringLiteral("image"))), "old");
        EXPECT_EQ(names(), QStringList({QStringLiteral("folder"), QStringLiteral("image")}));
    }
}

TEST_F(QUORFilePublisherTest, AnUnpublishedFileGoesWithTheObjectAndALinkIsReplacedNotFollowed) {
    write(path(QStringLiteral("elsewhere")), "kept");
    ASSERT_TRUE(QFile::link(path(QStringLiteral("elsewhere")), path(QStringLiteral("image"))));
    {
        const QUORFilePublisher forgotten(path(QStringLiteral("image")));
        EXPECT_EQ(names().size(), 3);
    }
    EXPECT_EQ(names().size(), 2);

    QUORFilePublisher publisher(path(QStringLiteral("image")));
    write(publisher.getTemporaryPath(), "new");
    EXPECT_TRUE(publisher.publish(false));
    EXPECT_EQ(read(path(QStringLiteral("elsewhere"))), "kept");
    EXPECT_EQ(read(path(QStringLiteral("image"))), "new");
}

} // namespace
