// SPDX-License-Identifier: MIT
#pragma once

#include "QUORRadarData.h"

class QIODevice;

/// Carries radar data from the process that read them to the one that uses them. Nothing that is read back is
/// trusted: counts are held against what is there.
namespace QUORRadarDataStream {

/// False when the device takes no more.
bool write(QIODevice& device, const QUORRadarData& data);
/// Nothing when the device does not hold whole data.
std::optional<QUORRadarData> read(QIODevice& device);

} // namespace QUORRadarDataStream
