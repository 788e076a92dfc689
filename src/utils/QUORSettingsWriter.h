// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QSettings>
#include <QString>
#include <QStringList>

#include <utility>
#include <variant>

class QUORSettingsReader;
class QUORSettingsText;

/// Saves keys and arrays of one group of a settings file. What is given is collected; `commit` writes it,
/// and only where the file says otherwise. Comments, other lines and their order stay.
///
/// The new content is made in a copy beside the file, under the lock file of the settings layer, and
/// published by rename: other groups and other processes' edits stay, and nothing of a failed save is kept
/// in memory to be written over a newer edit later. A file with lines that cannot be understood is left
/// alone, and so is one that would not be read back as it was meant. New files get mode 0600 in new folders
/// of mode 0700. Used by one thread.
class QUORSettingsWriter {
public:
    /// What a settings file can hold without becoming opaque to an editor.
    using Value = std::variant<bool, int, double, QString>;

    /// Writes to the file of `settings`, which sees the new content after a successful commit.
    QUORSettingsWriter(QSettings& settings, const QString& group);

    void write(const QString& key, const Value& value);
    void remove(const QString& key);
    /// The array's stored elements are replaced as a whole by those written until `endArray`.
    void beginWriteArray(const QString& name, int size);
    /// Counts from 0.
    void setArrayIndex(int index);
    void endArray();

    /// False, after one error line per file and reason, when the values could not be stored.
    bool commit();
    /// Like `commit`, but leaves every key that is stored, whatever its value, and every stored array.
    bool commitMissing();

private:
    using Entry = std::pair<QString, Value>;

    bool isStored() const;
    bool holds(QUORSettingsReader& reader, const Entry& entry) const;
    QList<Entry> findMissing(QSettings& settings) const;
    /// The array that a key belongs to, or an empty text.
    QString findArray(const QString& key) const;
    /// An empty text when all went well, or the reason.
    QString store(const QString& fileName) const;
    QString stage(const QString& fileName) const;
    void apply(QUORSettingsText& text, const QList<Entry>& values) const;
    bool isReadBack(const QString& fileName, const QList<Entry>& values) const;

    QSettings& _settings;
    QString _group;
    QString _elementPrefix;
    QString _array;
    QStringList _arrays;
    QList<Entry> _values;
    QStringList _removed;
    bool _onlyMissing = false;
};
