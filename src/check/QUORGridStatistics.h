// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDataType.h"

#include <array>

/// What the elements of a product's grid are: how many hold data, and how their values are spread. In the
/// units of the product.
struct QUORGridStatistics {
    static constexpr int BINS = 20;

    qint64 elements = 0;
    qint64 withData = 0;
    /// Of the elements with data; 0 when there are none.
    double minimum = 0.0;
    double maximum = 0.0;
    double mean = 0.0;
    /// Of equal width from `minimum` to `maximum`.
    std::array<qint64, BINS> histogram{};

    double binStart(int bin) const { return minimum + bin * (maximum - minimum) / BINS; }

    /// Elements of one or two bytes, in the byte order of this machine.
    static QUORGridStatistics compute(const QUORDataType& type, const void* elements, qint64 count,
                                      int itemSize);
};
