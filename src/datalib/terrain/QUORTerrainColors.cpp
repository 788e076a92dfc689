// SPDX-License-Identifier: MIT
#include "QUORTerrainColors.h"

#include "QUORTerrainBlock.h"
#include "QUORTerrainGrid.h"

#include <vtkImageData.h>
#include <vtkMath.h>
#include <vtkPolyData.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

struct RampPoint {
    double height;
    double hue;
    double saturation;
    double value;
};

constexpr std::array RAMP{RampPoint{0.0, 0.56, 0.25, 1.0}, RampPoint{0.1, 0.3, 0.3, 0.9},
                          RampPoint{500.0, 0.1, 0.25, 0.9}, RampPoint{2500.0, 0.1, 0.0, 0.9},
                          RampPoint{4000.0, 0.0, 0.0, 1.0}};

constexpr double SHADE_EXPONENT = 0.05;
constexpr double MIN_SHADE_FACTOR = 0.75;

using RampColors = std::array<std::array<double, 3>, RAMP.size()>;

RampColors makeRampColors() {
    RampColors colors{};
    for (std::size_t i = 0; i < RAMP.size(); ++i) {
        vtkMath::HSVToRGB(RAMP[i].hue, RAMP[i].saturation, RAMP[i].value, &colors[i][0], &colors[i][1],
                          &colors[i][2]);
    }
    return colors;
}

/// Linear in red, green and blue between the ramp's points, constant beyond its ends.
std::array<double, 3> rampColor(double height) {
    static const RampColors colors = makeRampColors();
    if (!(height > RAMP.front().height)) {
        return colors.front();
    }
    for (std::size_t i = 1; i < RAMP.size(); ++i) {
        if (height < RAMP[i].height) {
            const double t = (height - RAMP[i - 1].height) / (RAMP[i].height - RAMP[i - 1].height);
            return {std::lerp(colors[i - 1][0], colors[i][0], t),
                    std::lerp(colors[i - 1][1], colors[i][1], t),
                    std::lerp(colors[i - 1][2], colors[i][2], t)};
        }
    }
    return colors.back();
}

double shadeAt(const QUORTerrainGrid& grid, int row, int column) {
    const int last = grid.side - 1;
    const double a = grid.at(std::max(row - 1, 0), column);
    const double b = grid.at(std::min(row + 1, last), column);
    const double c = grid.at(row, std::min(column + 1, last));
    const double d = grid.at(row, std::max(column - 1, 0));
    return 1.0 / ((1.0 + std::abs(a - b)) * (1.0 + std::abs(c - d)));
}

/// The posts that one pixel covers along a side, and how much of it each has.
struct Span {
    int first;
    std::vector<double> shares;
};

std::vector<Span> makeSpans(int posts, int pixels) {
    std::vector<Span> spans;
    const double length = double(posts) / pixels;
    for (int i = 0; i < pixels; ++i) {
        const double begin = i * length;
        const double end = std::min(begin + length, double(posts));
        Span span{int(begin), {}};
        for (int post = span.first; post < end; ++post) {
            span.shares.push_back((std::min(post + 1.0, end) - std::max(double(post), begin)) / length);
        }
        spans.push_back(span);
    }
    return spans;
}

QUORTerrainColors::Rgb average(const std::vector<QUORTerrainColors::Rgb>& colors, int side, const Span& rows,
                               const Span& columns) {
    std::array<double, 3> sum{};
    for (std::size_t row = 0; row < rows.shares.size(); ++row) {
        const auto* color = &colors[static_cast<std::size_t>(rows.first + int(row)) * side + columns.first];
        for (const double share : columns.shares) {
            for (std::size_t i = 0; i < sum.size(); ++i) {
                sum[i] += (*color)[i] * share * rows.shares[row];
            }
            ++color;
        }
    }
    QUORTerrainColors::Rgb result{};
    std::transform(sum.begin(), sum.end(), result.begin(),
                   [](double v) { return static_cast<unsigned char>(std::clamp(v + 0.5, 0.0, 255.0)); });
    return result;
}

} // namespace

QUORTerrainColors::Rgb QUORTerrainColors::heightToColor(double height, double shade) {
    const double factor = std::clamp(std::pow(shade, SHADE_EXPONENT), MIN_SHADE_FACTOR, 1.0);
    Rgb result{};
    const std::array<double, 3> color = rampColor(height);
    for (std::size_t i = 0; i < result.size(); ++i) {
        result[i] = static_cast<unsigned char>(std::clamp(color[i] * factor * 255.0, 0.0, 255.0));
    }
    return result;
}

vtkSmartPointer<vtkImageData> QUORTerrainColors::makeSeaTexture() {
    static const vtkSmartPointer<vtkImageData> sea =
        makeTexture(QUORTerrainGrid(QUORTerrainBlock::TEXTURE_SIDE));
    // An image of its own: what reads it writes notes of its own to it, on other threads.
    auto texture = vtkSmartPointer<vtkImageData>::New();
    texture->ShallowCopy(sea);
    return texture;
}

vtkSmartPointer<vtkImageData> QUORTerrainColors::makeTexture(const QUORTerrainGrid& grid) {
    std::vector<Rgb> colors;
    colors.reserve(grid.heights.size());
    for (int row = 0; row < grid.side; ++row) {
        for (int column = 0; column < grid.side; ++column) {
            colors.push_back(heightToColor(grid.at(row, column), shadeAt(grid, row, column)));
        }
    }
    constexpr int SIDE = QUORTerrainBlock::TEXTURE_SIDE;
    const std::vector<Span> spans = makeSpans(grid.side, SIDE);
    auto texture = vtkSmartPointer<vtkImageData>::New();
    texture->SetDimensions(SIDE, SIDE, 1);
    texture->AllocateScalars(VTK_UNSIGNED_CHAR, 3);
    for (int row = 0; row < SIDE; ++row) {
        auto* pixel = static_cast<unsigned char*>(texture->GetScalarPointer(0, SIDE - 1 - row, 0));
        for (int column = 0; column < SIDE; ++column, pixel += 3) {
            const Rgb color = average(colors, grid.side, spans[row], spans[column]);
            std::copy(color.begin(), color.end(), pixel);
        }
    }
    return texture;
}
