// SPDX-License-Identifier: MIT
#include "QUORPaletteFile.h"

#include <QColor>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <optional>

namespace {

using Color = QUORPaletteFile::Color;
using Numbers = QList<double>;

constexpr qsizetype MAXIMUM_INTERVALS = 1000;
const QString TOO_MANY = QStringLiteral("it has more than 1000 intervals");

QString inLine(int line, const QString& problem) {
    return QStringLiteral("line ") + QString::number(line) + QLatin1Char(' ') + problem;
}

std::optional<Numbers> toNumbers(const QStringList& words) {
    Numbers numbers;
    for (const QString& word : words) {
        bool good = false;
        numbers.append(word.toDouble(&good));
        if (!good || !std::isfinite(numbers.constLast())) {
            return std::nullopt;
        }
    }
    return numbers;
}

std::optional<Color> toColor(const Numbers& numbers, qsizetype first) {
    Color color{};
    for (qsizetype i = 0; i < 3; ++i) {
        const double component = numbers.value(first + i, -1.0);
        if (component < 0.0 || component > 255.0) {
            return std::nullopt;
        }
        color[std::size_t(i)] = int(std::lround(component));
    }
    return color;
}

std::optional<Color> toColorFromHsv(const Numbers& numbers, qsizetype first) {
    const double hue = numbers.value(first, -1.0);
    const double saturation = numbers.value(first + 1, -1.0);
    const double value = numbers.value(first + 2, -1.0);
    if (hue < 0.0 || hue > 360.0 || saturation < 0.0 || saturation > 1.0 || value < 0.0 || value > 1.0) {
        return std::nullopt;
    }
    // The six sectors of the colour circle, as in every textbook of computer graphics.
    const auto component = [&](double shift) {
        const double sector = std::fmod(shift + hue / 60.0, 6.0);
        return int(std::lround(
            255.0 * (value - value * saturation * std::clamp(std::min(sector, 4.0 - sector), 0.0, 1.0))));
    };
    return Color{component(5.0), component(3.0), component(1.0)};
}

QStringList toWords(QString text) {
    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    return text.split(blanks, Qt::SkipEmptyParts);
}

/// What the words of a colour in a .cpt are: "R/G/B" or "R G B", a name, or a shade of grey.
QStringList splitColors(const QStringList& words) {
    QStringList result;
    for (const QString& word : words) {
        if (word.startsWith(QLatin1Char('#')) || (!word.isEmpty() && word.at(0).isLetter())) {
            const QColor color(word);
            result += color.isValid()
                          ? QStringList{QString::number(color.red()), QString::number(color.green()),
                                        QString::number(color.blue())}
                          : QStringList{word};
        } else {
            result += word.split(QLatin1Char('/'));
        }
    }
    return result;
}

} // namespace

QUORPaletteFile QUORPaletteFile::parse(const QByteArray& content, QString& error) {
    QUORPaletteFile palette;
    QByteArray text = content;
    const QList<QByteArray> lines = text.replace("\r\n", "\n").replace('\r', '\n').split('\n');
    const bool radar = std::ranges::any_of(lines, [](const QByteArray& line) {
        const QByteArray word = line.trimmed().toLower();
        return word.startsWith("color:") || word.startsWith("color4:") || word.startsWith("solidcolor");
    });
    if (lines.constFirst().trimmed() == "JASC-PAL") {
        error = palette.readColors(lines);
    } else {
        error = radar ? palette.readRadarTable(lines) : palette.readTable(lines);
    }
    error = error.isEmpty() ? palette.finish() : error;
    if (!error.isEmpty()) {
        palette._intervals.clear();
    }
    return palette;
}

QString QUORPaletteFile::readTable(const QList<QByteArray>& lines) {
    bool hsv = false;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QString line = QString::fromUtf8(lines.at(i)).trimmed();
        if (line.startsWith(QLatin1Char('#'))) {
            hsv = hsv || (line.contains(QStringLiteral("COLOR_MODEL")) &&
                          line.contains(QStringLiteral("HSV"), Qt::CaseInsensitive));
            continue;
        }
        QStringList words = toWords(line.section(QLatin1Char(';'), 0, 0));
        if (words.isEmpty() ||
            QStringList{QStringLiteral("B"), QStringLiteral("F"), QStringLiteral("N")}.contains(
                words.constFirst())) {
            continue;
        }
        // An annotation flag may stand behind the two colours.
        if (QStringList{QStringLiteral("L"), QStringLiteral("U"), QStringLiteral("B")}.contains(
                words.constLast())) {
            words.removeLast();
        }
        const auto numbers = toNumbers(splitColors(words));
        if (!numbers || numbers->size() != 8) {
            return inLine(int(i) + 1, QStringLiteral("is no \"value colour value colour\""));
        }
        const auto lower = hsv ? toColorFromHsv(*numbers, 1) : toColor(*numbers, 1);
        const auto upper = hsv ? toColorFromHsv(*numbers, 5) : toColor(*numbers, 5);
        if (!lower || !upper) {
            return inLine(int(i) + 1, QStringLiteral("has a colour out of range"));
        }
        if (_intervals.size() == MAXIMUM_INTERVALS) {
            return TOO_MANY;
        }
        _intervals.append({numbers->at(0), *lower, *upper});
        _end = numbers->at(4);
    }
    return {};
}

