// SPDX-License-Identifier: MIT
#include "QUORDirSite.h"

#include "QUORDirProduct.h"

QUORDirSite::QUORDirSite(const QString& name, QUORDirectory* parent) : QUORDirectory(Site, name, parent) {}

QUORDirectory::Ptr QUORDirSite::makeChild(const QString& name, QUORFile::CPtr) {
    return std::make_shared<QUORDirProduct>(name, this);
}
