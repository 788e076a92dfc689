// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QSettings>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <optional>

/// Reads a settings file as its writer meant it. A value that cannot be read as its type logs one warning
/// that names file and key (again only when the value changes) and takes the default; a text that a comma
/// cut into a list is joined again; an array comes from one file, the user's where it has the size key. A
/// file that is there and cannot be read is an error line, once, and again when the reason changes. Used by
/// one thread, for one load: a living settings object does not see another process's change.
///
/// The settings layer gives the section name "general" a meaning of its own: `[GENERAL]` is read as keys
/// without a group, and what is saved as the group "GENERAL" comes back as "General". A group of that name
/// is therefore looked up under its own name, then "General", then without a group.
class QUORSettingsReader {
public:
    /// Over an object that somebody else owns; relative to the group that is open in it.
    explicit QUORSettingsReader(QSettings& settings);
    /// A fresh object as `open` makes it.
    explicit QUORSettingsReader(const QString& applicationName);
    ~QUORSettingsReader() = default;
    QUORSettingsReader(const QUORSettingsReader&) = delete;
    QUORSettingsReader& operator=(const QUORSettingsReader&) = delete;

    void beginGroup(const QString& name);
    void endGroup();
    /// The stored size, cut to the last element that the file holds and, with a warning, to 1000: what to
    /// iterate over where the number of elements has no bound of its own.
    int beginReadArray(const QString& name);
    /// The stored size, cut to `maximum` and never negative.
    int beginReadArray(const QString& name, int maximum);
    /// The indexes within the stored size, ascending, of the elements of the open array that its file holds.
    QList<int> getArrayIndexes() const;
    /// Counts from 0 and is not bound to the size.
    void setArrayIndex(int index);
    void endArray();

    bool contains(const QString& key) const;
    /// "true", "1", "yes" and "on", or "false", "0", "no" and "off", in any case.
    bool readBool(const QString& key, bool fallback) const;
    int readInt(const QString& key, int fallback) const;
    /// A value outside the range is treated like one that cannot be read.
    int readInt(const QString& key, int fallback, int minimum, int maximum) const;
    /// A value outside the range is moved to its nearest end, with a warning.
    int readIntClamped(const QString& key, int fallback, int minimum, int maximum) const;
    /// Always finite.
    double readDouble(const QString& key, double fallback) const;
    double readDouble(const QString& key, double fallback, double minimum, double maximum) const;
    double readDoubleClamped(const QString& key, double fallback, double minimum, double maximum) const;
    QString readText(const QString& key, const QString& fallback) const;
    /// The text of a value as it stands in the file, without any check.
    std::optional<QString> findText(const QString& key) const;

    /// The text of a value as its writer meant it; nothing when it holds no text.
    static std::optional<QString> toText(const QVariant& value);
    static std::optional<bool> toBool(const QString& text);
    static std::optional<int> toInt(const QString& text);
    static std::optional<double> toDouble(const QString& text);

    /// The user-scope file of that application name.
    static QString findUserFile(const QString& applicationName);
    /// Every file that the settings layer reads for that application name, the first that has a key wins.
    static QStringList findFiles(const QString& applicationName);
    /// Changes whenever one of these files does.
    static QString makeStamp(const QString& applicationName);
    /// An object over the user-scope file of that application name, packaged defaults behind it. The packaged
    /// defaults alone, in system scope, when the user's file is not readable.
    static std::unique_ptr<QSettings> open(const QString& applicationName);

    /// Whether a settings file may be opened, or is missing; an error line, once, when it may not. A line in
    /// it that cannot be understood is a warning, once. Waits for a save in progress.
    static bool isReadable(const QString& fileName);

    /// The prefixes under which the keys of a top-level group may stand, the first that has a key wins.
    static QStringList getGroupPrefixes(const QString& group);

    QSettings& settings() { return *_settings; }

private:
    struct Level {
        QStringList prefixes;
        QString arrayPrefix; ///< of an array, without the element's number
        int arraySize = 0;
        bool user = true; ///< whether the user's file counts, and whether the packaged one
        bool packaged = true;
    };
    struct Found {
        QString key;
        QVariant value;
        bool inUserFile = false;
    };

    std::optional<Found> find(const QString& key) const;
    void reportRivals(const Found& found, const QString& key) const;
    /// The warning about a value, or its end once the value is good.
    void report(const Found& found, const QString& key, const QString& problem) const;
    QString subjectOf(const QString& key) const;
    QString rivalSubjectOf(const QString& key) const;
    std::unique_ptr<QSettings> makePackaged() const;
    QString nameFile(bool user) const;
    template <class T>
    T read(const QString& key, T fallback, T minimum, T maximum, bool clamp) const;
    int openArray(const QString& name);

    std::unique_ptr<QSettings> _owned;
    QSettings* _settings;
    std::unique_ptr<QSettings> _packaged; ///< alone, for an array that comes from there
    QList<Level> _levels;
};
