// SPDX-License-Identifier: MIT
#include "QUORGridReader.h"

#include "QUORFile.h"
#include "QUORSystem.h"

#include <QFile>

#include <vtkDataArray.h>
#include <vtkImageData.h>
#include <vtkPointData.h>
#include <vtkType.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// A descriptor that is open while it lives. Opening never waits for the other end of a pipe.
class Descriptor {
public:
    explicit Descriptor(const QString& path)
        : _descriptor(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~Descriptor() {
        if (_descriptor >= 0) {
            ::close(_descriptor);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return _descriptor; }

private:
    int _descriptor;
};

/// False at the end of the file and on errors; errno tells them apart.
bool readFully(int descriptor, char* target, qint64 bytes) {
    while (bytes > 0) {
        errno = 0;
        const ssize_t count = ::read(descriptor, target, size_t(bytes));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        target += count;
        bytes -= count;
    }
    return true;
}

} // namespace

vtkSmartPointer<vtkImageData> QUORGridReader::read(int levels, double zSpacing) {
    _error = _file.getGridError();
    if (!_error.isEmpty()) {
        return {};
    }
    const Descriptor descriptor(_file.getPath());
    if (descriptor.get() < 0) {
        _error = QUORSystem::errorText();
        return {};
    }
    auto image = vtkSmartPointer<vtkImageData>::New();
    image->SetDimensions(_file.getXPoints(), _file.getYPoints(), qBound(1, levels, _file.getZPoints()));
    image->SetSpacing(1.0, 1.0, zSpacing);
    image->AllocateScalars(_file.getItemSize() == 1 ? VTK_UNSIGNED_CHAR : VTK_UNSIGNED_SHORT, 1);
    const qint64 bytes = qint64(image->GetNumberOfPoints()) * _file.getItemSize();
    return readElements(descriptor.get(), image->GetScalarPointer(), bytes) ? image : nullptr;
}

bool QUORGridReader::readElements(int descriptor, void* elements, qint64 bytes) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        _error = QUORSystem::errorText();
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        _error = QStringLiteral("not a regular file");
        return false;
    }
    PHD header;
    if (status.st_size < _file.getTotalFileSize() ||
        !readFully(descriptor, header.data(), qint64(header.size()))) {
        _error = QStringLiteral("the file has become shorter than its header says");
        return false;
    }
    if (header != _file.getHeader()) {
        _error = QStringLiteral("the file holds another product by now");
        return false;
    }
    if (!readFully(descriptor, static_cast<char*>(elements), bytes)) {
        _error = errno != 0 ? QUORSystem::errorText() : QStringLiteral("the file ended while it was read");
        return false;
    }
    return true;
}
