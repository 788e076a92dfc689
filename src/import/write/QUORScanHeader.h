// SPDX-License-Identifier: MIT
#pragma once

#include "QUORRadarQuantity.h"

struct QUORRadarData;

/// How a product header says which velocities a scan can tell apart: wavelength and pulse repetition
/// frequency, of which one-byte velocities and widths take their scale.
struct QUORScanHeader {
    int prf = 0;        ///< hertz, so that the Nyquist velocity of the header is no less than the scan's
    int prfMode = 0;    ///< 1, 2, 3 for velocities over 2, 3, 4 times the interval of the frequency
    int wavelength = 0; ///< hundredths of a centimetre

    /// Zeros where the data do not tell. For one-byte velocities the interval is widened until it holds the
    /// data, which may have been unfolded.
    static QUORScanHeader of(const QUORRadarData& data, QUORRadarQuantity quantity, bool isOneByte);
    /// One-byte velocities and widths can be stored; other quantities always can.
    bool isUsable() const { return _isFree || (prf > 0 && wavelength > 0); }

private:
    bool _isFree = false;
};
