// SPDX-License-Identifier: MIT
#include "ImageComparer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPainter>

#include <gtest/gtest.h>

#include <functional>

namespace {

QImage drawing(const std::function<void(QPainter&)>& more = {}, const QPointF& centre = {100.0, 75.0},
               const QColor& colour = QColor(220, 60, 30)) {
    QImage picture(200, 150, QImage::Format_RGB888);
    picture.fill(QColor(38, 64, 77));
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawEllipse(centre, 40.0, 30.0);
    painter.setPen(QPen(Qt::black, 3.0));
    painter.drawLine(10, 140, 60, 140);
    if (more) {
        more(painter);
    }
    return picture;
}

QImage rougher(const QImage& picture) {
    QImage result = picture;
    for (int y = 0; y < result.height(); ++y) {
        for (int x = 0; x < result.width(); ++x) {
            const QRgb p = result.pixel(x, y);
            const int change = (x * 7 + y * 13) % 5 - 2;
            const auto shifted = [&](int value) { return std::clamp(value + change, 0, 255); };
            result.setPixel(x, y, qRgb(shifted(qRed(p)), shifted(qGreen(p)), shifted(qBlue(p))));
        }
    }
    return result;
}

} // namespace

TEST(ImageComparerTest, AcceptsSmallAndRejectsRealDifferences) {
    const auto hideLine = [](QPainter& p) { p.fillRect(5, 135, 60, 12, QColor(38, 64, 77)); };
    const auto extraDot = [](QPainter& p) { p.fillRect(150, 20, 8, 8, Qt::white); };
    struct Row {
        const char* name;
        QImage picture;
        bool same;
    };
    const std::vector<Row> rows{
        {"itself", drawing(), true},
        {"other shades and noise", rougher(drawing()), true},
        {"a quarter of a pixel", drawing({}, {100.25, 75.2}), true},
        {"moved", drawing({}, {108.0, 75.0}), false},
        {"other colour, same brightness", drawing({}, {100.0, 75.0}, QColor(30, 130, 90)), false},
        {"a line is missing", drawing(hideLine), false},
        {"something small is new", drawing(extraDot), false},
        {"mirrored", drawing().mirrored(false, true), false},
        {"other size", drawing().scaled(201, 150), false},
        {"empty", QImage(), false},
    };
    for (const Row& row : rows) {
        const ImageComparer::Distance distance = ImageComparer::compare(row.picture, drawing());
        EXPECT_EQ(distance.isSame(), row.same) << row.name << ": " << distance.structure << ", "
                                               << distance.worstWindow << ", " << distance.colour;
    }
}

TEST(ImageComparerTest, AFailureLeavesThePicturesBehind) {
    const QString name = QStringLiteral("comparer-self-test");
    const auto left = [&](const char* kind) {
        const QString path = ImageComparer::failurePath(name + QLatin1String(kind));
        const bool exists = QFileInfo::exists(path);
        QFile::remove(path);
        return exists;
    };
    EXPECT_FALSE(ImageComparer::matchesBaseline(drawing(), QStringLiteral("no-such-baseline")));
    EXPECT_TRUE(QFile::remove(ImageComparer::failurePath(QStringLiteral("no-such-baseline-result"))));

    EXPECT_TRUE(ImageComparer::matchesBaseline(drawing(), name));
    EXPECT_FALSE(left("-result"));
    EXPECT_FALSE(ImageComparer::matchesBaseline(drawing({}, {60.0, 75.0}), name));
    EXPECT_TRUE(left("-result"));
    EXPECT_TRUE(left("-baseline"));
    EXPECT_TRUE(left("-difference"));
}