QString QUORPaletteFile::readRadarTable(const QList<QByteArray>& lines) {
    struct Row {
        double value;
        Color color;
        std::optional<Color> until;
    };
    QList<Row> rows;
    double scale = 1.0;
    double offset = 0.0;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QString line = QString::fromUtf8(lines.at(i)).section(QLatin1Char(';'), 0, 0).trimmed();
        const QString word = line.section(QLatin1Char(':'), 0, 0).trimmed().toLower();
        const QString rest = line.section(QLatin1Char(':'), 1).trimmed();
        if (word == QLatin1String("units")) {
            _units = rest;
        }
        const bool alpha = word.endsWith(QLatin1Char('4'));
        const bool solid = word.startsWith(QLatin1String("solidcolor"));
        const bool setsScale = word == QLatin1String("scale") || word == QLatin1String("offset");
        if (!solid && !setsScale && word != QLatin1String("color") && word != QLatin1String("color4")) {
            continue;
        }
        const auto numbers = toNumbers(toWords(rest));
        if (!numbers || (setsScale && numbers->size() != 1) || (!setsScale && numbers->size() < 4)) {
            return inLine(int(i) + 1, QStringLiteral("cannot be read"));
        }
        if (setsScale) {
            (word == QLatin1String("scale") ? scale : offset) = numbers->constFirst();
            continue;
        }
        const qsizetype second = alpha ? 5 : 4;
        const auto color = toColor(*numbers, 1);
        const auto until = numbers->size() >= second + 3 ? toColor(*numbers, second) : std::nullopt;
        if (!color || (numbers->size() >= second + 3 && !until)) {
            return inLine(int(i) + 1, QStringLiteral("has a colour out of range"));
        }
        if (rows.size() == MAXIMUM_INTERVALS) {
            return TOO_MANY;
        }
        rows.append({numbers->constFirst(), *color, solid ? color : until});
    }
    if (scale == 0.0) {
        return QStringLiteral("its scale is 0");
    }
    std::ranges::stable_sort(rows, {}, &Row::value);
    for (qsizetype i = 0; i < rows.size(); ++i) {
        const Color next = rows.value(i + 1, rows.at(i)).color;
        _intervals.append(
            {rows.at(i).value / scale - offset, rows.at(i).color, rows.at(i).until.value_or(next)});
    }
    if (rows.size() > 1) {
        const double last = _intervals.constLast().value;
        _end = last + (last - _intervals.at(rows.size() - 2).value);
    }
    return {};
}

QString QUORPaletteFile::readColors(const QList<QByteArray>& lines) {
    _hasValues = false;
    for (qsizetype i = 3; i < lines.size(); ++i) {
        const QStringList words = toWords(QString::fromUtf8(lines.at(i)));
        if (words.isEmpty()) {
            continue;
        }
        const auto numbers = toNumbers(words);
        const auto color = numbers ? toColor(*numbers, 0) : std::nullopt;
        if (!color) {
            return inLine(int(i) + 1, QStringLiteral("is no \"R G B\""));
        }
        if (_intervals.size() == MAXIMUM_INTERVALS) {
            return TOO_MANY;
        }
        _intervals.append({double(_intervals.size()), *color, *color});
    }
    _end = double(_intervals.size());
    return {};
}

QString QUORPaletteFile::finish() {
    if (_intervals.isEmpty()) {
        return QStringLiteral("it holds no colours");
    }
    std::ranges::stable_sort(_intervals, {}, &Interval::value);
    if (_intervals.size() == 1 && !(_end > _intervals.constFirst().value)) {
        return QStringLiteral("it holds one colour only");
    }
    const auto same = std::ranges::adjacent_find(_intervals, {}, &Interval::value);
    if (same != _intervals.cend()) {
        return QStringLiteral("two intervals begin at ") + QString::number(same->value);
    }
    _end = std::max(_end, _intervals.constLast().value);
    return {};
}

void QUORPaletteFile::spread(double low, double high) {
    const double width = (high - low) / double(std::max<qsizetype>(_intervals.size(), 1));
    for (qsizetype i = 0; i < _intervals.size(); ++i) {
        _intervals[i].value = low + double(i) * width;
    }
    _end = high;
    _hasValues = true;
}
