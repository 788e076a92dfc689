// SPDX-License-Identifier: MIT
#pragma once

#include <QFile>
#include <QString>

/// A file with a line of JSON for each picture: "input", "output", "seconds" and "error"; output and error
/// are null where there is none. Every line is on its way to the disk before the next picture is drawn.
class RenderReport {
public:
    /// An empty path writes nothing. `append` goes on behind what stands there.
    RenderReport(const QString& path, bool append);

    /// Empty, or why the file cannot be written.
    QString getError() const { return _error; }
    void add(const QString& input, const QString& output, double seconds, const QString& error);

private:
    QFile _file;
    QString _error;
};
