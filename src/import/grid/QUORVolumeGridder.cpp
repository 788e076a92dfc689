// SPDX-License-Identifier: MIT
#include "QUORVolumeGridder.h"

#include "QUORPolarGridder.h"

QUORVolumeGridder::QUORVolumeGridder(const QUORRadarData& data, const QUORGridRequest& request,
                                     QUORBetweenBeams between)
    : _data(data), _between(between) {
    if (data.grid) {
        _shape = _resampler.emplace(data, request).getShape();
    } else {
        _shape = request.choose(data);
    }
}

std::vector<float> QUORVolumeGridder::grid(QUORRadarQuantity quantity) const {
    return _resampler ? _resampler->grid(quantity, _between)
                      : QUORPolarGridder(_data, quantity, _between).grid(_shape);
}

std::vector<float> QUORVolumeGridder::gridLevel(QUORRadarQuantity quantity, double height) const {
    return _resampler ? _resampler->gridLevel(quantity, height, _between)
                      : QUORPolarGridder(_data, quantity, _between).gridLevel(_shape, height);
}

std::vector<float> QUORVolumeGridder::projectLowest(QUORRadarQuantity quantity) const {
    return QUORPolarGridder(_data, quantity, _between).projectLowest(_shape);
}
