// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <vector>

/// One picture of a series.
struct CataloguedPicture {
    QString time;
    QString fileName;
    /// When it was written, milliseconds since 1970: another one after it has been replaced.
    qint64 stamp = 0;
};

/// The pictures of one site, configuration and view, ascending in time, one for each time.
struct PictureSeries {
    QString site;
    QString configuration;
    QString view;
    std::vector<CataloguedPicture> pictures;

    /// A short name for files that belong to the series, the same in every run.
    QString id() const;
};

/// The pictures in a folder at one moment, by what their names say.
class PictureCatalogue {
public:
    /// Looks at once. Of two pictures of one series and time the later written one counts.
    explicit PictureCatalogue(const QString& folder);

    /// Empty, or why the folder could not be listed.
    QString getError() const { return _error; }
    /// Ascending by site, configuration and view.
    const std::vector<PictureSeries>& getSeries() const { return _series; }
    /// Keeps the newest pictures of each series only.
    void keepNewest(std::size_t most);

private:
    std::vector<PictureSeries> _series;
    QString _error;
};
