// SPDX-License-Identifier: MIT
#pragma once

/// Where things stand in a DTED level 1 file of 1201 x 1201 posts; sizes in bytes. The user header label,
/// the data set identification and the accuracy record are followed by one record a longitude line.
namespace QUORDtedLayout {

inline constexpr int POSTS = 1201;
inline constexpr int UHL_BYTES = 80;
inline constexpr int DSI_BYTES = 648;
inline constexpr int ACC_BYTES = 2700;
inline constexpr int DATA_OFFSET = UHL_BYTES + DSI_BYTES + ACC_BYTES;
inline constexpr int RECORD_HEADER_BYTES = 8;
inline constexpr int CHECKSUM_BYTES = 4;
inline constexpr int RECORD_BYTES = RECORD_HEADER_BYTES + 2 * POSTS + CHECKSUM_BYTES;
inline constexpr int FILE_BYTES = DATA_OFFSET + POSTS * RECORD_BYTES;
static_assert(FILE_BYTES == 2902642);

/// An ASCII field of the user header label.
struct Field {
    int offset;
    int length;
};
inline constexpr Field LON_ORIGIN{4, 8};
inline constexpr Field LAT_ORIGIN{12, 8};
inline constexpr Field LON_INTERVAL{20, 4};
inline constexpr Field LAT_INTERVAL{24, 4};
inline constexpr Field LON_LINES{47, 4};
inline constexpr Field LAT_POINTS{51, 4};

} // namespace QUORDtedLayout
