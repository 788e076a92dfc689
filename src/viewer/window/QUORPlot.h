// SPDX-License-Identifier: MIT
#pragma once

#include "QUORProductReader.h"

#include <QImage>
#include <QWidget>

#include <memory>

class QUORColormap;
class QPainter;

/// A plot of measured values over height: a profile over one place, or a section along a line in the colours
/// of the scale. Heights are above sea level.
class QUORPlot : public QWidget {
    Q_OBJECT

public:
    explicit QUORPlot(QWidget* parent = nullptr);
    ~QUORPlot() override;

    void showProfile(const QList<QUORProductReader::Level>& levels, const QUORDataType& type,
                     const QUORColormap& colormap);
    void showSection(const QUORProductReader::Section& section, const QUORDataType& type,
                     const QUORColormap& colormap);
    void clear();

    QSize sizeHint() const override { return {280, 240}; }
    QSize minimumSizeHint() const override { return {160, 140}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    struct Range {
        double low = 0.0;
        double high = 1.0;
    };

    void drawAxes(QPainter& painter, const QRectF& area) const;
    void drawProfile(QPainter& painter, const QRectF& area) const;
    QPointF place(const QRectF& area, double across, double height) const;

    QList<QUORProductReader::Level> _levels;
    QList<QRgb> _colors;
    QImage _section;
    Range _across;
    Range _heights; ///< kilometres
    QString _acrossTitle;
};
