// SPDX-License-Identifier: MIT
#include "QUORRadarReader.h"

#include "QUORCfGridReader.h"
#include "QUORCfRadialReader.h"
#include "QUORClassicNetcdf.h"
#include "QUORImportError.h"
#include "QUORLevel2Reader.h"
#include "QUORNetcdfFile.h"
#include "QUOROdimReader.h"
#include "QUORRadarChecks.h"

#include <QFile>

#include <algorithm>

namespace {

QUORRadarData readNetcdf(const QUORNetcdfGroup& root) {
    if (QUOROdimReader::recognises(root)) {
        return QUOROdimReader::read(root);
    }
    if (QUORCfRadialReader::recognises(root)) {
        return QUORCfRadialReader::read(root);
    }
    if (QUORCfGridReader::recognises(root)) {
        return QUORCfGridReader::read(root);
    }
    throw QUORImportError(QStringLiteral(
        "an HDF5 or netCDF file, but neither ODIM_H5 nor CfRadial nor a grid with x, y and z"));
}

enum class Container { Level2, Netcdf };

/// HDF5 may stand behind a block of the user's own.
bool isHdf5(QByteArrayView content) {
    constexpr qsizetype FARTHEST = 65536;
    for (qsizetype offset = 0; offset <= FARTHEST && offset + 8 <= content.size();
         offset = offset == 0 ? 512 : 2 * offset) {
        if (content.sliced(offset, 8) == "\x89HDF\r\n\x1a\n") {
            return true;
        }
    }
    return false;
}

Container containerOf(QByteArrayView content) {
    if (content.isEmpty()) {
        throw QUORImportError(QStringLiteral("empty"));
    }
    if (content.startsWith("AR2V") || content.startsWith("ARCHIVE2")) {
        return Container::Level2;
    }
    if (QUORClassicNetcdf::recognises(content)) {
        QUORClassicNetcdf::demandWhole(content);
        return Container::Netcdf;
    }
    if (isHdf5(content)) {
        return Container::Netcdf;
    }
    if (content.startsWith("\x1f\x8b") || content.startsWith("BZh") || content.startsWith("PK\x03\x04")) {
        throw QUORImportError(QStringLiteral("packed as a whole; unpack it first"));
    }
    throw QUORImportError(QStringLiteral("none of ODIM_H5, CfRadial, gridded netCDF and NEXRAD Level II"));
}

/// `source` is what the netCDF library opens.
template <class Source>
QUORRadarData readContent(QByteArrayView content, const Source& source) {
    QUORRadarData data;
    if (containerOf(content) == Container::Netcdf) {
        const QUORNetcdfFile netcdf(source);
        data = readNetcdf(netcdf.getRoot());
    } else {
        data = QUORLevel2Reader::read(content);
    }
    QUORRadarChecks::verify(data);
    return data;
}

} // namespace

QUORRadarData QUORRadarReader::read(int descriptor) {
    QFile file;
    if (!file.open(descriptor, QIODevice::ReadOnly, QFileDevice::DontCloseHandle)) {
        throw QUORImportError(file.errorString());
    }
    if (file.size() > LARGEST_FILE) {
        throw QUORImportError(QStringLiteral("larger than 2 GiB"));
    }
    const uchar* const content = file.size() > 0 ? file.map(0, file.size()) : nullptr;
    if (content == nullptr && file.size() > 0) {
        throw QUORImportError(file.errorString());
    }
    return readContent(QByteArrayView(content, file.size()), descriptor);
}

QUORRadarData QUORRadarReader::read(const QByteArray& content) {
    return readContent(content, content);
}
