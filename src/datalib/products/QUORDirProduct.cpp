// SPDX-License-Identifier: MIT
#include "QUORDirProduct.h"

#include "QUORDirConfiguration.h"

QUORDirProduct::QUORDirProduct(const QString& name, QUORDirectory* parent)
    : QUORDirectory(Product, name, parent) {}

QUORDirectory::Ptr QUORDirProduct::makeChild(const QString& name, QUORFile::CPtr) {
    return std::make_shared<QUORDirConfiguration>(name, this);
}
