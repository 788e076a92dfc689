// SPDX-License-Identifier: MIT
#pragma once

#include "QUORLayerParameters.h"

class QUORFile;

/// The 2D product.
class QUORLayerParameters2d : public QUORLayerParameters {
public:
    using Ptr = std::shared_ptr<QUORLayerParameters2d>;
    using CPtr = std::shared_ptr<const QUORLayerParameters2d>;

    bool hasChanged(const QUORLayerParameters& other) const override;
    void printDebug() const override;

    std::shared_ptr<const QUORFile> getDataFile() const { return _dataFile; }
    void setDataFile(std::shared_ptr<const QUORFile> value) { _dataFile = std::move(value); }

private:
    std::shared_ptr<const QUORFile> _dataFile;
};
