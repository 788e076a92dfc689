// SPDX-License-Identifier: MIT
#include "ImageComparer.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace {

constexpr int WINDOW = 8;

/// Half the size, each pixel the mean of four.
QImage smoothed(const QImage& picture) {
    QImage result((picture.width() + 1) / 2, (picture.height() + 1) / 2, QImage::Format_RGB888);
    for (int y = 0; y < result.height(); ++y) {
        for (int x = 0; x < result.width(); ++x) {
            std::array<int, 3> sum{};
            for (int i = 0; i < 4; ++i) {
                const QRgb p = picture.pixel(std::min(2 * x + i % 2, picture.width() - 1),
                                             std::min(2 * y + i / 2, picture.height() - 1));
                sum[0] += qRed(p);
                sum[1] += qGreen(p);
                sum[2] += qBlue(p);
            }
            result.setPixel(x, y, qRgb((sum[0] + 2) / 4, (sum[1] + 2) / 4, (sum[2] + 2) / 4));
        }
    }
    return result;
}

double brightness(QRgb p) {
    return 0.299 * qRed(p) + 0.587 * qGreen(p) + 0.114 * qBlue(p);
}

/// Structural similarity of one window: compares means, contrasts and what moves together.
double windowSimilarity(const QImage& a, const QImage& b, int left, int top) {
    const int right = std::min(left + WINDOW, a.width());
    const int bottom = std::min(top + WINDOW, a.height());
    double n = 0.0;
    double sumA = 0.0;
    double sumB = 0.0;
    double sumAA = 0.0;
    double sumBB = 0.0;
    double sumAB = 0.0;
    for (int y = top; y < bottom; ++y) {
        for (int x = left; x < right; ++x) {
            const double pa = brightness(a.pixel(x, y));
            const double pb = brightness(b.pixel(x, y));
            n += 1.0;
            sumA += pa;
            sumB += pb;
            sumAA += pa * pa;
            sumBB += pb * pb;
            sumAB += pa * pb;
        }
    }
    const double meanA = sumA / n;
    const double meanB = sumB / n;
    const double varianceA = sumAA / n - meanA * meanA;
    const double varianceB = sumBB / n - meanB * meanB;
    const double covariance = sumAB / n - meanA * meanB;
    constexpr double C1 = 6.5;  // the usual stabilisers: (0.01 * 255)^2
    constexpr double C2 = 58.5; // and (0.03 * 255)^2
    return (2.0 * meanA * meanB + C1) * (2.0 * covariance + C2) /
           ((meanA * meanA + meanB * meanB + C1) * (varianceA + varianceB + C2));
}

double meanColourDifference(const QImage& a, const QImage& b) {
    double sum = 0.0;
    for (int y = 0; y < a.height(); ++y) {
        const uchar* rowA = a.constScanLine(y);
        const uchar* rowB = b.constScanLine(y);
        for (int i = 0; i < a.width() * 3; ++i) {
            sum += std::abs(int(rowA[i]) - int(rowB[i]));
        }
    }
    return sum / (3.0 * a.width() * a.height());
}

QImage differencePicture(const QImage& a, const QImage& b) {
    QImage picture(std::max(a.width(), b.width()), std::max(a.height(), b.height()), QImage::Format_RGB888);
    picture.fill(Qt::white);
    for (int y = 0; y < std::min(a.height(), b.height()); ++y) {
        for (int x = 0; x < std::min(a.width(), b.width()); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            picture.setPixel(x, y,
                             qRgb(std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                                  std::abs(qBlue(p) - qBlue(q))));
        }
    }
    return picture;
}

} // namespace

QString ImageComparer::baselinePath(const QString& name) {
    return QStringLiteral(QUOR_BASELINE_DIR "/") + name + QStringLiteral(".png");
}

QString ImageComparer::failurePath(const QString& name) {
    return QStringLiteral(QUOR_FAILED_IMAGE_DIR "/") + name + QStringLiteral(".png");
}

ImageComparer::Distance ImageComparer::compare(const QImage& a, const QImage& b) {
    if (a.size() != b.size() || a.isNull()) {
        return {};
    }
    const QImage softA = smoothed(a);
    const QImage softB = smoothed(b);
    Distance distance{0.0, 1.0, meanColourDifference(softA, softB)};
    int windows = 0;
    for (int y = 0; y < softA.height(); y += WINDOW) {
        for (int x = 0; x < softA.width(); x += WINDOW) {
            const double similarity = windowSimilarity(softA, softB, x, y);
            distance.structure += similarity;
            distance.worstWindow = std::min(distance.worstWindow, similarity);
            ++windows;
        }
    }
    distance.structure /= windows;
    return distance;
}

testing::AssertionResult ImageComparer::matchesBaseline(const QImage& picture, const QString& name) {
    const QImage baseline(baselinePath(name));
    const Distance distance = compare(picture, baseline);
    if (distance.isSame()) {
        return testing::AssertionSuccess();
    }
    QDir().mkpath(QFileInfo(failurePath(name)).path());
    picture.save(failurePath(name + QStringLiteral("-result")));
    auto failure = testing::AssertionFailure();
    failure << qPrintable(failurePath(name + QStringLiteral("-result")));
    if (baseline.isNull()) {
        return failure << " has no baseline " << qPrintable(baselinePath(name));
    }
    baseline.save(failurePath(name + QStringLiteral("-baseline")));
    differencePicture(picture, baseline).save(failurePath(name + QStringLiteral("-difference")));
    return failure << " differs from its baseline: structure " << distance.structure << ", worst window "
                   << distance.worstWindow << ", colour " << distance.colour;
}
