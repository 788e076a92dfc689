// SPDX-License-Identifier: MIT
#include "QUORRadarDataStream.h"

#include <QDataStream>
#include <QIODevice>

namespace {

/// The same description serves both directions.
class Writer {
public:
    explicit Writer(QIODevice& device) : _stream(&device) { _stream.setVersion(QDataStream::Qt_6_0); }

    template <class T>
    void number(const T& value) {
        _stream.writeRawData(reinterpret_cast<const char*>(&value), sizeof value);
    }
    void text(const QString& value) { _stream << value; }
    void texts(const QStringList& value) { _stream << value; }
    void time(const QDateTime& value) { _stream << (value.isValid() ? value.toSecsSinceEpoch() : -1); }
    template <class T>
    void array(const std::vector<T>& values) {
        number(quint64(values.size()));
        // In pieces that the stream's counter can hold.
        constexpr std::size_t piece = 1U << 24;
        for (std::size_t i = 0; i < values.size(); i += piece) {
            const std::size_t count = std::min(piece, values.size() - i);
            _stream.writeRawData(reinterpret_cast<const char*>(values.data() + i), int(count * sizeof(T)));
        }
    }
    template <class T, class F>
    void list(const std::vector<T>& values, F&& each) {
        number(quint64(values.size()));
        for (const T& value : values) {
            each(value);
        }
    }
    bool isGood() const { return _stream.status() == QDataStream::Ok; }

private:
    QDataStream _stream;
};

class Reader {
public:
    explicit Reader(QIODevice& device) : _device(device), _stream(&device) {
        _stream.setVersion(QDataStream::Qt_6_0);
    }

    template <class T>
    void number(T& value) {
        if (_stream.readRawData(reinterpret_cast<char*>(&value), sizeof value) != int(sizeof value)) {
            fail();
        }
    }
    void text(QString& value) { _stream >> value; }
    void texts(QStringList& value) { _stream >> value; }
    void time(QDateTime& value) {
        qint64 seconds = -1;
        _stream >> seconds;
        value = seconds >= 0 ? QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC) : QDateTime();
    }
    template <class T>
    void array(std::vector<T>& values) {
        const std::size_t count = countOf(sizeof(T));
        values.resize(count);
        constexpr std::size_t piece = 1U << 24;
        for (std::size_t i = 0; i < count && isGood(); i += piece) {
            const int bytes = int(std::min(piece, count - i) * sizeof(T));
            if (_stream.readRawData(reinterpret_cast<char*>(values.data() + i), bytes) != bytes) {
                fail();
            }
        }
    }
    template <class T, class F>
    void list(std::vector<T>& values, F&& each) {
        const std::size_t count = countOf(1);
        for (std::size_t i = 0; i < count && isGood(); ++i) {
            values.emplace_back();
            each(values.back());
        }
    }
    bool isGood() const { return _stream.status() == QDataStream::Ok; }

private:
    void fail() { _stream.setStatus(QDataStream::ReadCorruptData); }
    /// Never more elements than the rest of the device has bytes for.
    std::size_t countOf(std::size_t size) {
        quint64 count = 0;
        number(count);
        if (count > quint64(_device.bytesAvailable()) / size) {
            fail();
            return 0;
        }
        return std::size_t(count);
    }

    QIODevice& _device;
    QDataStream _stream;
};

template <class Stream, class Site>
void carrySite(Stream& stream, Site& site) {
    stream.text(site.name);
    stream.number(site.latitude);
    stream.number(site.longitude);
    stream.number(site.altitude);
    stream.number(site.heightOfAntenna);
}

template <class Stream, class Moment>
void carryMoment(Stream& stream, Moment& moment) {
    stream.number(moment.quantity);
    stream.text(moment.name);
    stream.number(moment.gates);
    stream.number(moment.firstGate);
    stream.number(moment.gateSpacing);
    stream.number(moment.scale);
    stream.number(moment.offset);
    stream.array(moment.codes);
}

template <class Stream, class Sweep>
void carrySweep(Stream& stream, Sweep& sweep) {
    stream.number(sweep.fixedAngle);
    stream.time(sweep.time);
    stream.number(sweep.nyquist);
    stream.number(sweep.prf);
    stream.array(sweep.azimuths);
    stream.array(sweep.elevations);
    stream.list(sweep.moments, [&](auto& moment) { carryMoment(stream, moment); });
}

template <class Stream, class Grid>
void carryGrid(Stream& stream, Grid& grid) {
    stream.array(grid.x);
    stream.array(grid.y);
    stream.array(grid.z);
    stream.text(grid.projection);
    stream.number(grid.earthRadius);
    stream.number(grid.inverseFlattening);
    stream.list(grid.fields, [&](auto& field) {
        stream.number(field.quantity);
        stream.text(field.name);
        stream.array(field.values);
    });
}

template <class Stream, class Data>
void carry(Stream& stream, Data& data) {
    stream.text(data.format);
    carrySite(stream, data.site);
    stream.time(data.time);
    stream.number(data.wavelength);
    stream.number(data.beamWidth);
    stream.number(data.isPiece);
    stream.texts(data.leftOut);
    stream.texts(data.warnings);
    stream.list(data.sweeps, [&](auto& sweep) { carrySweep(stream, sweep); });
}

bool isKnown(QUORRadarQuantity quantity) {
    return int(quantity) >= 0 && int(quantity) < int(QUORRadarQuantities::ALL.size());
}

} // namespace

bool QUORRadarDataStream::write(QIODevice& device, const QUORRadarData& data) {
    Writer writer(device);
    carry(writer, data);
    writer.number(quint8(data.grid.has_value()));
    if (data.grid) {
        carryGrid(writer, *data.grid);
    }
    return writer.isGood();
}

std::optional<QUORRadarData> QUORRadarDataStream::read(QIODevice& device) {
    QUORRadarData data;
    Reader reader(device);
    carry(reader, data);
    quint8 hasGrid = 0;
    reader.number(hasGrid);
    if (hasGrid != 0 && reader.isGood()) {
        carryGrid(reader, data.grid.emplace());
    }
    bool good = reader.isGood();
    for (const QUORRadarSweep& sweep : data.sweeps) {
        for (const QUORRadarMoment& moment : sweep.moments) {
            good = good && isKnown(moment.quantity);
        }
    }
    if (data.grid) {
        for (const QUORRadarGrid::Field& field : data.grid->fields) {
            good = good && isKnown(field.quantity);
        }
    }
    return good ? std::optional(std::move(data)) : std::nullopt;
}
