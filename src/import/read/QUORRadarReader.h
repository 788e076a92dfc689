// SPDX-License-Identifier: MIT
#pragma once

#include "QUORRadarData.h"

#include <QByteArray>

/// Reads a file of radar data in any of the public formats, which it tells apart by their content.
class QUORRadarReader {
public:
    /// What is larger is refused unread, bytes.
    static constexpr qint64 LARGEST_FILE = qint64(2) << 30;

    /// An open regular file. Throws a QUORImportError, or what the standard library throws when memory ends;
    /// the libraries underneath may crash on a damaged file (see QUORReaderProcess).
    static QUORRadarData read(int descriptor);
    /// The content of a file in memory.
    static QUORRadarData read(const QByteArray& content);
};
