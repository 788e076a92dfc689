// SPDX-License-Identifier: MIT
#include "QUORLayerParameters2d.h"

#include "QUORFile.h"

namespace {

// The configuration of a 2D product does not count.
bool isOther(const QUORFile& a, const QUORFile& b) {
    return a.getSite() != b.getSite() || a.getTime() != b.getTime() || a.getProduct() != b.getProduct();
}

} // namespace

bool QUORLayerParameters2d::hasChanged(const QUORLayerParameters& other) const {
    const auto* o = dynamic_cast<const QUORLayerParameters2d*>(&other);
    if (o == nullptr) {
        return false;
    }
    if (!_dataFile || !o->_dataFile) {
        return bool(_dataFile) != bool(o->_dataFile);
    }
    return isOther(*_dataFile, *o->_dataFile);
}

void QUORLayerParameters2d::printDebug() const {
    printClass("QUORLayerParameters2d");
    printField("dataFile", _dataFile.get());
}
