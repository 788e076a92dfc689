// SPDX-License-Identifier: MIT
#include "QUORPlot.h"

#include "QUORColormap.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr double METRES_PER_KM = 1000.0;
constexpr int MARGIN_LEFT = 44;
constexpr int MARGIN_BOTTOM = 36;
constexpr int MARGIN = 10;
constexpr double MOST_TICKS = 6.0;

QRgb colorOf(const QUORColormap& colormap, double value) {
    const std::array<int, 3> rgb = colormap.getColor(value);
    return qRgb(rgb[0], rgb[1], rgb[2]);
}

/// A step of 1, 2 or 5 times a power of ten.
double stepFor(double range) {
    const double rough = std::max(range, 1e-9) / MOST_TICKS;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= rough) {
            return factor * power;
        }
    }
    return 10.0 * power;
}

} // namespace

QUORPlot::QUORPlot(QWidget* parent) : QWidget(parent) {
    setMinimumSize(minimumSizeHint());
}

QUORPlot::~QUORPlot() = default;

void QUORPlot::clear() {
    _levels.clear();
    _section = {};
    update();
}

void QUORPlot::showProfile(const QList<QUORProductReader::Level>& levels, const QUORDataType& type,
                           const QUORColormap& colormap) {
    clear();
    _levels = levels;
    _colors.clear();
    for (const auto& level : levels) {
        _colors.append(level.volume.value ? colorOf(colormap, *level.volume.value) : 0);
    }
    _across = {type.getMinDisplayValue(), type.getMaxDisplayValue()};
    _acrossTitle = type.getQuantityName() + QStringLiteral(", ") + type.getQuantityUnit();
    if (!levels.isEmpty()) {
        _heights = {levels.first().height / METRES_PER_KM,
                    std::max(levels.last().height, levels.first().height + 1.0) / METRES_PER_KM};
    }
}

void QUORPlot::showSection(const QUORProductReader::Section& section, const QUORDataType& type,
                           const QUORColormap& colormap) {
    clear();
    const int rows = int(section.heights.size());
    if (rows == 0) {
        return;
    }
    _section = QImage(int(section.columns.size()), rows, QImage::Format_ARGB32);
    _section.fill(Qt::transparent);
    for (int x = 0; x < section.columns.size(); ++x) {
        for (int z = 0; z < rows; ++z) {
            const auto& value = section.columns.at(x).at(z);
            if (value.value) {
                _section.setPixel(x, rows - 1 - z, colorOf(colormap, *value.value));
            }
        }
    }
    _across = {0.0, std::max(section.length, 1.0) / METRES_PER_KM};
    // Values stand for the half step around their levels.
    const double half = rows > 1 ? 0.5 * (section.heights.at(1) - section.heights.at(0)) : 0.5;
    _heights = {(section.heights.first() - half) / METRES_PER_KM,
                (section.heights.last() + half) / METRES_PER_KM};
    _acrossTitle = tr("along the line, km") + QStringLiteral("; ") + type.getQuantityName();
}

QPointF QUORPlot::place(const QRectF& area, double across, double height) const {
    return {area.left() + area.width() * (across - _across.low) / (_across.high - _across.low),
            area.bottom() - area.height() * (height - _heights.low) / (_heights.high - _heights.low)};
}

void QUORPlot::drawAxes(QPainter& painter, const QRectF& area) const {
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(area);
    const double across = stepFor(_across.high - _across.low);
    const double up = stepFor(_heights.high - _heights.low);
    const auto text = [](double value) { return QString::number(value, 'g', 4); };
    for (double x = std::ceil(_across.low / across) * across; x <= _across.high; x += across) {
        const double left = place(area, x, 0.0).x();
        painter.setPen(palette().color(QPalette::Mid));
        painter.drawLine(QPointF(left, area.top()), QPointF(left, area.bottom()));
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(QRectF(left - 30, area.bottom() + 1, 60, 15), Qt::AlignCenter, text(x));
    }
    for (double z = std::ceil(_heights.low / up) * up; z <= _heights.high; z += up) {
        const double top = place(area, 0.0, z).y();
        painter.setPen(palette().color(QPalette::Mid));
        painter.drawLine(QPointF(area.left(), top), QPointF(area.right(), top));
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(QRectF(0, top - 8, MARGIN_LEFT - 4, 16), Qt::AlignRight | Qt::AlignVCenter, text(z));
    }
    painter.drawText(QRectF(area.left(), area.bottom() + 16, area.width(), 18), Qt::AlignCenter,
                     _acrossTitle);
    painter.save();
    painter.translate(10, area.center().y());
    painter.rotate(-90);
    painter.drawText(QRectF(-80, -8, 160, 16), Qt::AlignCenter, tr("height, km"));
    painter.restore();
}

void QUORPlot::drawProfile(QPainter& painter, const QRectF& area) const {
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath path;
    bool broken = true;
    for (const auto& level : _levels) {
        if (!level.volume.value) {
            broken = true;
            continue;
        }
        const QPointF at = place(area, *level.volume.value, level.height / METRES_PER_KM);
        broken ? path.moveTo(at) : path.lineTo(at);
        broken = false;
    }
    painter.setPen(QPen(palette().color(QPalette::Text), 1.5));
    painter.drawPath(path);
    for (int i = 0; i < _levels.size(); ++i) {
        if (_levels.at(i).volume.value) {
            painter.setBrush(QColor(_colors.at(i)));
            painter.drawEllipse(
                place(area, *_levels.at(i).volume.value, _levels.at(i).height / METRES_PER_KM), 4, 4);
        }
    }
}

void QUORPlot::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().base());
    const QRectF area(MARGIN_LEFT, MARGIN, width() - MARGIN_LEFT - MARGIN, height() - MARGIN - MARGIN_BOTTOM);
    if (_levels.isEmpty() && _section.isNull()) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, tr("Nothing chosen yet"));
        return;
    }
    if (!_section.isNull()) {
        painter.drawImage(area, _section);
    }
    drawAxes(painter, area);
    if (_section.isNull()) {
        drawProfile(painter, area);
    }
}
