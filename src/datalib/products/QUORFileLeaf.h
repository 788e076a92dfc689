// SPDX-License-Identifier: MIT
#pragma once

#include "QUORDirectory.h"

/// A product file's place in a directory tree. Site, product, configuration and time are copied when it
/// is made, so a leaf answers from any thread, and also after it was removed from its tree.
class QUORFileLeaf : public QUORDirectory {
public:
    using Ptr = std::shared_ptr<QUORFileLeaf>;
    using CPtr = std::shared_ptr<const QUORFileLeaf>;

    QUORFileLeaf(const QString& time, QUORDirectory* parent, QUORFile::CPtr file);

    virtual QUORFile::CPtr getFile() const { return _file; }
    virtual QString getSite() const { return _site; }
    virtual QString getProduct() const { return _product; }
    virtual QString getConfiguration() const { return _configuration; }
    /// The time key of the file name.
    virtual QString getTime() const { return _time; }
    /// Absolute.
    virtual QString getPath() const;
    /// Site, product, configuration and time joined with "/": leaves are listed in its order.
    QString getKey() const;

    bool isValid() const override;
    void printSelf() const override;

protected:
    QUORDirectory::Ptr makeChild(const QString& name, QUORFile::CPtr file) override;

private:
    QUORFile::CPtr _file;
    QString _site;
    QString _product;
    QString _configuration;
    QString _time;
};
