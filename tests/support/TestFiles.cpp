// SPDX-License-Identifier: MIT
#include "TestFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <csignal>

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
    const QString root = qEnvironmentVariable("QUOR_SHARED_DATA", sourcePath(QStringLiteral("../shared/data")));
    const QString path = root + QLatin1Char('/') + relative;
    return QFileInfo::exists(path) ? path : QString();
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
