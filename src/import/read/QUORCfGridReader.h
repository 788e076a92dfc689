// SPDX-License-Identifier: MIT
#pragma once

#include "QUORNetcdfFile.h"
#include "QUORRadarData.h"

/// Cartesian volumes in netCDF after the CF conventions, as the field's Python toolkits write them: fields
/// over z, y and x, with a grid mapping or an origin.
class QUORCfGridReader {
public:
    static bool recognises(const QUORNetcdfGroup& root);
    /// Throws a QUORImportError.
    static QUORRadarData read(const QUORNetcdfGroup& root);
};
