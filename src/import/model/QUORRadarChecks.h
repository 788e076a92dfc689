// SPDX-License-Identifier: MIT
#pragma once

struct QUORRadarData;

/// What every reader's result must fulfil before anything is computed from it.
namespace QUORRadarChecks {

/// Most values of one field of a file.
inline constexpr double MOST_VALUES = 64e6;
inline constexpr int MOST_SWEEPS = 200;

/// Throws a QUORImportError that names what is wrong: no sweeps, counts that disagree, angles or places that
/// are none, a time that is none.
void verify(const QUORRadarData& data);

} // namespace QUORRadarChecks
