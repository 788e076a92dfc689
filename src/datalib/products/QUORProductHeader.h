// SPDX-License-Identifier: MIT
#pragma once

#include <QtEndian>

#include <array>

/// The first 640 bytes of a product file, unconverted. Numbers are little-endian.
using PHD = std::array<char, 640>;

/// The layout of the product header.
namespace QUORProductHeader {

/// A number at its offset.
template <typename T>
struct Field {
    int offset;
    T operator()(const PHD& header) const { return qFromLittleEndian<T>(header.data() + offset); }
    void put(PHD& header, T value) const { qToLittleEndian<T>(value, header.data() + offset); }
};

inline constexpr Field<qint16> HEADER_ID{0};
inline constexpr Field<qint32> TOTAL_SIZE{4}; ///< bytes, header included
inline constexpr Field<qint16> PRODUCT_ID{12};
inline constexpr Field<quint16> PRODUCT_CODE{24};
inline constexpr Field<quint32> SECONDS{44}; ///< of the day, UTC
inline constexpr Field<quint16> YEAR{50};
inline constexpr Field<quint16> MONTH{52};
inline constexpr Field<quint16> DAY{54};
inline constexpr Field<qint32> X_STEP{100}; ///< centimetres
inline constexpr Field<qint32> Y_STEP{104};
inline constexpr Field<qint32> Z_STEP{108};
inline constexpr Field<qint32> X_POINTS{112};
inline constexpr Field<qint32> Y_POINTS{116};
inline constexpr Field<qint32> Z_POINTS{120};
inline constexpr Field<qint32> X_RADAR{124}; ///< thousandths of a grid step
inline constexpr Field<qint32> Y_RADAR{128};
inline constexpr Field<qint32> Z_RADAR{132}; ///< thousandths of a metre
inline constexpr Field<quint16> DATA_TYPE{142};
inline constexpr Field<quint8> PROJECTION{158};
inline constexpr Field<quint32> LATITUDE{440}; ///< binary angle
inline constexpr Field<quint32> LONGITUDE{444};
inline constexpr Field<qint16> GROUND_ELEVATION{448}; ///< metres
inline constexpr Field<qint16> RADAR_HEIGHT{450};     ///< metres above the ground
inline constexpr Field<qint32> PRF{452};              ///< hertz
inline constexpr Field<quint16> PRF_MODE{462};
inline constexpr Field<qint32> WAVELENGTH{480}; ///< hundredths of a centimetre
inline constexpr Field<quint16> PULSE_CODE{504};
inline constexpr Field<quint32> EARTH_RADIUS{552};       ///< centimetres
inline constexpr Field<quint32> INVERSE_FLATTENING{556}; ///< millionths

inline constexpr qint16 HEADER_ID_VALUE = 27;
inline constexpr qint16 PRODUCT_ID_VALUE = 26;
/// The structure identifiers lie within so many first bytes.
inline constexpr qint64 IDENTIFIED_SIZE = 14;

inline constexpr int SITE_OFFSET = 422;
inline constexpr int SITE_LENGTH = 16; ///< padded, not necessarily terminated

struct ProductRow {
    int code;
    const char* name;
};
inline constexpr std::array<ProductRow, 5> PRODUCTS{
    {{1, "PPI"}, {3, "CAPPI"}, {10, "VIL"}, {16, "MAX"}, {32, "SRI"}}};

struct ProjectionRow {
    int code;
    const char* libraryName;
    const char* name;
};
inline constexpr std::array<ProjectionRow, 2> PROJECTIONS{
    {{0, "aeqd", "Azimuthal Equidistant"}, {1, "merc", "Mercator"}}};

} // namespace QUORProductHeader
