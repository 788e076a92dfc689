// SPDX-License-Identifier: MIT
#include "QUOR2DTop.h"

#include "QUORAssert.h"
#include "QUORWildcard.h"

QUOR2DTop::QUOR2DTop(const QString& path) : QUORDirTop(path) {
    QUORDirTop::refresh();
}

QUOR2DTop::QUOR2DTop(const QString& path, const QStringList& names, LeftOut& leftOut) : QUORDirTop(path) {
    leftOut = scan(names);
}

bool QUOR2DTop::filter(QUORFile::CPtr file) const {
    return !file->getProduct().isEmpty() && file->getDimensions() == 2;
}

QUORFileLeaf::Ptr QUOR2DTop::findBestMatching2DFile(const QUORFileLeaf::CPtr& file3d, const QString& product,
                                                    int timeWindow) const {
    if (!QUOR_VERIFY(file3d)) {
        return nullptr;
    }
    return findBestMatch(*file3d, QUORWildcard(product), QUORWildcard(QStringLiteral("*")), timeWindow);
}
