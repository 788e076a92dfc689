// SPDX-License-Identifier: MIT
#include "QUORTerrainBlockFile.h"

#include "QUORFilePublisher.h"
#include "QUORGeoProjection.h"
#include "QUORTerrainMesh.h"

#include <vtkImageData.h>
#include <vtkNew.h>
#include <vtkPolyData.h>
#include <vtkPolyDataReader.h>
#include <vtkPolyDataWriter.h>

#include <QBuffer>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>

#include <cstring>
#include <sys/stat.h>

namespace {

constexpr qint64 MAX_FILE_BYTES = 4LL * 1024 * 1024;
constexpr int PNG_QUALITY = 80;
constexpr int TEXTURE_SIDE = QUORTerrainBlock::TEXTURE_SIDE;
constexpr qsizetype TEXTURE_ROW_BYTES = 3LL * TEXTURE_SIDE;
const QString TEXTURE_SUFFIX = QStringLiteral(".png");
const QString DAMAGED = QStringLiteral("damaged, or not made for this tile and projection");

QByteArray hash(QByteArrayView bytes) {
    QCryptographicHash result(QCryptographicHash::Md5);
    result.addData(bytes);
    return result.result().toHex();
}

QByteArrayView pixels(vtkImageData& texture) {
    return {static_cast<const char*>(texture.GetScalarPointer()), TEXTURE_ROW_BYTES * TEXTURE_SIDE};
}

/// A mesh file: the format's line, the title line and the body.
struct MeshFile {
    explicit MeshFile(const QByteArray& bytes) {
        const qsizetype first = bytes.indexOf('\n') + 1;
        const qsizetype second = bytes.indexOf('\n', first) + 1;
        if (first > 0 && second > 0) {
            format = bytes.left(first);
            title = bytes.mid(first, second - first - 1);
            body = bytes.mid(second);
        }
    }
    QByteArray format;
    QByteArray title;
    QByteArray body;
};

/// Stays under the 256 characters that the format allows a title. The centre is as exact as in the file's
/// name, a hundred metres at worst: a radar that places itself anew by satellite must not lose its blocks.
QByteArray makeTitle(const MeshFile& mesh, vtkImageData& texture, const QUORCoordinate& origin,
                     const QUORGeoProjection& projection) {
    const auto number = [](double value, int digits) { return QByteArray::number(value, 'g', digits); };
    const QUORCoordinate centre = projection.getReferenceLocation();
    return "terrain block " + hash(mesh.format + mesh.body) + ' ' + hash(pixels(texture)) + ' ' +
           projection.getName().toUtf8().left(20) + ' ' + number(centre.getLat(), 6) + ' ' +
           number(centre.getLon(), 6) + ' ' + number(projection.getEarthRadius(), 17) + ' ' +
           number(projection.getInverseFlattening(), 17) + ' ' + number(origin.getLat(), 17) + ' ' +
           number(origin.getLon(), 17);
}

QString publish(const QString& fileName, const QByteArray& bytes) {
    QUORFilePublisher publisher(fileName);
    QFile file(publisher.getTemporaryPath());
    if (publisher.isReady()) {
        if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || file.write(bytes) != bytes.size()) {
            return fileName + QStringLiteral(": ") + file.errorString();
        }
        file.close();
        // The checksum tells after a crash; waiting for the disk would cost more than all conversion.
        if (publisher.publish(false)) {
            return {};
        }
    }
    return fileName + QStringLiteral(": ") + publisher.getError();
}

QString readWhole(const QString& fileName, QByteArray& bytes) {
    QFile file(fileName);
    if (!QFileInfo(file).isFile()) {
        return fileName + QStringLiteral(": missing");
    }
    if (!file.open(QIODevice::ReadOnly)) {
        return fileName + QStringLiteral(": ") + file.errorString();
    }
    bytes = file.read(MAX_FILE_BYTES);
    return {};
}

/// The picture's north is at its top, the texture's last row.
QByteArray toPng(vtkImageData& texture) {
    QImage image(TEXTURE_SIDE, TEXTURE_SIDE, QImage::Format_RGB888);
    for (int row = 0; row < TEXTURE_SIDE; ++row) {
        std::memcpy(image.scanLine(row), texture.GetScalarPointer(0, TEXTURE_SIDE - 1 - row, 0),
                    std::size_t(TEXTURE_ROW_BYTES));
    }
    QBuffer png;
    return image.save(&png, "PNG", PNG_QUALITY) ? png.data() : QByteArray();
}

