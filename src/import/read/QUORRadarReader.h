// SPDX-License-Identifier: MIT
#pragma once

#include "QUORRadarData.h"

#include <QByteArray>

/// Reads a file of radar data in any of the public formats, which it tells apart by their content.
class QUORRadarReader {
public:
    /// An open regular file. Throws a QUORImportError, or what the standard library throws when memory ends;
    /// the libraries underneath may crash on a damaged file (see QUORReaderProcess).
    static QUORRadarData read(int descriptor, QUORReadExtent extent = QUORReadExtent::Whole);
    /// The content of a file in memory.
    static QUORRadarData read(const QByteArray& content);
};
