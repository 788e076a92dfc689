// SPDX-License-Identifier: MIT
#pragma once

#include "QUORImporter.h"

/// Says what was found in files of radar data and what was made of it: lines for people, or one JSON object a
/// line for scripts. To standard output; what went wrong to standard error.
class ImportReport {
public:
    ImportReport(bool json, bool dryRun) : _json(json), _dryRun(dryRun) {}

    /// One volume and the files that it came from.
    void volume(const QStringList& files, const QUORRadarData& data, const QUORImportResult& result);
    void failure(const QStringList& files, const QString& reason);
    bool hasFailed() const { return _failed; }

    /// A bar on standard error where that is a terminal and there is more than one step.
    void progress(int done, int all);

private:
    void describe(const QStringList& files, const QUORRadarData& data, const QUORImportResult& result);
    void printJson(const QStringList& files, const QUORRadarData& data, const QUORImportResult& result);
    void clearBar();

    bool _json;
    bool _dryRun;
    bool _failed = false;
    bool _hasBar = false;
};
