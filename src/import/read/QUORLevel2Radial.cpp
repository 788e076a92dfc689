// SPDX-License-Identifier: MIT
#include "QUORLevel2Radial.h"

#include <cmath>

namespace {

constexpr int MOST_BLOCKS = 20;
constexpr int MOMENT_HEADER = 28;

std::optional<QUORRadarQuantity> quantityOf(QByteArrayView name) {
    if (name == "REF") {
        return QUORRadarQuantity::Reflectivity;
    }
    if (name == "VEL") {
        return QUORRadarQuantity::Velocity;
    }
    if (name == "SW ") {
        return QUORRadarQuantity::Width;
    }
    return {};
}

/// The file has 0 below the threshold and 1 for folded range, packed values the other way round.
quint16 swapped(quint16 code) {
    return code <= 1 ? quint16(1 - code) : code;
}

QUORLevel2Radial::Moment momentOf(const QUORByteCursor& block, QUORRadarQuantity quantity,
                                  const QString& name) {
    QUORLevel2Radial::Moment moment;
    moment.quantity = quantity;
    moment.name = name;
    const int gates = block.number<quint16>(8);
    moment.firstGate = block.number<qint16>(10);
    moment.gateSpacing = block.number<quint16>(12);
    const int bits = block.number<quint8>(19);
    moment.scale = double(block.number<float>(20));
    moment.offset = double(block.number<float>(24));
    if (bits != 8 && bits != 16) {
        throw QUORImportError(name + QStringLiteral(" has gates of %1 bits").arg(bits));
    }
    if (!std::isfinite(moment.scale) || moment.scale == 0.0 || !std::isfinite(moment.offset)) {
        throw QUORImportError(name + QStringLiteral(" has an impossible scale"));
    }
    const QByteArrayView data = block.bytes(MOMENT_HEADER, qsizetype(gates) * bits / 8);
    moment.codes.resize(std::size_t(gates));
    for (int gate = 0; gate < gates; ++gate) {
        moment.codes[std::size_t(gate)] =
            swapped(bits == 8 ? quint8(data[gate]) : qFromBigEndian<quint16>(data.data() + 2 * gate));
    }
    return moment;
}

} // namespace

QDateTime QUORLevel2Radial::toTime(quint32 days, quint32 milliseconds) {
    if (days == 0 || days > 60000 || milliseconds > 86400000) {
        return {};
    }
    return QDateTime::fromMSecsSinceEpoch(qint64(days - 1) * 86400000 + milliseconds, Qt::UTC);
}

QUORLevel2Radial QUORLevel2Radial::parse(const QUORByteCursor& message) {
    QUORLevel2Radial radial;
    radial.time = toTime(message.number<quint16>(8), message.number<quint32>(4));
    radial.azimuth = double(message.number<float>(12));
    if (message.number<quint8>(16) != 0) {
        throw QUORImportError(QStringLiteral("a ray is compressed by itself"));
    }
    radial.status = message.number<quint8>(21) & 0x7f;
    radial.elevationNumber = message.number<quint8>(22);
    radial.elevation = double(message.number<float>(24));
    const int blocks = message.number<quint16>(30);
    if (blocks > MOST_BLOCKS) {
        throw QUORImportError(QStringLiteral("a ray has %1 blocks").arg(blocks));
    }
    for (int i = 0; i < blocks; ++i) {
        const auto offset = qsizetype(message.number<quint32>(32 + 4 * i));
        if (offset == 0) {
            continue;
        }
        const QUORByteCursor block = message.from(offset);
        const QByteArrayView kind = block.bytes(0, 4);
        if (kind == "RVOL") {
            radial.volume = Volume{double(block.number<float>(8)), double(block.number<float>(12)),
                                   block.number<qint16>(16), block.number<quint16>(18)};
        } else if (kind == "RRAD") {
            radial.unambiguousRange = block.number<quint16>(6) * 100.0;
            radial.nyquist = block.number<quint16>(16) * 0.01;
        } else if (kind.front() == 'D') {
            const QString name = QString::fromLatin1(kind.sliced(1)).trimmed();
            if (const auto quantity = quantityOf(kind.sliced(1))) {
                radial.moments.push_back(momentOf(block, *quantity, name));
            } else {
                radial.leftOut.append(name);
            }
        }
    }
    return radial;
}
