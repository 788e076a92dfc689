// SPDX-License-Identifier: MIT
#include "QUORDataType.h"

#include <QCoreApplication>

#include <array>
#include <cmath>
#include <limits>

namespace {

constexpr int ONE_BYTE_WIDTH = 4;
constexpr int ONE_BYTE_VELOCITY = 3;
constexpr int TWO_BYTE_VELOCITY = 10;
constexpr unsigned int ONE_BYTE_MAXIMUM = 254;
constexpr unsigned int TWO_BYTE_MAXIMUM = 65534;

unsigned int dtround(double value) {
    const double sum = value + 0.5;
    if (!(sum > 0.0)) {
        return 0;
    }
    constexpr double limit = std::numeric_limits<unsigned int>::max();
    return sum >= limit ? std::numeric_limits<unsigned int>::max() : static_cast<unsigned int>(sum);
}

unsigned int dtroundWithin(double value, unsigned int minimum, unsigned int maximum) {
    if (value < minimum) {
        return minimum;
    }
    return value > maximum ? maximum : dtround(value);
}

/// A scan of wavelength 0 has factor 0: all its velocities are 0.
double inFactors(double value, double factor) {
    return factor == 0.0 ? 0.0 : value / factor;
}

constexpr unsigned int RATE_STEPS = 4096;

double rateToDisplay(unsigned int absolute, double) {
    const unsigned int exponent = absolute / RATE_STEPS;
    const double count =
        exponent == 0 ? absolute : std::ldexp(absolute % RATE_STEPS + RATE_STEPS, int(exponent) - 1);
    return (count - 1.0) / 10000.0;
}

unsigned int rateToAbsolute(double display, double) {
    unsigned int count = dtround(10000.0 * display);
    if (count < 2 * RATE_STEPS) {
        return count + 1;
    }
    unsigned int exponent = 1;
    for (; count >= 2 * RATE_STEPS; count >>= 1) {
        ++exponent;
    }
    return std::min(count % RATE_STEPS + exponent * RATE_STEPS + 1, TWO_BYTE_MAXIMUM);
}

constexpr std::array<QUORDataType::Row, 8> ROWS{{
    {-1, QT_TRANSLATE_NOOP("QUORDataType", "Not available"), "NA", nullptr, 1, ONE_BYTE_MAXIMUM,
     [](unsigned int n, double) -> double { return n; }, [](double v, double) { return dtround(v); }},
    {2, QT_TRANSLATE_NOOP("QUORDataType", "Reflectivity"), "dBZ", "Z", 1, ONE_BYTE_MAXIMUM,
     [](unsigned int n, double) { return (double(n) - 64.0) * 0.5; },
     [](double v, double) { return dtround(2.0 * v + 64.0); }},
    {9, QT_TRANSLATE_NOOP("QUORDataType", "Reflectivity"), "dBZ", "Z", 1, TWO_BYTE_MAXIMUM,
     [](unsigned int n, double) { return (double(n) - 32768.0) / 100.0; },
     [](double v, double) { return dtround(100.0 * v + 32768.0); }},
    {4, QT_TRANSLATE_NOOP("QUORDataType", "Spectrum width"), "m/s", "W", 1, ONE_BYTE_MAXIMUM,
     [](unsigned int n, double f) { return double(n) * f / 256.0; },
     [](double v, double f) { return dtround(inFactors(v, f) * 256.0); }},
    {11, QT_TRANSLATE_NOOP("QUORDataType", "Spectrum width"), "m/s", "W", 1, TWO_BYTE_MAXIMUM,
     [](unsigned int n, double) { return double(n) / 100.0; },
     [](double v, double) { return dtround(100.0 * v); }},
    {13, QT_TRANSLATE_NOOP("QUORDataType", "Rainfall rate"), "mm/h", "R", 1, TWO_BYTE_MAXIMUM, rateToDisplay,
     rateToAbsolute},
    {3, QT_TRANSLATE_NOOP("QUORDataType", "Radial velocity"), "m/s", "V", 1, ONE_BYTE_MAXIMUM,
     [](unsigned int n, double f) { return (double(n) - 128.0) * f / 127.0; },
     [](double v, double f) { return dtroundWithin(inFactors(v, f) * 127.0 + 128.0, 1, 255); }},
    {10, QT_TRANSLATE_NOOP("QUORDataType", "Radial velocity"), "m/s", "V", 1, TWO_BYTE_MAXIMUM,
     [](unsigned int n, double) { return (double(n) - 32768.0) / 100.0; },
     [](double v, double) { return dtroundWithin(100.0 * v + 32768.0, 1, TWO_BYTE_MAXIMUM); }},
}};

int indexOf(int code) {
    for (std::size_t i = 1; i < ROWS.size(); ++i) {
        if (ROWS[i].code == code) {
            return int(i);
        }
    }
    return 0;
}

} // namespace

std::span<const QUORDataType::Row> QUORDataType::getRows() {
    return ROWS;
}

QUORDataType::QUORDataType(int code) : _index(indexOf(code)) {}

QUORDataType::QUORDataType(int code, int prf, int prfMode, int wavelength, int pulseCode)
    : _index(indexOf(code)) {
    computeNyquistFactor(prf, prfMode, wavelength, pulseCode);
}

void QUORDataType::computeNyquistFactor(int prf, int prfMode, int wavelength, int pulseCode) {
    const int code = getRawType();
    _nyquistFactor = 1.0;
    if (code != ONE_BYTE_WIDTH && code != ONE_BYTE_VELOCITY) {
        return;
    }
    _nyquistFactor = double(wavelength) * double(prf) / 40000.0;
    if (code == ONE_BYTE_VELOCITY && prfMode >= 1 && prfMode <= 3) {
        _nyquistFactor *= prfMode + 1;
    }
    if (pulseCode == 2) {
        _nyquistFactor /= 2.0;
    }
}

QString QUORDataType::getQuantityName() const {
    return QCoreApplication::translate("QUORDataType", row().name);
}

QString QUORDataType::getQuantityUnit() const {
    return QString::fromLatin1(row().unit);
}

QString QUORDataType::getConfiguration() const {
    return QString::fromLatin1(row().configuration);
}

unsigned int QUORDataType::getSurfaceNoDataValue() const {
    const bool velocity = getRawType() == ONE_BYTE_VELOCITY || getRawType() == TWO_BYTE_VELOCITY;
    return velocity ? displayToAbsoluteValue(0.0) : getNoDataValue();
}

double QUORDataType::absoluteToDisplayValue(unsigned int value) const {
    return row().toDisplay(value, _nyquistFactor);
}

unsigned int QUORDataType::displayToAbsoluteValue(double value) const {
    return row().toAbsolute(value, _nyquistFactor);
}

QString QUORDataType::getDisplayStr(int value) const {
    if (value <= int(getNoDataValue())) {
        return QStringLiteral("NA");
    }
    return QString::number(absoluteToDisplayValue(unsigned(value)), 'f', 1);
}

int QUORDataType::getItemSize() const {
    if (_index == 0) {
        return 0;
    }
    return row().maximum > ONE_BYTE_MAXIMUM ? 2 : 1;
}

const QUORDataType::Row& QUORDataType::row() const {
    return ROWS[std::size_t(_index)];
}
