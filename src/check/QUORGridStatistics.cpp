// SPDX-License-Identifier: MIT
#include "QUORGridStatistics.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

QUORGridStatistics QUORGridStatistics::compute(const QUORDataType& type, const void* elements, qint64 count,
                                               int itemSize) {
    // Few different values stand for many elements, and each is converted once.
    std::vector<qint64> counts(std::size_t(std::numeric_limits<std::uint16_t>::max()) + 1);
    const auto* bytes = static_cast<const unsigned char*>(elements);
    for (qint64 i = 0; i < count; ++i) {
        std::uint16_t value = bytes[i * itemSize];
        if (itemSize == 2) {
            std::memcpy(&value, bytes + i * 2, sizeof(value));
        }
        ++counts[value];
    }
    QUORGridStatistics result;
    result.elements = count;
    double sum = 0.0;
    result.minimum = std::numeric_limits<double>::max();
    result.maximum = std::numeric_limits<double>::lowest();
    const auto forEach = [&](const auto& visit) {
        const unsigned int last = std::min<unsigned int>(type.getMaxAbsValue(), unsigned(counts.size() - 1));
        for (unsigned int raw = type.getMinAbsValue(); raw <= last; ++raw) {
            if (counts[raw] > 0) {
                visit(type.absoluteToDisplayValue(raw), counts[raw]);
            }
        }
    };
    forEach([&](double value, qint64 number) {
        result.withData += number;
        sum += value * double(number);
        result.minimum = std::min(result.minimum, value);
        result.maximum = std::max(result.maximum, value);
    });
    if (result.withData == 0) {
        result.minimum = 0.0;
        result.maximum = 0.0;
        return result;
    }
    result.mean = sum / double(result.withData);
    const double width = (result.maximum - result.minimum) / BINS;
    forEach([&](double value, qint64 number) {
        const int bin = width > 0.0 ? int((value - result.minimum) / width) : 0;
        result.histogram[std::size_t(std::min(bin, BINS - 1))] += number;
    });
    return result;
}
