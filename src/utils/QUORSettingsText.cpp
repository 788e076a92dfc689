// SPDX-License-Identifier: MIT
#include "QUORSettingsText.h"

#include <algorithm>

namespace {

constexpr auto BYTE_ORDER_MARK = "\xEF\xBB\xBF";
const QString GENERAL = QStringLiteral("General");

qsizetype skipEscape(const QByteArray& content, qsizetype backslash) {
    const bool windowsEnd = content.mid(backslash + 1, 2) == "\r\n";
    return backslash + (windowsEnd ? 2 : 1);
}

/// Where a line ends, and where the comment in it begins.
struct Extent {
    qsizetype end;
    qsizetype comment;
    bool openQuote;
};

Extent measureLine(const QByteArray& content, qsizetype start) {
    bool quoted = false;
    bool openQuote = false;
    for (qsizetype i = start; i < content.size(); ++i) {
        const char c = content.at(i);
        if (c == '\\') {
            i = skipEscape(content, i);
        } else if (c == '"') {
            quoted = !quoted;
        } else if (c == '\n' && !quoted) {
            return {i, i, openQuote};
        } else if (c == '\n') {
            openQuote = true;
        } else if (c == ';' && !quoted) {
            const qsizetype end = content.indexOf('\n', i);
            return {end < 0 ? content.size() : end, i, openQuote};
        }
    }
    return {content.size(), content.size(), openQuote};
}

/// A name of a section or key, with its escapes resolved: "%20", "%U00e9".
QString decodeName(const QByteArray& name) {
    QString text = QString::fromUtf8(name).replace(QLatin1Char('\\'), QLatin1Char('/'));
    for (qsizetype i = text.indexOf(QLatin1Char('%')); i >= 0; i = text.indexOf(QLatin1Char('%'), i + 1)) {
        const bool wide = i + 1 < text.size() && text.at(i + 1) == QLatin1Char('U');
        const int digits = wide ? 4 : 2;
        bool good = false;
        const auto code = text.mid(i + (wide ? 2 : 1), digits).toUShort(&good, 16);
        if (good) {
            text.replace(i, digits + (wide ? 2 : 1), QChar(code));
        }
    }
    return text;
}

bool isPlain(QChar c, bool inSection) {
    return (c.unicode() < 128 && c.isLetterOrNumber()) || QStringLiteral("_-.").contains(c) ||
           (inSection && c == QLatin1Char(' '));
}

QByteArray encodeName(const QString& name, bool inSection) {
    QByteArray text;
    for (const QChar c : name) {
        if (isPlain(c, inSection)) {
            text += c.toLatin1();
        } else if (c == QLatin1Char('/')) {
            text += '\\';
        } else {
            const bool wide = c.unicode() > 0xFF;
            text += (wide ? "%U" : "%") +
                    QByteArray::number(c.unicode(), 16).rightJustified(wide ? 4 : 2, '0').toUpper();
        }
    }
    return text;
}

QString toSectionName(const QByteArray& text) {
    const QByteArray name = text.trimmed().mid(1);
    const QByteArray inner = name.left(name.indexOf(']')).trimmed();
    if (inner.compare("general", Qt::CaseInsensitive) == 0) {
        return {};
    }
    return inner.compare("%general", Qt::CaseInsensitive) == 0 ? GENERAL : decodeName(inner);
}

QByteArray toHeading(const QString& section) {
    return '[' + (section == GENERAL ? QByteArray("%General") : encodeName(section, true)) + ']';
}

bool isSection(const QUORSettingsText::Line& line) {
    return line.text.trimmed().startsWith('[');
}

bool isKey(const QUORSettingsText::Line& line) {
    const QByteArray text = line.text.trimmed();
    return text.contains('=') && !text.startsWith('[') && !text.startsWith(';') && !text.startsWith('#');
}

/// The array, or array of arrays, that a key is an element of or the size of, with a "/" behind it.
QString arrayOf(const QString& key) {
    return key.left(key.indexOf(QLatin1Char('/')) + 1);
}

} // namespace

bool QUORSettingsText::Line::isBad() const {
    const QByteArray trimmed = text.trimmed();
    const qsizetype end = trimmed.indexOf('\n');
    if (openQuote || (end >= 0 && trimmed.indexOf('=', end) >= 0)) {
        return true; // holds the next line, most likely against the writer's will
    }
    if (trimmed.startsWith('[')) {
        return !trimmed.contains(']');
    }
    return !trimmed.isEmpty() && !trimmed.startsWith(';') && !isHashComment() &&
           (trimmed.startsWith('#') || !trimmed.contains('='));
}

QUORSettingsText::QUORSettingsText(const QByteArray& content)
    : _mark(content.startsWith(BYTE_ORDER_MARK) ? BYTE_ORDER_MARK : ""),
      _lineEnd(content.contains("\r\n") ? "\r\n" : "\n"),
      _lines(split(content.mid(_mark.size()))) {
    // A line end that an open quotation mark or a backslash swallowed stands in the line already.
    _isEnded = _lines.isEmpty() || (content.endsWith('\n') && !_lines.constLast().text.endsWith('\n'));
    locate();
}

