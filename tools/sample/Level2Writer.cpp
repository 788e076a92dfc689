// SPDX-License-Identifier: MIT
#include "Level2Writer.h"

#include <QtEndian>

#include <bit>
#include <bzlib.h>

namespace {

constexpr std::size_t RAYS_PER_RECORD = 120;

template <class T>
void append(QByteArray& bytes, T value) {
    if constexpr (std::is_same_v<T, float>) {
        append(bytes, std::bit_cast<quint32>(value));
    } else {
        const T swapped = qToBigEndian(value);
        bytes.append(reinterpret_cast<const char*>(&swapped), sizeof swapped);
    }
}

QByteArray momentBlock(const Level2Writer::Moment& moment) {
    QByteArray block = "D" + moment.name;
    append(block, quint32(0));
    append(block, quint16(moment.gates));
    append(block, qint16(moment.firstGate));
    append(block, quint16(moment.gateSpacing));
    append(block, quint16(100));
    append(block, quint16(16));
    append(block, quint8(0));
    append(block, quint8(moment.bits));
    append(block, moment.scale);
    append(block, moment.offset);
    for (int gate = 0; gate < moment.gates; ++gate) {
        if (moment.bits == 8) {
            append(block, quint8(moment.code(gate)));
        } else {
            append(block, quint16(moment.code(gate)));
        }
    }
    return block;
}

QByteArray radialBlock(const Level2Writer::Ray& ray) {
    QByteArray block = "RRAD";
    append(block, quint16(28));
    append(block, quint16(ray.unambiguousRange / 100.0 + 0.5));
    append(block, -80.0F);
    append(block, -80.0F);
    append(block, quint16(ray.nyquist * 100.0 + 0.5));
    return block.append(10, '\0');
}

QByteArray pack(const QByteArray& bytes) {
    QByteArray packed(bytes.size() + bytes.size() / 100 + 600, '\0');
    auto size = unsigned(packed.size());
    BZ2_bzBuffToBuffCompress(packed.data(), &size, const_cast<char*>(bytes.constData()),
                             unsigned(bytes.size()), 9, 0, 0);
    packed.truncate(qsizetype(size));
    QByteArray record;
    append(record, qint32(packed.size()));
    return record + packed;
}

} // namespace

Level2Writer::Level2Writer(QByteArray site, const QDateTime& time, float latitude, float longitude,
                           int ground, int antenna)
    : _site(std::move(site)), _time(time), _place("RVOL") {
    append(_place, quint16(44));
    append(_place, quint16(0x0100));
    append(_place, latitude);
    append(_place, longitude);
    append(_place, qint16(ground));
    append(_place, quint16(antenna));
    _place.append(24, '\0');
}

QByteArray Level2Writer::header() const {
    QByteArray header = "AR2V0006.001";
    append(header, quint32(QDate(1970, 1, 1).daysTo(_time.date()) + 1));
    append(header, quint32(_time.time().msecsSinceStartOfDay()));
    return header + _site;
}

void Level2Writer::add(const Ray& ray) {
    std::vector<QByteArray> blocks{_place, radialBlock(ray)};
    for (const Moment& moment : ray.moments) {
        blocks.push_back(momentBlock(moment));
    }
    QByteArray body = _site;
    append(body, quint32(_time.time().msecsSinceStartOfDay()));
    append(body, quint16(QDate(1970, 1, 1).daysTo(_time.date()) + 1));
    append(body, quint16(1));
    append(body, ray.azimuth);
    append(body, quint16(0));
    append(body, quint16(0));
    append(body, quint8(1));
    append(body, quint8(ray.status));
    append(body, quint8(ray.elevationNumber));
    append(body, quint8(0));
    append(body, ray.elevation);
    append(body, quint16(0));
    append(body, quint16(blocks.size()));
    auto offset = quint32(body.size()) + quint32(4 * blocks.size());
    for (const QByteArray& block : blocks) {
        append(body, offset);
        offset += quint32(block.size());
    }
    for (const QByteArray& block : blocks) {
        body += block;
    }
    body.append(body.size() % 2, '\0');
    QByteArray message(12, '\0');
    append(message, quint16((body.size() + 16) / 2));
    append(message, quint8(0));
    append(message, quint8(31));
    _messages.push_back(message.append(12, '\0') + body);
}

QByteArray Level2Writer::toBytes(bool packed) const {
    // A frame of metadata, as each file begins with.
    QByteArray metadata(2432, '\0');
    metadata[15] = 2;
    QByteArray bytes = header();
    QByteArray record = metadata;
    for (std::size_t i = 0; i < _messages.size(); ++i) {
        record += _messages[i];
        if ((i + 1) % RAYS_PER_RECORD == 0 || i + 1 == _messages.size()) {
            bytes += packed ? pack(record) : record;
            record.clear();
        }
    }
    return bytes;
}
