// SPDX-License-Identifier: MIT
#include "ScalePicture.h"

#include "QUORColormap.h"
#include "QUORDataType.h"

#include <QPainter>

#include <algorithm>

namespace {

constexpr int WIDTH = 260;
constexpr int HEIGHT = 640;
constexpr int TOP = 56;
constexpr int BOTTOM = 24;
constexpr int BAR_LEFT = 24;
constexpr int BAR_WIDTH = 70;
constexpr int LEAST_GAP = 15; // pixels between two labels
constexpr double CLOSE = 0.002;

} // namespace

QImage ScalePicture::draw(const QUORColorScales::Scale& scale) {
    QImage image(WIDTH, HEIGHT, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    QFont font = painter.font();
    font.setPixelSize(16);
    font.setBold(true);
    painter.setFont(font);
    painter.drawText(BAR_LEFT, 22, scale.name);
    font.setPixelSize(13);
    font.setBold(false);
    painter.setFont(font);
    painter.drawText(BAR_LEFT, 42, scale.units);
    if (scale.seams.size() < 2) {
        return image;
    }
    const QUORColormap map(scale.id, QUORDataType(QUORColorScales::findDataType(scale.dataIndex)),
                           QUORColormap::Display);
    const double low = scale.seams.constFirst();
    const double high = scale.seams.constLast();
    const int length = HEIGHT - TOP - BOTTOM;
    for (int y = 0; y < length; ++y) {
        const double value = high - (y + 0.5) / length * (high - low);
        const std::array<int, 3> color = map.getColor(value);
        painter.fillRect(BAR_LEFT, TOP + y, BAR_WIDTH, 1, QColor(color[0], color[1], color[2]));
    }
    painter.drawRect(BAR_LEFT, TOP, BAR_WIDTH, length);
    int last = HEIGHT;
    for (qsizetype i = 0; i < scale.seams.size(); ++i) {
        const double seam = scale.seams.at(i);
        const int y = TOP + int((high - seam) / (high - low) * length);
        // Of two seams that make a jump the upper one has the round value.
        const bool jumps = scale.seams.value(i + 1, high + high - low) - seam < CLOSE * (high - low);
        if (last - y < LEAST_GAP || jumps) {
            continue;
        }
        last = y;
        painter.drawLine(BAR_LEFT + BAR_WIDTH, y, BAR_LEFT + BAR_WIDTH + 6, y);
        painter.drawText(BAR_LEFT + BAR_WIDTH + 12, y + 5, QString::number(seam));
    }
    return image;
}
