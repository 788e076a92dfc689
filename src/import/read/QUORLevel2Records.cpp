// SPDX-License-Identifier: MIT
#include "QUORLevel2Records.h"

#include <bzlib.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <exception>
#include <thread>

namespace {

/// Many times the largest record of today's radars, and no bomb.
constexpr qsizetype LARGEST_RECORD = qsizetype(32) << 20;
constexpr qsizetype USUAL_RECORD = qsizetype(1) << 20;
/// Every message but a ray fills a frame of that size.
constexpr qsizetype FRAME_SIZE = 2432;
/// Of the communications manager, before each message.
constexpr qsizetype PREFIX_SIZE = 12;
constexpr qsizetype MESSAGE_HEADER = 16;
constexpr int RAY = 31;
constexpr int OLD_RAY = 1;
constexpr unsigned MOST_THREADS = 8;

QByteArray unpack(QByteArrayView packed) {
    QByteArray bytes(USUAL_RECORD, Qt::Uninitialized);
    bz_stream stream{};
    if (BZ2_bzDecompressInit(&stream, 0, 0) != BZ_OK) {
        throw std::bad_alloc();
    }
    struct Closer {
        bz_stream* stream;
        ~Closer() { BZ2_bzDecompressEnd(stream); }
    } const closer{&stream};
    stream.next_in = const_cast<char*>(packed.data());
    stream.avail_in = unsigned(packed.size());
    qsizetype filled = 0;
    for (;;) {
        stream.next_out = bytes.data() + filled;
        stream.avail_out = unsigned(bytes.size() - filled);
        const int status = BZ2_bzDecompress(&stream);
        filled = stream.next_out - bytes.data();
        if (status == BZ_STREAM_END) {
            bytes.truncate(filled);
            return bytes;
        }
        if (status == BZ_MEM_ERROR) {
            throw std::bad_alloc();
        }
        if (status != BZ_OK || (stream.avail_in == 0 && stream.avail_out > 0)) {
            throw QUORImportError(QStringLiteral("a packed record is damaged"));
        }
        if (stream.avail_out == 0) {
            if (bytes.size() >= LARGEST_RECORD) {
                throw QUORImportError(QStringLiteral("a packed record holds more than 32 MiB"));
            }
            bytes.resize(2 * bytes.size());
        }
    }
}

std::vector<QUORLevel2Radial> radialsOf(QByteArrayView bytes) {
    std::vector<QUORLevel2Radial> radials;
    const QUORByteCursor record(bytes);
    qsizetype start = 0;
    while (start + PREFIX_SIZE + MESSAGE_HEADER <= record.size()) {
        const qsizetype size = record.number<quint16>(start + PREFIX_SIZE) * qsizetype(2);
        const int type = record.number<quint8>(start + PREFIX_SIZE + 3);
        if (type == OLD_RAY) {
            throw QUORImportError(QStringLiteral("rays of the kind from before 2008 (message 1)"));
        }
        if (type != RAY) {
            start += FRAME_SIZE;
            continue;
        }
        if (size <= MESSAGE_HEADER) {
            throw QUORImportError(QStringLiteral("a ray without content"));
        }
        radials.push_back(QUORLevel2Radial::parse(
            QUORByteCursor(record.bytes(start + PREFIX_SIZE + MESSAGE_HEADER, size - MESSAGE_HEADER))));
        start += PREFIX_SIZE + size;
    }
    return radials;
}

} // namespace

QUORLevel2Records::QUORLevel2Records(QByteArrayView content) {
    const QUORByteCursor file(content);
    qsizetype start = HEADER_SIZE;
    if (file.size() >= start + 7 && file.bytes(start + 4, 3) != "BZh") {
        _records.push_back({content.sliced(start), false});
        return;
    }
    while (start + 4 <= file.size()) {
        const qsizetype length = std::abs(qsizetype(file.number<qint32>(start)));
        start += 4;
        if (length == 0) {
            break;
        }
        if (length > file.size() - start) {
            throw QUORImportError(QStringLiteral("cut off in record %1").arg(_records.size() + 1));
        }
        _records.push_back({content.sliced(start, length), true});
        start += length;
    }
    if (_records.empty()) {
        throw QUORImportError(QStringLiteral("cut off in record %1").arg(_records.size() + 1));
    }
}

std::vector<QUORLevel2Radial> QUORLevel2Records::readRadials() const {
    std::vector<std::vector<QUORLevel2Radial>> found(_records.size());
    std::vector<std::exception_ptr> errors(_records.size());
    std::atomic<std::size_t> next{0};
    const auto work = [&] {
        for (std::size_t i = next++; i < _records.size(); i = next++) {
            try {
                found[i] = radialsOf(_records[i].isPacked ? QByteArrayView(unpack(_records[i].bytes))
                                                          : _records[i].bytes);
            } catch (...) {
                errors[i] = std::current_exception();
            }
        }
    };
    {
        std::vector<std::jthread> threads;
        const unsigned workers = std::clamp(std::thread::hardware_concurrency(), 1U, MOST_THREADS);
        for (unsigned i = 1; i < workers && i < _records.size(); ++i) {
            threads.emplace_back(work);
        }
        work();
    }
    std::vector<QUORLevel2Radial> radials;
    for (std::size_t i = 0; i < found.size(); ++i) {
        if (errors[i]) {
            std::rethrow_exception(errors[i]);
        }
        std::move(found[i].begin(), found[i].end(), std::back_inserter(radials));
    }
    return radials;
}
