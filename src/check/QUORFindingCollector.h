// SPDX-License-Identifier: MIT
#pragma once

#include "QUORFinding.h"
#include "QUORSettingsKey.h"

/// Where the parts of a check put what they find.
class QUORFindingCollector {
public:
    using Cost = QUORFinding::Cost;
    using File = QUORSettingsKey::File;

    /// About a file or directory as a whole.
    void add(Cost cost, const char* code, const QString& file, const QString& problem, const QString& advice);
    /// About a key: with the file and line where its value stands, if it stands anywhere.
    void addAt(Cost cost, const char* code, File file, const QString& group, const QString& key,
               const QString& problem, const QString& advice);
    void append(const QUORFindings& findings) { _findings += findings; }
    bool holds(const char* code) const;

    QUORFindings takeSorted();

private:
    QUORFindings _findings;
};
