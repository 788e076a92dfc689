// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <vtkSmartPointer.h>

class QUORFile;
class vtkImageData;

/// Reads the data grid of a product file for the elements that draw it. The grid that it hands out owns
/// its memory, so nothing refers to the file afterwards. Any thread; it blocks on the disk.
class QUORGridReader {
public:
    /// The file must outlive the reader.
    explicit QUORGridReader(const QUORFile& file) : _file(file) {}

    /// The first `levels` levels as stored (unsigned bytes or shorts) with origin 0 and spacing
    /// (1, 1, zSpacing). Null, with the reason in `getError`, when no grid can be built from the file,
    /// when it is not the same product any more, or when it cannot be read in full.
    vtkSmartPointer<vtkImageData> read(int levels, double zSpacing);
    /// Why the last read gave nothing.
    QString getError() const { return _error; }

private:
    bool readElements(int descriptor, void* elements, qint64 bytes);

    const QUORFile& _file;
    QString _error;
};
