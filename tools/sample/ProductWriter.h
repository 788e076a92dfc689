// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <array>
#include <cstdint>
#include <vector>

/// A product file to be written: the header's fields in the units of the file, and the grid of stored
/// values. Nothing is checked, so that tests can write files that no radar would.
struct SampleProduct {
    enum Code : std::uint16_t { Ppi = 1, Cappi = 3, Vil = 10, Max = 16, Sri = 32 };
    enum Type : std::uint16_t {
        Reflectivity8 = 2,
        Velocity8 = 3,
        Width8 = 4,
        LiquidWater8 = 5,
        Reflectivity16 = 9,
        Velocity16 = 10,
        Width16 = 11,
        RainRate16 = 13
    };

    std::uint16_t code = Cappi;
    std::uint16_t type = Reflectivity8;
    QDateTime time{QDate(2021, 7, 29), QTime(12, 38, 48), Qt::UTC};

    /// Along x (east), y (north) and z (up).
    std::array<std::int32_t, 3> points{1, 1, 1};
    std::array<std::int32_t, 3> stepsCm{200000, 200000, 50000};
    /// In thousandths of a step from the first point; z in thousandths of a metre.
    std::array<std::int32_t, 3> radar{0, 0, 0};
    std::uint8_t projection = 0;

    /// Latin-1; cut to 16 characters, filled up with blanks.
    QByteArray site = "SAMPLE";
    double latitude = 42.0;
    double longitude = 1.5;
    std::int16_t groundElevationM = 200;
    std::int16_t radarHeightM = 30;

    std::int32_t prf = 1242;
    std::uint16_t prfMode = 0;
    std::int32_t wavelength = 1070; ///< hundredths of a centimetre
    std::uint16_t pulseCode = 0;
    std::uint32_t earthRadiusCm = 637813700;
    std::uint32_t inverseFlattening = 298257223; ///< millionths

    /// x fastest, then y, then z.
    std::vector<std::uint16_t> values;
};

/// Writes product files. It shares no code with the reader of the service: each checks the other.
class ProductWriter {
public:
    /// One or two bytes a value, as the data type's form is.
    static int itemSize(std::uint16_t type);
    /// Metres per second: the interval of one-byte velocities is twice as wide.
    static double nyquistVelocity(const SampleProduct& product);
    /// The stored value of a physical one (dBZ, m/s, mm/h, kg/m²): limited to the range of the type; 0, no
    /// data, for a value that is not a number. One-byte velocities beyond the Nyquist velocity are folded.
    static std::uint16_t encode(double value, std::uint16_t type, double nyquist);

    /// Two letters of the product and one of the quantity (three of a 2D product), the time and the
    /// extension, such as CAZ210729123848.cap.
    static QString fileName(const SampleProduct& product);
    static QByteArray toBytes(const SampleProduct& product);
    /// The file appears whole under its name, or not at all; an empty text, or the path and the reason.
    static QString write(const SampleProduct& product, const QString& path);
};
