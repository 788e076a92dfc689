// SPDX-License-Identifier: MIT
#pragma once

#include "QUORNetcdfFile.h"
#include "QUORRadarData.h"

/// Polar volumes and scans in ODIM_H5, after the EUMETNET OPERA weather radar information model for
/// implementation with the HDF5 file format, versions 2.0 to 2.4.
class QUOROdimReader {
public:
    static bool recognises(const QUORNetcdfGroup& root);
    /// Throws a QUORImportError.
    static QUORRadarData read(const QUORNetcdfGroup& root);
};
