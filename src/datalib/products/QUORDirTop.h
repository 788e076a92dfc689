// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDirConfiguration.h"
#include "QUORFileLeaf.h"

#include <QDateTime>
#include <QHash>
#include <QMultiHash>
#include <QStringList>

#include <functional>
#include <shared_mutex>

class QUORWildcard;

/// The product files of one directory in memory: site, product, configuration, time. One leaf stands for
/// each combination, the file that came first.
///
/// One reader-writer lock per tree: any thread may search while one thread at a time changes the tree.
/// Files are read before the lock is taken. Results are copies that stay valid when the tree changes or
/// goes. Patterns are those of `QUORWildcard`, time windows are in seconds. A file with an impossible data
/// time lies in no window and is infinitely far from every time.
class QUORDirTop : public QUORDirectory {
public:
    using Ptr = std::shared_ptr<QUORDirTop>;
    using CPtr = std::shared_ptr<const QUORDirTop>;
    /// Search results by their leaf key.
    using Leaves = QMap<QString, QUORFileLeaf::Ptr>;

    enum Result {
        ResultOk = 0,
        ResultWrongType = 1,  ///< a product, but not one for this tree
        ResultNoData = 2,     ///< nothing written yet
        ResultIncomplete = 3, ///< still being written
        ResultDuplicate = 4,  ///< the tree has that site, product, configuration and time
        ResultInvalid = 5,    ///< no product or not to be opened; nothing to remove
        ResultNotReadable = 6 ///< exists, but cannot be read at the moment
    };

    /// The files of a listing that are not in the tree.
    struct LeftOut {
        QStringList unfinished; ///< still being written, or not readable at the moment
        QStringList discarded;  ///< no product or not to be opened
        QStringList wrongType;  ///< products of another kind
        /// Duplicates, each with the name of the file that has its place.
        QHash<QString, QString> duplicates;
    };

    /// Absolute.
    virtual QString getPath() const { return _path; }
    /// Whether the file belongs into this tree.
    virtual bool filter(QUORFile::CPtr file) const = 0;
    /// Drops everything and scans the directory again; searches see the old tree until the new one stands.
    virtual void refresh();
    /// Drops everything and takes in the files of that listing.
    LeftOut scan(const QStringList& names);
    /// The directory exists.
    bool isValid() const override;
    void printSelf() const override;
    Children getChildren() const override;
    QStringList getChildrenNames() const override;
    QUORDirectory::Ptr findChildByName(const QString& name) const override;

    /// Adds the file of that name, relative to the directory or absolute. A duplicate takes the place of a
    /// leaf whose file has gone from the disk or is named in `leaving`. Of a duplicate, `other` names the
    /// file that was replaced or, when the result says so, that has its place: itself, when the tree has this
    /// very file. One that was written anew takes the place of its own leaf, which goes also when the file is
    /// another product or none by now; an unfinished file changes nothing.
    Result addFile(const QString& name, const QStringList& leaving = {}, QString* other = nullptr);
    Result removeFile(const QString& name);
    void addToAllLevels(const QUORFile::CPtr& file);

    /// The leaf of that file name, without directory.
    QUORFileLeaf::Ptr findLeaf(const QString& fileName) const;
    QUORFileLeaf::Ptr findLeaf(const QString& site, const QString& product, const QString& configuration,
                               const QString& time) const;
    Leaves findLeaves(const QString& site, const QString& product, const QString& configuration,
                      const QString& time) const;
    /// Data times from half the window before to half the window after, both ends included.
    Leaves findLeaves(const QString& site, const QString& product, const QString& configuration,
                      const QDateTime& t, int timeWindow) const;
    /// Data ages from 0 to less than the window; all leaves when the window is 0.
    Leaves findLatestLeaves(const QString& site, const QString& product, const QString& configuration,
                            int timeWindow) const;
    /// The closest data time; of equally close ones the first in key order.
    static QUORFileLeaf::Ptr findClosestMatch(const Leaves& leaves, const QDateTime& t);
    QStringList findAllMatchingProducts(const QUORFileLeaf::CPtr& leaf, int timeWindow,
                                        bool withConfiguration) const;
    qsizetype countFiles() const;
    QStringList listSites() const;
    QStringList listProductsForSite(const QString& site, bool withConfiguration) const;

protected:
    explicit QUORDirTop(const QString& path);

    QUORDirectory::Ptr makeChild(const QString& name, QUORFile::CPtr file) override;
    /// The best match of a site for a leaf: that very site, patterns for the rest, closest in time.
    QUORFileLeaf::Ptr findBestMatch(const QUORFileLeaf& leaf, const QUORWildcard& product,
                                    const QUORWildcard& configuration, int timeWindow) const;

private:
    using ByName = QMultiHash<QString, QUORFileLeaf::Ptr>;
    using Visitor = std::function<void(const QUORDirConfiguration&)>;

    QString resolve(const QString& name) const;
    QUORFileLeaf::Ptr leafAt(const QString& site, const QString& product, const QString& configuration,
                             const QString& time) const;
    QUORFileLeaf::Ptr leafNamed(const QString& fileName) const;
    Result addValid(const QUORFile::CPtr& file, const QStringList& leaving, QString* other);
    Result renew(const QUORFile::CPtr& file);
    void removeOutdated(const QUORFile& file);
    QUORFileLeaf::Ptr insertOrFind(const QUORFile::CPtr& file, const QUORFileLeaf::Ptr& giveWay);
    /// The leaf for the file, which holds another one when the file is a duplicate.
    QUORFileLeaf::Ptr insert(Children& sites, ByName& byName, const QUORFile::CPtr& file);
    void remove(const QUORFileLeaf::Ptr& leaf);
    void visit(const QUORWildcard& site, const QUORWildcard& product, const QUORWildcard& configuration,
               const Visitor& visitor) const;
    Leaves leavesBetween(const QUORWildcard& site, const QUORWildcard& product,
                         const QUORWildcard& configuration, qint64 first, qint64 last) const;
    Leaves leavesAround(const QUORWildcard& site, const QUORWildcard& product,
                        const QUORWildcard& configuration, const QDateTime& t, int timeWindow) const;

    QString _path;
    /// Guards the nodes below the top and the index by name.
    mutable std::shared_mutex _lock;
    ByName _byName;
};
