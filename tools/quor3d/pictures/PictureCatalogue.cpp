// SPDX-License-Identifier: MIT
#include "PictureCatalogue.h"

#include "PictureName.h"
#include "QUORDirectoryListing.h"
#include "QUORSystem.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <map>
#include <tuple>

QString PictureSeries::id() const {
    QCryptographicHash hash(QCryptographicHash::Sha1);
    for (const QString& part : {site, configuration, view}) {
        hash.addData(part.toUtf8());
        hash.addData(QByteArray(1, '\0'));
    }
    return QString::fromLatin1(hash.result().toHex().left(16));
}

PictureCatalogue::PictureCatalogue(const QString& folder) {
    const QUORDirectoryListing listing(folder);
    if (!listing.isComplete()) {
        _error = folder + QStringLiteral(": ") + QUORSystem::errorText(listing.getError());
        return;
    }
    const QDir directory(folder);
    std::map<std::tuple<QString, QString, QString>, std::map<QString, CataloguedPicture>> found;
    for (const QString& fileName : listing.getNames()) {
        const auto name = PictureName::parse(fileName);
        const QFileInfo file(directory.filePath(fileName));
        if (!name || !file.exists()) {
            continue;
        }
        CataloguedPicture& picture = found[{name->site, name->configuration, name->view}][name->time];
        const qint64 stamp = file.lastModified().toMSecsSinceEpoch();
        if (picture.fileName.isEmpty() || stamp > picture.stamp) {
            picture = {name->time, fileName, stamp};
        }
    }
    for (auto& [key, pictures] : found) {
        PictureSeries series{std::get<0>(key), std::get<1>(key), std::get<2>(key), {}};
        series.pictures.reserve(pictures.size());
        for (auto& [time, picture] : pictures) {
            series.pictures.push_back(std::move(picture));
        }
        _series.push_back(std::move(series));
    }
}

void PictureCatalogue::keepNewest(std::size_t most) {
    for (PictureSeries& series : _series) {
        if (series.pictures.size() > most) {
            series.pictures.erase(series.pictures.begin(), series.pictures.end() - std::ptrdiff_t(most));
        }
    }
}
