// SPDX-License-Identifier: MIT
#pragma once

#include "QUORFinding.h"
#include "QUORSettingsKey.h"
#include "QUORSettingsText.h"

#include <QMap>

#include <memory>

class QSettings;

/// Looks through one settings file, as text and as the settings layer reads it, for what the table of keys
/// does not know or does not allow. Changes nothing.
class QUORSettingsAudit {
public:
    QUORSettingsAudit(QUORSettingsKey::File file, const QString& path);
    ~QUORSettingsAudit();
    QUORSettingsAudit(const QUORSettingsAudit&) = delete;
    QUORSettingsAudit& operator=(const QUORSettingsAudit&) = delete;

    /// In the order of the file. None for a missing file.
    QUORFindings run();

    /// The line of a key, by its group and key as the table names them; the last one counts. 0 for none.
    static int findLine(const QString& path, const QString& group, const QString& key);

private:
    using Entry = QUORSettingsText::Entry;

    void checkLines(const QUORSettingsText& text);
    void checkSections(const QUORSettingsText& text);
    void checkKey(const Entry& entry);
    void reportUnknown(const Entry& entry, const QString& group);
    void checkValue(const Entry& entry, const QUORSettingsKey& row);
    void checkDuplicates(const QUORSettingsText& text);
    void checkArrays(const QUORSettingsText& text);
    void checkLandmarks(const QUORSettingsText& text);
    void add(QUORFinding::Cost cost, const char* code, const Entry& entry, const QString& problem,
             const QString& advice);
    QString valueOf(const Entry& entry) const;

    QUORSettingsKey::File _file;
    QString _path;
    std::unique_ptr<QSettings> _settings;
    QUORFindings _findings;
};
