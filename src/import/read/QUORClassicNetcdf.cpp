// SPDX-License-Identifier: MIT
#include "QUORClassicNetcdf.h"

#include "QUORByteCursor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace {

constexpr std::array<int, 12> TYPE_SIZES{0, 1, 1, 2, 4, 4, 8, 1, 2, 4, 8, 8};
constexpr qint64 MOST_ELEMENTS = 100000;
constexpr double LARGEST_FILE = 1e13;

double padded(double size) {
    return std::ceil(size / 4.0) * 4.0;
}

/// Walks through the header once. Sizes are doubles: no product of them can wrap.
class Header {
public:
    explicit Header(QByteArrayView content) : _cursor(content), _version(content[3]) {}

    double end() {
        const double records = count();
        std::vector<double> dimensions;
        for (qint64 i = list(); i > 0; --i) {
            skipName();
            dimensions.push_back(count());
        }
        skipAttributes();
        double end = 0.0;
        double recordSize = 0.0;
        double lastRecord = 0.0;
        std::vector<Variable> variables;
        for (qint64 i = list(); i > 0; --i) {
            variables.push_back(variable(dimensions));
        }
        const auto inRecords = std::count_if(variables.begin(), variables.end(),
                                             [](const Variable& each) { return each.isRecord; });
        for (const Variable& each : variables) {
            if (each.isRecord) {
                // A single variable of records is not padded.
                recordSize += inRecords == 1 ? each.size : padded(each.size);
                lastRecord = std::max(lastRecord, each.begin + each.size);
            } else {
                end = std::max(end, each.begin + each.size);
            }
        }
        const bool isStreamed = records < 0.0;
        return records > 0.0 && !isStreamed ? std::max(end, lastRecord + (records - 1.0) * recordSize) : end;
    }

private:
    struct Variable {
        double begin = 0.0;
        double size = 0.0; ///< of one record
        bool isRecord = false;
    };

    qint64 number() {
        const qint64 value = _cursor.number<qint32>(_at);
        _at += 4;
        return value;
    }
    qint64 wide() {
        const qint64 value = _cursor.number<qint64>(_at);
        _at += 8;
        return value;
    }
    double count() { return double(_version == 5 ? wide() : number()); }
    qint64 listLength() { return _version == 5 ? wide() : number(); }

    qint64 list() {
        number(); // which list
        const qint64 length = listLength();
        if (length < 0 || length > MOST_ELEMENTS) {
            throw QUORImportError(QStringLiteral("damaged: a list of %1 elements").arg(length));
        }
        return length;
    }
    void skip(double bytes) {
        if (!(bytes >= 0.0 && bytes <= double(_cursor.size()))) {
            throw QUORImportError(QStringLiteral("cut off within its header"));
        }
        _at += qsizetype(padded(bytes));
    }
    void skipName() { skip(count()); }
    int typeSize() {
        const qint64 type = number();
        if (type < 1 || type >= qint64(TYPE_SIZES.size())) {
            throw QUORImportError(QStringLiteral("damaged: a type of number that there is not"));
        }
        return TYPE_SIZES[std::size_t(type)];
    }
    void skipAttributes() {
        for (qint64 i = list(); i > 0; --i) {
            skipName();
            const int size = typeSize();
            skip(count() * size);
        }
    }
    Variable variable(const std::vector<double>& dimensions) {
        skipName();
        Variable result;
        result.size = 1.0;
        const qint64 rank = listLength();
        if (rank < 0 || rank > 1024) {
            throw QUORImportError(QStringLiteral("damaged: a variable of %1 dimensions").arg(rank));
        }
        for (qint64 i = 0; i < rank; ++i) {
            const double id = count();
            if (!(id >= 0.0 && id < double(dimensions.size()))) {
                throw QUORImportError(QStringLiteral("damaged: a dimension that there is not"));
            }
            const double length = dimensions[std::size_t(id)];
            result.isRecord = result.isRecord || (i == 0 && length == 0.0);
            result.size *= i == 0 && length == 0.0 ? 1.0 : length;
        }
        skipAttributes();
        result.size *= typeSize();
        count(); // the size as the file has it, which may be cut to four bytes
        result.begin = double(_version == 1 ? number() : wide());
        if (!(result.size >= 0.0 && result.begin >= 0.0 && result.begin + result.size < LARGEST_FILE)) {
            throw QUORImportError(QStringLiteral("damaged: an impossible size"));
        }
        return result;
    }

    QUORByteCursor _cursor;
    int _version;
    qsizetype _at = 4;
};

} // namespace

bool QUORClassicNetcdf::recognises(QByteArrayView content) {
    return content.size() > 4 && content.first(3) == "CDF" &&
           (content[3] == 1 || content[3] == 2 || content[3] == 5);
}

void QUORClassicNetcdf::demandWhole(QByteArrayView content) {
    if (Header(content).end() > double(content.size())) {
        throw QUORImportError(QStringLiteral("cut off: the data end before they are complete"));
    }
}
