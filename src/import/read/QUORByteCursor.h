// SPDX-License-Identifier: MIT
#pragma once

#include "QUORImportError.h"

#include <QByteArrayView>
#include <QtEndian>

#include <bit>
#include <cstring>

/// Reads big-endian numbers at positions of a block of bytes; what lies outside it is an error of the file.
class QUORByteCursor {
public:
    explicit QUORByteCursor(QByteArrayView bytes) : _bytes(bytes) {}

    qsizetype size() const { return _bytes.size(); }
    /// A part of it, as far as it goes.
    QUORByteCursor from(qsizetype offset) const {
        demand(offset, 0);
        return QUORByteCursor(_bytes.sliced(offset));
    }
    QByteArrayView bytes(qsizetype offset, qsizetype count) const {
        demand(offset, count);
        return _bytes.sliced(offset, count);
    }
    template <class T>
    T number(qsizetype offset) const {
        demand(offset, qsizetype(sizeof(T)));
        if constexpr (std::is_same_v<T, float>) {
            return std::bit_cast<float>(qFromBigEndian<quint32>(_bytes.data() + offset));
        } else {
            return qFromBigEndian<T>(_bytes.data() + offset);
        }
    }

private:
    void demand(qsizetype offset, qsizetype count) const {
        if (offset < 0 || count < 0 || offset > _bytes.size() || count > _bytes.size() - offset) {
            throw QUORImportError(QStringLiteral("a message ends before its content does"));
        }
    }

    QByteArrayView _bytes;
};
