// SPDX-License-Identifier: MIT
#include "QUORVolumeGridder.h"

#include "QUORImportError.h"

QUORVolumeGridder::QUORVolumeGridder(const QUORRadarData& data, const QUORGridRequest& request,
                                     QUORBetweenBeams between)
    : _data(data), _between(between), _shape(request.choose(data)) {}

std::vector<float> QUORVolumeGridder::grid(QUORRadarQuantity quantity) const {
    return QUORPolarGridder(_data, quantity, _between).grid(_shape);
}

std::vector<float> QUORVolumeGridder::gridLevel(QUORRadarQuantity quantity, double height) const {
    return QUORPolarGridder(_data, quantity, _between).gridLevel(_shape, height);
}

std::vector<float> QUORVolumeGridder::projectLowest(QUORRadarQuantity quantity) const {
    return QUORPolarGridder(_data, quantity, _between).projectLowest(_shape);
}