QList<QUORSettingsText::Line> QUORSettingsText::split(const QByteArray& content) {
    QList<Line> lines;
    int number = 1;
    qsizetype start = 0;
    while (start < content.size()) {
        const Extent extent = measureLine(content, start);
        const QByteArray text = content.mid(start, extent.end - start);
        lines.append({number, text, extent.openQuote});
        number += int(text.count('\n')) + 1;
        start = extent.end + 1;
    }
    return lines;
}

void QUORSettingsText::locate() {
    _places.clear();
    QString section;
    for (const Line& line : _lines) {
        if (isSection(line)) {
            section = toSectionName(line.text);
        }
        _places.append(
            {line.number, section,
             isKey(line) ? decodeName(line.text.left(line.text.indexOf('=')).trimmed()) : QString()});
    }
}

QByteArray QUORSettingsText::toBytes() const {
    QByteArray content = _mark;
    for (qsizetype i = 0; i < _lines.size(); ++i) {
        content += _lines.at(i).text;
        content += i + 1 < _lines.size() || _isEnded ? "\n" : "";
    }
    return content;
}

QList<QUORSettingsText::Entry> QUORSettingsText::getKeys() const {
    QList<Entry> keys = _places;
    keys.removeIf([](const Entry& place) { return place.key.isEmpty(); });
    return keys;
}

QList<QUORSettingsText::Entry> QUORSettingsText::getSections() const {
    QList<Entry> sections;
    for (qsizetype i = 0; i < _lines.size(); ++i) {
        if (isSection(_lines.at(i))) {
            sections.append(_places.at(i));
        }
    }
    return sections;
}

void QUORSettingsText::set(const QString& section, const QString& key, const QString& value) {
    const QString path = Entry{0, section, key}.path();
    bool found = false;
    for (qsizetype i = _lines.size() - 1; i >= 0; --i) {
        if (_places.at(i).key.isEmpty() || _places.at(i).path() != path) {
            continue;
        }
        if (found) {
            _lines.removeAt(i);
            _places.removeAt(i);
            continue;
        }
        found = true;
        QByteArray& text = _lines[i].text;
        // A comment behind the value stays, with the blanks before it.
        qsizetype tail = measureLine(text, 0).comment;
        const qsizetype begin = text.indexOf('=') + 1;
        while (tail > begin && QByteArray(" \t\r").contains(text.at(tail - 1))) {
            --tail;
        }
        text.replace(begin, tail - begin, encode(value));
    }
    if (!found) {
        append(section, key, value);
    }
}

void QUORSettingsText::append(const QString& section, const QString& key, const QString& value) {
    const QByteArray carriage = _lineEnd.chopped(1);
    const QString array = arrayOf(key);
    qsizetype behind = -1;
    bool inArray = false;
    bool exists = section.isEmpty();
    for (qsizetype i = 0; i < _lines.size(); ++i) {
        const Entry& place = _places.at(i);
        if (place.section != section) {
            continue;
        }
        exists = true;
        const bool sameArray = !array.isEmpty() && place.key.startsWith(array);
        if (sameArray || (!inArray && (!place.key.isEmpty() || isSection(_lines.at(i))))) {
            behind = i;
            inArray = sameArray;
        }
    }
    if (!exists) {
        if (!_lines.isEmpty() && !_lines.constLast().text.trimmed().isEmpty()) {
            _lines.append({0, carriage});
        }
        _lines.append({0, toHeading(section) + carriage});
        behind = _lines.size() - 1;
    }
    _isEnded = true;
    _lines.insert(behind + 1, {0, encodeName(key, false) + '=' + encode(value) + carriage});
    locate();
}

void QUORSettingsText::remove(const QString& path) {
    for (qsizetype i = _lines.size() - 1; i >= 0; --i) {
        if (!_places.at(i).key.isEmpty() && _places.at(i).path() == path) {
            _lines.removeAt(i);
            _places.removeAt(i);
        }
    }
}

QByteArray QUORSettingsText::encode(const QString& value) {
    QByteArray text;
    bool quotes = value.startsWith(QLatin1Char(' ')) || value.endsWith(QLatin1Char(' '));
    bool afterNumber = false;
    const QByteArray bytes = (value.startsWith(QLatin1Char('@')) ? QLatin1Char('@') + value : value).toUtf8();
    for (const char c : bytes) {
        const auto code = static_cast<unsigned char>(c);
        const bool digit = QByteArray("0123456789abcdefABCDEF").contains(c);
        quotes = quotes || QByteArray(";,=\"").contains(c);
        if (c == '\\' || c == '"') {
            text += '\\';
            text += c;
        } else if (c == '\n' || c == '\r' || c == '\t') {
            text += c == '\n' ? "\\n" : c == '\r' ? "\\r" : "\\t";
        } else if (code < 0x20 || (afterNumber && digit)) {
            text += "\\x" + QByteArray::number(code, 16);
            afterNumber = true;
            continue;
        } else {
            text += c;
        }
        afterNumber = false;
    }
    return quotes ? '"' + text + '"' : text;
}
