// SPDX-License-Identifier: MIT
#pragma once

#include "QUORFile.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <atomic>
#include <memory>

/// One node of a product directory tree: top, site, product, configuration or file. A parent owns its
/// children and clears their parent pointer when it lets go of them, so a leaf that somebody holds
/// outlives its tree. A node below the top never changes its name or level. The operations on children
/// belong to the tree (`QUORDirTop`), which calls them under its lock; others use the searches of the top.
class QUORDirectory {
public:
    using Ptr = std::shared_ptr<QUORDirectory>;
    using CPtr = std::shared_ptr<const QUORDirectory>;
    using Children = QMap<QString, Ptr>;

    enum Types { Top = 0, Site = 1, Product = 2, Configuration = 3, File = 4 };

    virtual ~QUORDirectory();
    QUORDirectory(const QUORDirectory&) = delete;
    QUORDirectory& operator=(const QUORDirectory&) = delete;

    /// The child of that name, made when there is none; a made leaf holds the file. Null below a leaf.
    virtual Ptr addChild(const QString& name, QUORFile::CPtr file);
    /// Removes this node from its parent as well when no child is left, up to the top.
    virtual void removeChild(const QString& name);
    virtual Children getChildren() const { return _children; }
    /// Ascending.
    virtual QStringList getChildrenNames() const { return _children.keys(); }
    /// Null for the top and for nodes that were removed.
    virtual QUORDirectory* getParent() const { return _parent; }
    virtual QString getName() const { return _name; }
    virtual Ptr findChildByName(const QString& name) const { return _children.value(name); }
    virtual bool isValid() const = 0;
    /// To standard output, for debugging.
    virtual void printSelf() const;

    Types getType() const { return _type; }

protected:
    QUORDirectory(Types type, QString name, QUORDirectory* parent);

    /// A node one level below this one, or null.
    virtual Ptr makeChild(const QString& name, QUORFile::CPtr file) = 0;
    /// The name of the ancestor so many levels up; empty where there is none.
    QString getAncestorName(int levels) const;
    static void release(Children& children);

    Children _children;

private:
    QString _name;
    std::atomic<QUORDirectory*> _parent;
    Types _type;
};
