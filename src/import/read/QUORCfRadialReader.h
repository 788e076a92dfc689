// SPDX-License-Identifier: MIT
#pragma once

#include "QUORNetcdfFile.h"
#include "QUORRadarData.h"

/// Sweeps in CfRadial 1 (1.2 to 1.5, all sweeps in one table of rays, also with rays of different lengths)
/// and CfRadial 2 (2.0, 2.1 and WMO FM 301, a group for each sweep).
class QUORCfRadialReader {
public:
    static bool recognises(const QUORNetcdfGroup& root);
    /// Throws a QUORImportError.
    static QUORRadarData read(const QUORNetcdfGroup& root);
};
