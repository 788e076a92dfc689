// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <sys/resource.h>

/// Overwrites the file, making the folders above it; a test failure when that is not possible.
void writeFile(const QString& path, const QByteArray& bytes);
/// Empty when the file cannot be read.
QByteArray readFile(const QString& path);

/// A path below the root of the source tree.
QString sourcePath(const QString& relative);
/// A path below the folder QUOR3D_SAMPLE_DATA of measured products, otherwise below a folder "data" beside
/// the source tree or in a folder beside it; empty when it is not there, and tests pass without it.
QString sampleDataPath(const QString& relative);

/// While it lives this process has no more than that: of RLIMIT_FSIZE, a disk that is full after so many
/// bytes of a file, or of RLIMIT_NOFILE.
class ResourceLimit {
public:
    ResourceLimit(__rlimit_resource resource, rlim_t most);
    ~ResourceLimit();
    ResourceLimit(const ResourceLimit&) = delete;
    ResourceLimit& operator=(const ResourceLimit&) = delete;

private:
    __rlimit_resource _resource;
    rlimit _previous{};
};
