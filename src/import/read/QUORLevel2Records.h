// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLevel2Radial.h"

#include <QByteArray>

#include <vector>

/// The records of a NEXRAD Level II file, after the interface document 2620010 for Archive II: behind a
/// volume header of 24 bytes, blocks packed by bzip2, each behind its length, or messages as they are.
class QUORLevel2Records {
public:
    static constexpr qsizetype HEADER_SIZE = 24;

    /// Keeps a reference to the content of the file. Throws a QUORImportError for records that do not fill
    /// it.
    explicit QUORLevel2Records(QByteArrayView content);

    /// All rays in the order of the file. Records are unpacked by threads, which have ended on return.
    std::vector<QUORLevel2Radial> readRadials() const;

private:
    struct Record {
        QByteArrayView bytes;
        bool isPacked;
    };
    std::vector<Record> _records;
};
