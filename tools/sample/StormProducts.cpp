// SPDX-License-Identifier: MIT
#include "StormProducts.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace {

constexpr float NONE = std::numeric_limits<float>::quiet_NaN();

/// Marshall and Palmer: Z = 200 R^1.6; less than 0.1 mm/h is no rain.
float rainRate(float reflectivity) {
    const double rate = std::pow(std::pow(10.0, double(reflectivity) / 10.0) / 200.0, 1.0 / 1.6);
    return rate >= 0.1 ? float(rate) : NONE;
}

/// kg/m² of liquid water in a layer, from the mean of its bounds.
double liquidWater(float below, float above, double thickness) {
    const auto power = [](float value) {
        return std::isnan(value) ? 0.0 : std::pow(10.0, std::min(double(value), 56.0) / 10.0);
    };
    return 3.44e-6 * std::pow((power(below) + power(above)) / 2.0, 4.0 / 7.0) * thickness;
}

} // namespace

struct StormProducts::Fields {
    std::vector<float> reflectivity;
    std::vector<float> velocity;
    std::vector<float> width;
};

StormProducts::StormProducts(SampleProduct frame, const StormModel& model)
    : _frame(std::move(frame)), _model(model) {}

double StormProducts::metres(int axis, int index) const {
    const auto a = std::size_t(axis);
    return (index - (axis < 2 ? _frame.radar[a] / 1000.0 : 0.0)) * _frame.stepsCm[a] * 0.01;
}

StormProducts::Fields StormProducts::sampleVolume(int seconds) const {
    Fields fields;
    const auto count =
        std::size_t(_frame.points[0]) * std::size_t(_frame.points[1]) * std::size_t(_frame.points[2]);
    fields.reflectivity.reserve(count);
    fields.velocity.reserve(count);
    fields.width.reserve(count);
    for (int k = 0; k < _frame.points[2]; ++k) {
        for (int j = 0; j < _frame.points[1]; ++j) {
            for (int i = 0; i < _frame.points[0]; ++i) {
                const StormModel::Air air = _model.at(metres(0, i), metres(1, j), metres(2, k), seconds);
                fields.reflectivity.push_back(float(air.reflectivity));
                fields.velocity.push_back(float(air.velocity));
                fields.width.push_back(float(air.width));
            }
        }
    }
    return fields;
}

std::vector<float> StormProducts::sampleSweep(int seconds) const {
    constexpr double elevation = 0.5 / 180.0 * std::numbers::pi;
    constexpr double effectiveRadius = 6371000.0 * 4.0 / 3.0;
    std::vector<float> sweep;
    for (int j = 0; j < _frame.points[1]; ++j) {
        for (int i = 0; i < _frame.points[0]; ++i) {
            const double range = std::hypot(metres(0, i), metres(1, j));
            const double height = range * elevation + range * range / (2.0 * effectiveRadius);
            sweep.push_back(float(_model.at(metres(0, i), metres(1, j), height, seconds).reflectivity));
        }
    }
    return sweep;
}

SampleProduct StormProducts::product(int seconds, std::uint16_t code, std::uint16_t type,
                                     const std::vector<float>& values) const {
    SampleProduct result = _frame;
    result.code = code;
    result.type = type;
    result.time = _frame.time.addSecs(seconds);
    if (code != SampleProduct::Cappi) {
        result.points[2] = 1;
    }
    const double nyquist = ProductWriter::nyquistVelocity(result);
    result.values.resize(values.size());
    std::transform(values.begin(), values.end(), result.values.begin(),
                   [&](float value) { return ProductWriter::encode(double(value), type, nyquist); });
    return result;
}

bool StormProducts::makeVolumes(int seconds, const Fields& fields, const Taker& take) const {
    using P = SampleProduct;
    const auto volume = [&](const char* folder, std::uint16_t type, const std::vector<float>& values) {
        return take(QLatin1String(folder), product(seconds, P::Cappi, type, values));
    };
    std::vector<float> rain(fields.reflectivity.size());
    std::transform(fields.reflectivity.begin(), fields.reflectivity.end(), rain.begin(), rainRate);
    return volume("3d", P::Reflectivity8, fields.reflectivity) &&
           volume("3d", P::Velocity8, fields.velocity) && volume("3d", P::Width8, fields.width) &&
           volume("3d", P::RainRate16, rain) && volume("3d_2byte", P::Reflectivity16, fields.reflectivity) &&
           volume("3d_2byte", P::Velocity16, fields.velocity) && volume("3d_2byte", P::Width16, fields.width);
}

bool StormProducts::makeFlat(int seconds, const Fields& fields, const Taker& take) const {
    const auto cells = std::size_t(_frame.points[0]) * std::size_t(_frame.points[1]);
    const auto levels = std::size_t(_frame.points[2]);
    const std::size_t ground = cells * std::min<std::size_t>(2, levels - 1);
    const double thickness = _frame.stepsCm[2] * 0.01;
    std::vector<float> rain(cells);
    std::vector<float> highest(cells, NONE);
    std::vector<float> water(cells, NONE);
    for (std::size_t cell = 0; cell < cells; ++cell) {
        rain[cell] = rainRate(fields.reflectivity[ground + cell]);
        double sum = 0.0;
        for (std::size_t k = 0; k < levels; ++k) {
            const float here = fields.reflectivity[k * cells + cell];
            highest[cell] = std::fmax(highest[cell], here);
            sum += k == 0 ? 0.0 : liquidWater(fields.reflectivity[(k - 1) * cells + cell], here, thickness);
        }
        if (sum >= 0.5) {
            water[cell] = float(sum);
        }
    }
    using P = SampleProduct;
    const auto flat = [&](std::uint16_t code, std::uint16_t type, const std::vector<float>& values) {
        return take(QStringLiteral("2d"), product(seconds, code, type, values));
    };
    return flat(P::Sri, P::RainRate16, rain) && flat(P::Vil, P::LiquidWater8, water) &&
           flat(P::Max, P::Reflectivity8, highest) && flat(P::Ppi, P::Reflectivity8, sampleSweep(seconds));
}

bool StormProducts::make(int seconds, const Taker& take) const {
    const Fields fields = sampleVolume(seconds);
    return makeVolumes(seconds, fields, take) && makeFlat(seconds, fields, take);
}
