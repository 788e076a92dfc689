// SPDX-License-Identifier: MIT
#pragma once

#include "QUORGridShape.h"
#include "QUORInterpolation.h"
#include "QUORRadarData.h"
#include "QUORRainRelation.h"

#include <QStringList>

#include <deque>
#include <set>
#include <vector>

/// What shall be made of radar data, and where it goes.
struct QUORImportOptions {
    /// Names of all 2D products that can be made.
    static QStringList allFlat();

    QString folder3d;
    QString folder2d;
    QUORGridRequest grid;
    /// Of the 3D products.
    std::set<QUORRadarQuantity> quantities{QUORRadarQuantities::ALL.begin(), QUORRadarQuantities::ALL.end()};
    /// Names of the 2D products.
    QStringList flat = allFlat();
    QString site;     ///< in place of the name in the data, where not empty
    int itemSize = 2; ///< bytes of an element, where the quantity has both forms
    QUORRainRelation rain = QUORRainRelation::standard();
    double rainHeight = 1000.0; ///< of SRI above the antenna, metres
    QUORBetweenBeams between = QUORBetweenBeams::Decibel;
};

/// One product that was or would be written.
struct QUORImportedProduct {
    QString product;       ///< "CAPPI", "MAX", ...
    QString configuration; ///< "Z", "V", "W", "R"; empty for VIL
    QString path;
    QString source; ///< the field that it was made from
};

struct QUORImportResult {
    QString site;
    QUORGridShape shape;
    std::vector<QUORImportedProduct> products; ///< as they are written: 2D first
    QStringList warnings;
};

/// Makes the products of one volume.
class QUORImporter {
public:
    explicit QUORImporter(QUORImportOptions options) : _options(std::move(options)) {}

    const QUORImportOptions& getOptions() const { return _options; }
    /// What `import` would write. Throws a QUORImportError.
    QUORImportResult plan(const QUORRadarData& data) const;
    /// Grids the data, then writes all products, each whole under its name or not at all. Throws a
    /// QUORImportError; what fails before the first file is complete leaves none. A product that this
    /// importer made of more sweeps stays.
    QUORImportResult import(const QUORRadarData& data);

private:
    struct Written {
        QString path;
        std::size_t sweeps;
    };

    QUORImportOptions _options;
    std::deque<Written> _written; ///< the last ones
};
