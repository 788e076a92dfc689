// SPDX-License-Identifier: MIT
#include "QUOR3DTop.h"

#include "QUORAssert.h"
#include "QUORWildcard.h"

namespace {

const QString VOLUME_PRODUCT = QStringLiteral("CAPPI");

} // namespace

QUOR3DTop::QUOR3DTop(const QString& path) : QUORDirTop(path) {
    QUORDirTop::refresh();
}

QUOR3DTop::QUOR3DTop(const QString& path, const QStringList& names, LeftOut& leftOut) : QUORDirTop(path) {
    leftOut = scan(names);
}

bool QUOR3DTop::filter(QUORFile::CPtr file) const {
    return file->getProduct() == VOLUME_PRODUCT && file->getDimensions() == 3;
}

QUORFileLeaf::Ptr QUOR3DTop::findBestMatching3DFile(const QUORFileLeaf::CPtr& leaf,
                                                    const QString& configuration, int timeWindow) const {
    if (!QUOR_VERIFY(leaf)) {
        return nullptr;
    }
    return findBestMatch(*leaf, QUORWildcard::literal(leaf->getProduct()), QUORWildcard(configuration),
                         timeWindow);
}

QUORFileLeaf::Ptr QUOR3DTop::find3DFileMatching2DFile(const QUORFileLeaf::CPtr& leaf2d,
                                                      const QString& configuration, int timeWindow) const {
    if (!QUOR_VERIFY(leaf2d)) {
        return nullptr;
    }
    return findBestMatch(*leaf2d, QUORWildcard::literal(VOLUME_PRODUCT), QUORWildcard(configuration),
                         timeWindow);
}
