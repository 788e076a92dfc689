// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

/// Where a fuzz target puts the file that its reader is to read: a home of its own, gone at the end.
class FuzzScratch {
public:
    static FuzzScratch& instance();

    /// Overwrites a file in the scratch folder; its path.
    QString write(const QString& name, const QByteArray& bytes) const;
    /// The file becomes the user's settings file of that application, in a folder that no settings object
    /// has read lately: two runs fall into one tick of the file system's clock.
    void useSettings(const QString& application, const QByteArray& bytes);

private:
    FuzzScratch();

    QTemporaryDir _dir;
    unsigned _homes = 0;
};

/// Ends the run, which keeps the input, when what a reader promises does not hold.
#define FUZZ_REQUIRE(expression)                                                                             \
    (static_cast<bool>(expression) ? static_cast<void>(0)                                                    \
                                   : fuzzRequirementFailed(#expression, __FILE__, __LINE__))
[[noreturn]] void fuzzRequirementFailed(const char* expression, const char* file, int line);

inline QByteArray fuzzBytes(const unsigned char* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), qsizetype(size)};
}
