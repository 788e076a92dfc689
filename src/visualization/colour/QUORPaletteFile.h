// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <array>

/// A palette as other programs exchange it, read from its text:
/// - colour palette tables (.cpt): "z0 R G B z1 R G B" or "z0 R/G/B z1 R/G/B" a line, RGB or HSV, with
///   comments behind "#"; the lines B, F and N (background, foreground, no data) do not count;
/// - colour tables of radar displays (.pal): "Color: value R G B [R G B]" a line, with "Color4:",
///   "SolidColor:", "Units:", "Scale:" and "Offset:";
/// - lists of colours (.pal): "JASC-PAL", the number of colours and one "R G B" a line, without values.
/// Nothing in it is trusted: numbers are finite, components 0 to 255, at most 1000 intervals.
class QUORPaletteFile {
public:
    /// Components 0 to 255.
    using Color = std::array<int, 3>;
    struct Interval {
        double value = 0.0; ///< where it begins
        Color lower{};
        Color upper{};
    };

    /// The last interval ends at `end`. Empty, with the reason in `error` and the line where one is to blame,
    /// for what is no palette.
    static QUORPaletteFile parse(const QByteArray& content, QString& error);

    bool isEmpty() const { return _intervals.isEmpty(); }
    /// Ascending by their value.
    const QList<Interval>& getIntervals() const { return _intervals; }
    double getEnd() const { return _end; }
    /// Empty when the file names none.
    QString getUnits() const { return _units; }
    /// False for a list of colours; `spread` then gives them values.
    bool hasValues() const { return _hasValues; }
    void spread(double low, double high);

private:
    QString readTable(const QList<QByteArray>& lines);
    QString readRadarTable(const QList<QByteArray>& lines);
    QString readColors(const QList<QByteArray>& lines);
    QString finish();

    QList<Interval> _intervals;
    double _end = 0.0;
    QString _units;
    bool _hasValues = true;
};