/// Null when the bytes are no texture.
vtkSmartPointer<vtkImageData> fromPng(const QByteArray& bytes) {
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer, "png");
    if (reader.size() != QSize(TEXTURE_SIDE, TEXTURE_SIDE)) {
        return nullptr;
    }
    const QImage image = reader.read().convertToFormat(QImage::Format_RGB888);
    if (image.isNull()) {
        return nullptr;
    }
    auto texture = vtkSmartPointer<vtkImageData>::New();
    texture->SetDimensions(TEXTURE_SIDE, TEXTURE_SIDE, 1);
    texture->AllocateScalars(VTK_UNSIGNED_CHAR, 3);
    for (int row = 0; row < TEXTURE_SIDE; ++row) {
        std::memcpy(texture->GetScalarPointer(0, TEXTURE_SIDE - 1 - row, 0), image.constScanLine(row),
                    std::size_t(TEXTURE_ROW_BYTES));
    }
    return texture;
}

} // namespace

bool QUORTerrainBlockFile::makeFolder(const QString& path) {
    const QFileInfo folder(path);
    if (folder.isDir()) {
        return true;
    }
    const QString parent = folder.absolutePath();
    constexpr mode_t MODE = 0755;
    return (parent == folder.absoluteFilePath() || makeFolder(parent)) &&
           (::mkdir(QFile::encodeName(folder.absoluteFilePath()).constData(), MODE) == 0 ||
            QFileInfo(path).isDir()); // another process was faster
}

QString QUORTerrainBlockFile::write(const QString& fileName, const QUORTerrainBlock& block,
                                    const QUORCoordinate& origin, const QUORGeoProjection& projection) {
    vtkNew<vtkPolyDataWriter> writer;
    writer->SetInputData(block.mesh);
    writer->SetFileTypeToBinary();
    writer->WriteToOutputStringOn();
    writer->Write();
    const MeshFile file(
        QByteArray::fromRawData(writer->GetOutputString(), qsizetype(writer->GetOutputStringLength())));
    const QByteArray png = toPng(*block.texture);
    if (file.body.isEmpty() || png.isEmpty()) {
        return fileName + QStringLiteral(": out of memory");
    }
    makeFolder(QFileInfo(fileName).absolutePath());
    // The mesh last: it vouches for the texture.
    const QString error = publish(fileName + TEXTURE_SUFFIX, png);
    return error.isEmpty()
               ? publish(fileName,
                         file.format + makeTitle(file, *block.texture, origin, projection) + '\n' + file.body)
               : error;
}

QString QUORTerrainBlockFile::read(const QString& fileName, const QUORCoordinate& origin,
                                   const QUORGeoProjection& projection, QUORTerrainBlock& block) {
    QByteArray meshBytes;
    QByteArray textureBytes;
    for (const QString& error :
         {readWhole(fileName, meshBytes), readWhole(fileName + TEXTURE_SUFFIX, textureBytes)}) {
        if (!error.isEmpty()) {
            return error;
        }
    }
    const vtkSmartPointer<vtkImageData> texture = fromPng(textureBytes);
    if (!texture) {
        return fileName + TEXTURE_SUFFIX + QStringLiteral(": ") + DAMAGED;
    }
    const MeshFile file(meshBytes);
    if (file.title.isEmpty() || file.title != makeTitle(file, *texture, origin, projection)) {
        return fileName + QStringLiteral(": ") + DAMAGED;
    }
    vtkNew<vtkPolyDataReader> reader;
    reader->ReadFromInputStringOn();
    reader->SetBinaryInputString(meshBytes.constData(), int(meshBytes.size()));
    reader->Update();
    if (!QUORTerrainMesh::isWhole(*reader->GetOutput())) {
        return fileName + QStringLiteral(": ") + DAMAGED;
    }
    block.mesh = vtkSmartPointer<vtkPolyData>::New();
    block.mesh->ShallowCopy(reader->GetOutput());
    block.texture = texture;
    return {};
}
