// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

/// The text of a settings file, line by line: where its sections and keys stand, and edits that leave every
/// other line, with its comments, as it is. It reads lines as the settings layer does. A plain value.
class QUORSettingsText {
public:
    /// A logical line: a value may go on behind a backslash or between quotation marks.
    struct Line {
        int number = 0;         ///< from 1
        QByteArray text;        ///< without its end, with line ends inside it
        bool openQuote = false; ///< a line end stands between quotation marks

        bool isHashComment() const { return text.trimmed().startsWith('#') && !text.contains('\n'); }
        /// No comment, section, or key with its value, or one that swallows the next line.
        bool isBad() const;
    };
    /// A section or a key, by its names in the settings layer.
    struct Entry {
        int line = 0;
        /// Empty for keys before the first section, and for those of [General], in any case.
        QString section;
        /// Empty for the section itself.
        QString key;
        QString path() const { return section.isEmpty() ? key : section + QLatin1Char('/') + key; }
    };

    explicit QUORSettingsText(const QByteArray& content);

    QByteArray toBytes() const;
    const QList<Line>& getLines() const { return _lines; }
    /// In the order of the file. Keys without a section stand first.
    QList<Entry> getKeys() const;
    QList<Entry> getSections() const;

    /// Replaces the value of the last line that has this path, which counts, and drops the others. A new
    /// key goes behind its array's, or its section's, last one; a new section to the end.
    void set(const QString& section, const QString& key, const QString& value);
    void remove(const QString& path);

    /// A value as a settings file must hold it to be read back unchanged.
    static QByteArray encode(const QString& value);

private:
    static QList<Line> split(const QByteArray& content);
    void locate();
    void append(const QString& section, const QString& key, const QString& value);

    QByteArray _mark;    ///< the byte order mark, where there is one
    QByteArray _lineEnd; ///< of new lines
    bool _isEnded = true;
    QList<Line> _lines;
    QList<Entry> _places; ///< one for each line; without a key what is no key
};
