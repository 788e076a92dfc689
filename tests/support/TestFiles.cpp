// SPDX-License-Identifier: MIT
#include "TestFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <csignal>
#include <utility>

void writeFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << qPrintable(path);
    ASSERT_EQ(file.write(bytes), bytes.size()) << qPrintable(path);
}

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString sourcePath(const QString& relative) {
    return QStringLiteral(QUOR_SOURCE_DIR "/") + relative;
}

QString sampleDataPath(const QString& relative) {
    QStringList folders{qEnvironmentVariable("QUOR3D_SAMPLE_DATA")};
    if (folders.constFirst().isEmpty()) {
        const QDir beside(sourcePath(QStringLiteral("..")));
        folders = {beside.filePath(QStringLiteral("data"))};
        for (const QString& name : beside.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
            folders.append(beside.filePath(name + QStringLiteral("/data")));
        }
    }
    for (const QString& folder : std::as_const(folders)) {
        const QString path = folder + QLatin1Char('/') + relative;
        if (QFileInfo::exists(path)) {
            return path;
        }
    }
    return {};
}

ResourceLimit::ResourceLimit(__rlimit_resource resource, rlim_t most) : _resource(resource) {
    std::signal(SIGXFSZ, SIG_IGN);
    ::getrlimit(_resource, &_previous);
    const rlimit limit{most, _previous.rlim_max};
    ::setrlimit(_resource, &limit);
}

ResourceLimit::~ResourceLimit() {
    ::setrlimit(_resource, &_previous);
}
