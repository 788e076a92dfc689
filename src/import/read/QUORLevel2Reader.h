// SPDX-License-Identifier: MIT
#pragma once

#include "QUORRadarData.h"

#include <QByteArrayView>

/// NEXRAD Level II volumes with rays as message 31 (2008 and later), of any resolution.
class QUORLevel2Reader {
public:
    /// The content of a file. Throws a QUORImportError, also for a volume without its end.
    static QUORRadarData read(QByteArrayView content);
};
