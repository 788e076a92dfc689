// SPDX-License-Identifier: MIT
#pragma once

#include <QSettings>
#include <QString>

#include <memory>

/// Reads a settings file as its writer meant it: hand-written values that cannot be read as their type
/// log one warning that names file and key and take the default; a text cut into a list by a comma is
/// joined again; an array comes from one file, the user's where it has the size key. Used by one thread,
/// for one load: a living settings object does not see another process's change.
class QUORSettingsReader {
public:
    /// Over an object that somebody else owns.
    explicit QUORSettingsReader(QSettings& settings);
    /// A fresh object for the user-scope file of that application name, packaged defaults behind it.
    explicit QUORSettingsReader(const QString& applicationName);
    ~QUORSettingsReader();
    QUORSettingsReader(const QUORSettingsReader&) = delete;
    QUORSettingsReader& operator=(const QUORSettingsReader&) = delete;

    void beginGroup(const QString& name);
    void endGroup();
    /// The number of elements that may be read: the stored size, cut to `maximum` and never negative.
    int beginReadArray(const QString& name, int maximum);
    void setArrayIndex(int index);
    void endArray();

    bool contains(const QString& key) const;
    bool readBool(const QString& key, bool fallback) const;
    int readInt(const QString& key, int fallback) const;
    /// Always finite.
    double readDouble(const QString& key, double fallback) const;
    QString readText(const QString& key, const QString& fallback) const;

    QSettings& settings() { return *_settings; }

private:
    std::unique_ptr<QSettings> _owned;
    QSettings* _settings;
};
