// SPDX-License-Identifier: MIT
#pragma once

#include "PictureCatalogue.h"
#include "PictureCopier.h"

#include <QJsonObject>
#include <QSet>
#include <QString>

#include <chrono>

/// A page that shows the pictures of a folder, in files of its own: "index.html", and beside it the folder
/// "gallery" with lists that the page loads as scripts, copies of what browsers cannot show, and small
/// pictures of the newest. The lists follow the folder with each `update`; nothing is written that has not
/// changed.
class Gallery {
public:
    struct Options {
        /// Of the pictures, and of the page.
        QString pictures;
        QString page;
        QString title;
        /// Format of the copies: "webp" or "png".
        QString copies;
        /// The newest pictures of each series that are shown.
        std::size_t most = 0;
        /// Seconds between two looks of the page at its lists.
        int refresh = 0;
    };

    explicit Gallery(Options options);

    /// Writes the page itself. Empty, or why it cannot stand there: a page of somebody else is left alone.
    QString writePage();
    /// Looks at the pictures and writes the lists. Copies are made for that long, the newest first.
    /// Empty, or what failed.
    QString update(std::chrono::milliseconds time);
    /// Whether pictures still wait for their copies after the last update.
    bool isBehind() const { return _isBehind; }
    /// Of the last update.
    qsizetype getShownPictures() const { return _shown; }
    qsizetype getFailures() const { return _copier.getFailures(); }

private:
    QString folder(const char* name) const;
    static bool needsCopy(const CataloguedPicture& picture);
    QString copyName(const CataloguedPicture& picture) const;
    void makeCopies(const PictureCatalogue& catalogue, std::chrono::milliseconds time);
    bool isShowable(const CataloguedPicture& picture) const;
    QString address(const CataloguedPicture& picture) const;
    QJsonObject writeSeries(const PictureSeries& series, QString& error);
    QString providePreview(const QString& id, const CataloguedPicture& newest);
    static QString publish(const QString& path, const QByteArray& content);
    void removeOthers(const char* name) const;

    Options _options;
    PictureCopier _copier;
    /// Names below the folder "gallery" that belong to the pictures of this update.
    QSet<QString> _kept;
    bool _isBehind = false;
    qsizetype _shown = 0;
};
