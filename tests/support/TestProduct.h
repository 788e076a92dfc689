// SPDX-License-Identifier: MIT
#pragma once

#include "ProductWriter.h"

#include <functional>
#include <optional>

/// A product file to be: set the fields, then write it. By default a small one-byte reflectivity volume
/// around a site at 60 N 25 E.
struct TestProduct : SampleProduct {
    TestProduct();
    /// A 2D rainfall product of two-byte elements, with a name to match.
    static TestProduct sri();

    /// The element at (x, y, z); all elements are 1 without it.
    std::function<unsigned int(int, int, int)> fill;
    /// What the header says and the elements' size, where they shall differ from what belongs to the fields.
    std::optional<qint32> totalSize;
    std::optional<int> itemSize;
    /// In place of the first three letters of the file name.
    QString prefix;

    QByteArray header() const;
    QByteArray bytes() const;
    QString fileName() const;
    /// Overwrites the file; a test failure when that is not possible.
    void writeTo(const QString& path) const;
    /// Under `fileName()` in that folder; returns the path.
    QString write(const QString& folder) const;
};
