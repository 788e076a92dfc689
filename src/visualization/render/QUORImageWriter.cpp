// SPDX-License-Identifier: MIT
#include "QUORImageWriter.h"

#include "QUORExportSettings.h"
#include "QUORFilePublisher.h"
#include "QUORSystem.h"

#include <QFile>
#include <QFileInfo>

#include <vtkErrorCode.h>
#include <vtkImageData.h>
#include <vtkJPEGWriter.h>
#include <vtkNew.h>
#include <vtkPNGWriter.h>
#include <vtkTIFFWriter.h>

#include <cerrno>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

vtkSmartPointer<vtkImageWriter> QUORImageWriter::createWriter(int outputFormat) {
    if (outputFormat == QUORExportSettings::Tiff) {
        auto writer = vtkSmartPointer<vtkTIFFWriter>::New();
        writer->SetCompressionToNoCompression();
        return writer;
    }
    if (outputFormat == QUORExportSettings::Jpeg) {
        auto writer = vtkSmartPointer<vtkJPEGWriter>::New();
        writer->ProgressiveOff();
        return writer;
    }
    auto writer = vtkSmartPointer<vtkPNGWriter>::New();
    writer->SetCompressionLevel(1);
    return writer;
}

QUORImageWriter::QUORImageWriter(const QString& path) : _path(path) {}

bool QUORImageWriter::canOpen() {
    const QByteArray path = QFile::encodeName(_path);
    struct stat info = {};
    if (::lstat(path.constData(), &info) == 0) {
        if (!S_ISREG(info.st_mode) && !S_ISLNK(info.st_mode)) {
            _error = QStringLiteral("not a regular file");
            return false;
        }
        if (S_ISREG(info.st_mode) && ::access(path.constData(), W_OK) != 0) {
            _error = QUORSystem::errorText();
            return false;
        }
    }
    const QByteArray folder = QFile::encodeName(QFileInfo(_path).absolutePath());
    if (::access(folder.constData(), W_OK | X_OK) != 0) {
        _error = QUORSystem::errorText();
        return false;
    }
    return true;
}

bool QUORImageWriter::write(vtkImageData* picture, int outputFormat) {
    QUORFilePublisher publisher(_path);
    if (!publisher.isReady()) {
        _error = publisher.getError();
        return false;
    }
    const int memory = ::memfd_create("image", MFD_CLOEXEC);
    if (memory < 0) {
        _error = QUORSystem::errorText();
        return false;
    }
    const bool encoded = encode(picture, outputFormat, memory);
    const bool published = encoded && publisher.copyFrom(memory) && publisher.publish(false);
    ::close(memory);
    if (encoded && !published) {
        _error = publisher.getError();
    }
    return published;
}

bool QUORImageWriter::encode(vtkImageData* picture, int outputFormat, int file) {
    const vtkSmartPointer<vtkImageWriter> writer = createWriter(outputFormat);
    writer->SetFileName(("/proc/self/fd/" + std::to_string(file)).c_str());
    writer->SetInputData(picture);
    writer->Write();
    if (writer->GetErrorCode() != vtkErrorCode::NoError) {
        _error = QString::fromLatin1(vtkErrorCode::GetStringFromErrorCode(writer->GetErrorCode()));
        return false;
    }
    struct stat info = {};
    rlimit limit = {};
    if (::fstat(file, &info) != 0 || ::getrlimit(RLIMIT_FSIZE, &limit) != 0 ||
        rlim_t(info.st_size) >= limit.rlim_cur) {
        _error = QStringLiteral("the process may not write files of this size");
        return false;
    }
    return true;
}
