// SPDX-License-Identifier: MIT
#pragma once

#include "QUOR2DTop.h"
#include "QUOR3DTop.h"

#include <QDateTime>
#include <QMap>
#include <QString>
#include <QStringList>

#include <functional>

/// What lies in the two product directories: which volumes there are, and how each would find its 2D product,
/// by the rules of the service. Reads every header once; changes nothing.
class QUORProductSurvey {
public:
    /// What a product directory holds.
    struct Directory {
        QString path;
        /// The system's error number of the listing; 0 when it is complete.
        int error = 0;
        int products = 0;
        /// Products that do not belong there: flat ones among volumes, or volumes among flat ones.
        int otherKind = 0;
        QStringList unfinished;
        QStringList discarded;
        int duplicates = 0;
        /// A folder in it that holds products, when it holds none itself.
        QString productFolder;
    };

    /// The volumes of one site in one configuration.
    struct Row {
        QString site;
        QString product;
        QString configuration;
        int files = 0;
        QUORFile::CPtr newest;
        /// The 2D product that the settings name; empty when none is wanted.
        QString product2d;
        int with2d = 0;
        /// Why the others have none, each with how many; and of the newest one of them in detail.
        QMap<QString, int> reasons;
        QString detail;
    };

    /// A rule of the settings: the 2D product of a configuration, empty for none.
    using Product2dOf = std::function<QString(const QString& configuration)>;

    QUORProductSurvey(const QString& path3d, const QString& path2d, int timeWindow,
                      const Product2dOf& product2dOf);

    /// A folder in that directory that holds products; empty for none.
    static QString findProductFolder(const QString& path);

    const Directory& get3D() const { return _directory3d; }
    const Directory& get2D() const { return _directory2d; }
    /// By site and configuration.
    const QList<Row>& getRows() const { return _rows; }

    /// Why a volume has none of that 2D product, as clauses.
    struct Reason {
        QString kind; ///< empty when it has one
        QString detail;
    };
    static Reason findReason(const QUOR2DTop& top, const QUORFileLeaf::CPtr& leaf, const QString& product2d,
                             int timeWindow);

private:
    template <class Top, class Other>
    static std::shared_ptr<Top> survey(Directory& directory);
    void addRow(const QUORDirTop::Leaves& leaves, const QUOR2DTop& top2d, int timeWindow,
                const QString& product2d);

    Directory _directory3d;
    Directory _directory2d;
    QList<Row> _rows;
};
