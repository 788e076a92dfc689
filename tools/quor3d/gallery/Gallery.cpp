// SPDX-License-Identifier: MIT
#include "Gallery.h"

#include "QUORFilePublisher.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QUrl>

#include <algorithm>

namespace {

const QByteArray OWN_PAGE = QByteArrayLiteral("<meta name=\"generator\" content=\"quor3d gallery\">");
constexpr PictureCopier::Form PREVIEW{"jpg", 82, 480};
constexpr int COPY_QUALITY = 92;
constexpr int PNG_QUALITY = 80; // of the image library: little effort, the picture stays the same

QByteArray readWhole(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray resource(const char* name) {
    return readWhole(QStringLiteral(":/gallery/") + QLatin1String(name));
}

/// The call of a function of the page. In plain ASCII and without a character that markup knows, so that no
/// name ends the script or depends on an encoding.
QByteArray toScript(const char* function, const QJsonObject& list) {
    QByteArray script = QByteArrayLiteral("quor3dGallery.") + function + '(';
    for (const QChar c : QString::fromUtf8(QJsonDocument(list).toJson(QJsonDocument::Compact))) {
        if (c.unicode() > 126 || c == QLatin1Char('<') || c == QLatin1Char('>') || c == QLatin1Char('&')) {
            script += "\\u" + QByteArray::number(c.unicode(), 16).rightJustified(4, '0');
        } else {
            script += c.toLatin1();
        }
    }
    return script + ");\n";
}

QString encoded(const QString& path) {
    return QString::fromLatin1(QUrl::toPercentEncoding(path, "/"));
}

QString stampText(qint64 stamp) {
    return QString::number(stamp, 36);
}

} // namespace

Gallery::Gallery(Options options) : _options(std::move(options)) {
    _options.pictures = QDir(_options.pictures).absolutePath();
    _options.page = QDir(_options.page).absolutePath();
}

QString Gallery::folder(const char* name) const {
    return _options.page + QStringLiteral("/gallery/") + QLatin1String(name);
}

QString Gallery::writePage() {
    Q_INIT_RESOURCE(gallery);
    const QString path = _options.page + QStringLiteral("/index.html");
    if (QFileInfo::exists(path) && !readWhole(path).contains(OWN_PAGE)) {
        return path + QStringLiteral(": another page stands there");
    }
    for (const char* name : {"copies", "latest", "series"}) {
        if (!QDir().mkpath(folder(name))) {
            return folder(name) + QStringLiteral(": the folder cannot be made");
        }
        QUORFilePublisher::removeLeftovers(folder(name));
    }
    QByteArray page = resource("page.html");
    page.replace("@STYLE@", resource("page.css"));
    page.replace("@SCRIPT@", resource("page.js"));
    return publish(path, page);
}

QString Gallery::update(std::chrono::milliseconds time) {
    PictureCatalogue catalogue(_options.pictures);
    if (!catalogue.getError().isEmpty()) {
        return catalogue.getError();
    }
    catalogue.keepNewest(_options.most);
    _kept.clear();
    makeCopies(catalogue, time);
    QString error;
    QJsonArray list;
    qint64 newest = 0;
    _shown = 0;
    for (const PictureSeries& series : catalogue.getSeries()) {
        const QJsonObject entry = writeSeries(series, error);
        if (!entry.isEmpty()) {
            list.append(entry);
        }
        for (const CataloguedPicture& picture : series.pictures) {
            newest = std::max(newest, picture.stamp);
        }
    }
    const QString listError = publish(_options.page + QStringLiteral("/gallery/latest.js"),
                                      toScript("latest", {{QStringLiteral("title"), _options.title},
                                                          {QStringLiteral("refresh"), _options.refresh},
                                                          {QStringLiteral("newest"), newest},
                                                          {QStringLiteral("series"), list}}));
    for (const char* name : {"copies", "latest", "series"}) {
        removeOthers(name);
    }
    return error.isEmpty() ? listError : error;
}

bool Gallery::needsCopy(const CataloguedPicture& picture) {
    const QString ending = QFileInfo(picture.fileName).suffix().toLower();
    return ending == QStringLiteral("tiff") || ending == QStringLiteral("tif");
}

QString Gallery::copyName(const CataloguedPicture& picture) const {
    return picture.fileName + QLatin1Char('.') + _options.copies;
}

bool Gallery::isShowable(const CataloguedPicture& picture) const {
    return !needsCopy(picture) ||
           PictureCopier::isCurrent(picture.stamp, folder("copies/") + copyName(picture));
}

void Gallery::makeCopies(const PictureCatalogue& catalogue, std::chrono::milliseconds time) {
    struct Wanted {
        std::size_t age; // 0 for the newest of its series
        const CataloguedPicture* picture;
    };
    std::vector<Wanted> wanted;
    for (const PictureSeries& series : catalogue.getSeries()) {
        for (std::size_t i = 0; i < series.pictures.size(); ++i) {
            const CataloguedPicture& picture = series.pictures[i];
            if (needsCopy(picture)) {
                _kept.insert(copyName(picture));
                wanted.push_back({series.pictures.size() - 1 - i, &picture});
            }
        }
    }
    std::ranges::stable_sort(wanted, {}, &Wanted::age);
    const bool png = _options.copies == QStringLiteral("png");
    const PictureCopier::Form form{png ? "png" : "webp", png ? PNG_QUALITY : COPY_QUALITY, 0};
    const auto end = std::chrono::steady_clock::now() + time;
    _isBehind = false;
    for (const Wanted& each : wanted) {
        if (std::chrono::steady_clock::now() >= end) {
            _isBehind = true;
            return;
        }
        _copier.provide(_options.pictures + QLatin1Char('/') + each.picture->fileName, each.picture->stamp,
                        folder("copies/") + copyName(*each.picture), form);
    }
}

QString Gallery::address(const CataloguedPicture& picture) const {
    if (needsCopy(picture)) {
        return QStringLiteral("gallery/copies/") + encoded(copyName(picture));
    }
    return encoded(
        QDir(_options.page).relativeFilePath(_options.pictures + QLatin1Char('/') + picture.fileName));
}

/// What the list of all series says of this one; nothing when none of its pictures can be shown yet.
QJsonObject Gallery::writeSeries(const PictureSeries& series, QString& error) {
    QJsonArray pictures;
    QString before;
    QString after;
    const CataloguedPicture* newest = nullptr;
    for (const CataloguedPicture& picture : series.pictures) {
        if (!isShowable(picture)) {
            continue;
        }
        const QString path = address(picture);
        if (newest == nullptr) {
            const qsizetype at = path.indexOf(picture.time, path.lastIndexOf(QLatin1Char('/')));
            before = path.left(at);
            after = path.mid(at + picture.time.size());
        }
        QJsonArray entry{picture.time, stampText(picture.stamp)};
        if (path != before + picture.time + after) {
            entry.append(path);
        }
        pictures.append(entry);
        newest = &picture;
    }
    if (newest == nullptr) {
        return {};
    }
    _shown += pictures.size();
    const QString id = series.id();
    const QByteArray content = QJsonDocument(pictures).toJson(QJsonDocument::Compact);
    const QString version =
        QString::fromLatin1(QCryptographicHash::hash(content, QCryptographicHash::Sha1).toHex().left(12));
    _kept.insert(id + QStringLiteral(".js"));
    const QString written = publish(folder("series/") + id + QStringLiteral(".js"),
                                    toScript("series", {{QStringLiteral("id"), id},
                                                        {QStringLiteral("version"), version},
                                                        {QStringLiteral("before"), before},
                                                        {QStringLiteral("after"), after},
                                                        {QStringLiteral("pictures"), pictures}}));
    if (error.isEmpty()) {
        error = written;
    }
    return {{QStringLiteral("id"), id},
            {QStringLiteral("version"), version},
            {QStringLiteral("site"), series.site},
            {QStringLiteral("configuration"), series.configuration},
            {QStringLiteral("view"), series.view},
            {QStringLiteral("time"), newest->time},
            {QStringLiteral("preview"), providePreview(id, *newest)}};
}

/// The address of a small picture of the newest one; empty when it cannot be made.
QString Gallery::providePreview(const QString& id, const CataloguedPicture& newest) {
    const QString name = id + QStringLiteral(".jpg");
    _kept.insert(name);
    const bool good = _copier.provide(_options.pictures + QLatin1Char('/') + newest.fileName, newest.stamp,
                                      folder("latest/") + name, PREVIEW);
    return good ? QStringLiteral("gallery/latest/") + name + QLatin1Char('?') + stampText(newest.stamp)
                : QString();
}

/// Empty, or the path and the reason. A file that holds this already is left as it is.
QString Gallery::publish(const QString& path, const QByteArray& content) {
    if (readWhole(path) == content) {
        return {};
    }
    QUORFilePublisher publisher(path);
    QFile file(publisher.getTemporaryPath());
    const bool written = publisher.isReady() && file.open(QIODevice::WriteOnly) &&
                         file.write(content) == content.size() && file.flush();
    file.close();
    if (written && publisher.publish(false)) {
        return {};
    }
    return path + QStringLiteral(": ") +
           (publisher.getError().isEmpty() ? file.errorString() : publisher.getError());
}

void Gallery::removeOthers(const char* name) const {
    const QDir directory(folder(name));
    for (const QString& file : directory.entryList(QDir::Files)) {
        if (!_kept.contains(file)) {
            QFile::remove(directory.filePath(file));
        }
    }
}
