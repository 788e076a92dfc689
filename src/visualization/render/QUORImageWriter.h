// SPDX-License-Identifier: MIT
#pragma once

#include <vtkSmartPointer.h>

#include <QString>

class vtkImageData;
class vtkImageWriter;

/// Writes a picture to an image file that appears whole or not at all: it is encoded in memory, since the
/// encoders miss a full disk, and written to a hidden temporary beside the target, which takes the target's
/// name only when everything was taken. An image that stands already is kept as it is on every failure.
/// Used by one thread.
class QUORImageWriter {
public:
    /// 0 makes a TIFF writer, 2 a JPEG writer, every other value a PNG writer.
    static vtkSmartPointer<vtkImageWriter> createWriter(int outputFormat);

    explicit QUORImageWriter(const QString& path);

    /// True when an image of that name can be made: its folder takes a new file, and what may stand there
    /// already is a regular file that may be written. Changes nothing.
    bool canOpen();
    /// An RGB picture of 8 bits a sample. False on failure.
    bool write(vtkImageData* picture, int outputFormat);
    /// Why the last call failed.
    QString getError() const { return _error; }

private:
    bool encode(vtkImageData* picture, int outputFormat, int file);

    QString _path;
    QString _error;
};
