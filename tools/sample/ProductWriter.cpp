// SPDX-License-Identifier: MIT
#include "ProductWriter.h"

#include "WholeFile.h"

#include <QtEndian>

#include <algorithm>
#include <cmath>

namespace {

constexpr int HEADER_SIZE = 640;
constexpr std::uint16_t NO_DATA = 0;

struct FileNaming {
    std::uint16_t code;
    const char* prefix;
    const char* extension;
};
constexpr FileNaming NAMINGS[] = {{SampleProduct::Ppi, "PPI", "ppi"},
                                  {SampleProduct::Cappi, "CA", "cap"},
                                  {SampleProduct::Vil, "VIL", "vil"},
                                  {SampleProduct::Max, "MAX", "max"},
                                  {SampleProduct::Sri, "SRI", "sri"}};

template <class Number>
void put(QByteArray& header, int offset, Number value) {
    qToLittleEndian(value, header.data() + offset);
}

std::uint32_t binaryAngle(double degrees) {
    return std::uint32_t(std::llround(degrees / 360.0 * 4294967296.0));
}

std::uint16_t limited(double stored, double highest) {
    return std::uint16_t(std::lround(std::clamp(stored, 1.0, highest)));
}

/// Steps of 0.0001 mm/h below 0.8 mm/h; above, twelve bits of mantissa under four of exponent.
std::uint16_t encodeRainRate(double rate) {
    auto count = std::uint64_t(std::llround(std::clamp(rate, 0.0, 13418.0) * 10000.0));
    if (count < 4096) {
        return std::uint16_t(count + 1);
    }
    std::uint64_t exponent = 1;
    for (; count > 8191; ++exponent) {
        count /= 2;
    }
    return std::uint16_t(std::min<std::uint64_t>(exponent * 4096 + count - 4096 + 1, 65534));
}

double folded(double velocity, double nyquist) {
    return velocity - 2.0 * nyquist * std::floor((velocity + nyquist) / (2.0 * nyquist));
}

char quantityLetter(std::uint16_t type) {
    switch (type) {
    case SampleProduct::Velocity8:
    case SampleProduct::Velocity16:
        return 'V';
    case SampleProduct::Width8:
    case SampleProduct::Width16:
        return 'W';
    case SampleProduct::RainRate16:
        return 'R';
    default:
        return 'Z';
    }
}

void putGeometry(QByteArray& header, const SampleProduct& product) {
    for (int axis = 0; axis < 3; ++axis) {
        put(header, 100 + 4 * axis, product.stepsCm[std::size_t(axis)]);
        put(header, 112 + 4 * axis, product.points[std::size_t(axis)]);
        put(header, 124 + 4 * axis, product.radar[std::size_t(axis)]);
    }
    header[158] = char(product.projection);
    put(header, 552, product.earthRadiusCm);
    put(header, 556, product.inverseFlattening);
}

void putSite(QByteArray& header, const SampleProduct& product) {
    header.replace(422, 16, product.site.leftJustified(16, ' ', true));
    put(header, 440, binaryAngle(product.latitude));
    put(header, 444, binaryAngle(product.longitude));
    put(header, 448, product.groundElevationM);
    put(header, 450, product.radarHeightM);
}

void putMeasurement(QByteArray& header, const SampleProduct& product) {
    const QDateTime utc = product.time.toUTC();
    put(header, 44, std::uint32_t(utc.time().msecsSinceStartOfDay() / 1000));
    put(header, 50, std::uint16_t(utc.date().year()));
    put(header, 52, std::uint16_t(utc.date().month()));
    put(header, 54, std::uint16_t(utc.date().day()));
    put(header, 142, product.type);
    put(header, 452, product.prf);
    put(header, 462, product.prfMode);
    put(header, 480, product.wavelength);
    put(header, 504, product.pulseCode);
}

} // namespace

int ProductWriter::itemSize(std::uint16_t type) {
    return type >= SampleProduct::Reflectivity16 ? 2 : 1;
}

double ProductWriter::nyquistVelocity(const SampleProduct& product) {
    const double interval = product.wavelength * 1e-4 * product.prf / 4.0;
    const double widened =
        product.type == SampleProduct::Velocity8 && product.prfMode >= 1 && product.prfMode <= 3
            ? interval * (product.prfMode + 1)
            : interval;
    return product.pulseCode == 2 ? widened / 2.0 : widened;
}

std::uint16_t ProductWriter::encode(double value, std::uint16_t type, double nyquist) {
    if (std::isnan(value)) {
        return NO_DATA;
    }
    switch (type) {
    case SampleProduct::Reflectivity8:
        return limited(2.0 * value + 64.0, 254);
    case SampleProduct::Velocity8:
        return limited(128.0 + folded(value, nyquist) / nyquist * 127.0, 254);
    case SampleProduct::Width8:
        return limited(value / nyquist * 256.0, 254);
    case SampleProduct::Reflectivity16:
    case SampleProduct::Velocity16:
        return limited(32768.0 + 100.0 * value, 65534);
    case SampleProduct::Width16:
        return limited(100.0 * value, 65534);
    case SampleProduct::RainRate16:
        return encodeRainRate(value);
    default:
        return limited(value, 254);
    }
}

QString ProductWriter::fileName(const SampleProduct& product) {
    const auto* naming = std::find_if(std::begin(NAMINGS), std::end(NAMINGS),
                                      [&](const FileNaming& row) { return row.code == product.code; });
    QString name = naming == std::end(NAMINGS) ? QStringLiteral("UNK") : QString::fromLatin1(naming->prefix);
    if (name.size() < 3) {
        name += QLatin1Char(quantityLetter(product.type));
    }
    return name + product.time.toUTC().toString(QStringLiteral("yyMMddHHmmss")) + QLatin1Char('.') +
           QLatin1String(naming == std::end(NAMINGS) ? "dat" : naming->extension);
}

QByteArray ProductWriter::toBytes(const SampleProduct& product) {
    const int size = itemSize(product.type);
    QByteArray bytes(HEADER_SIZE + qsizetype(product.values.size()) * size, '\0');
    put(bytes, 0, std::int16_t(27));
    put(bytes, 4, std::int32_t(bytes.size()));
    put(bytes, 12, std::int16_t(26));
    put(bytes, 24, product.code);
    putMeasurement(bytes, product);
    putGeometry(bytes, product);
    putSite(bytes, product);

    char* out = bytes.data() + HEADER_SIZE;
    if (size == 1) {
        std::transform(product.values.begin(), product.values.end(), out,
                       [](std::uint16_t value) { return char(value); });
    } else if (!product.values.empty()) {
        qToLittleEndian<std::uint16_t>(product.values.data(), qsizetype(product.values.size()), out);
    }
    return bytes;
}

QString ProductWriter::write(const SampleProduct& product, const QString& path) {
    return writeWholeFile(path, toBytes(product));
}
