// SPDX-License-Identifier: MIT
#include "QUORProductReader.h"

#include "QUORGeoProjection.h"
#include "QUORGridPlacement.h"
#include "QUORGridReader.h"

#include <vtkImageData.h>

#include <algorithm>
#include <cmath>
#include <utility>

QUORProductReader::QUORProductReader(QUORFile::CPtr volume, QUORFile::CPtr layer)
    : _volume{std::move(volume), nullptr}, _layer{std::move(layer), nullptr} {
    _volume.grid = QUORGridReader(*_volume.file).read(_volume.file->getZPoints(), 1.0);
    if (_layer.file) {
        _layer.grid = QUORGridReader(*_layer.file).read(1, 1.0);
    }
}

QUORProductReader::~QUORProductReader() = default;

QUORProductReader::Value QUORProductReader::valueAt(const Product& product, int x, int y, int z) {
    if (!product.grid) {
        return {};
    }
    const int* dimensions = product.grid->GetDimensions();
    if (x < 0 || y < 0 || z < 0 || x >= dimensions[0] || y >= dimensions[1] || z >= dimensions[2]) {
        return {};
    }
    const auto stored = unsigned(product.grid->GetScalarComponentAsDouble(x, y, z, 0));
    const QUORDataType type = product.file->getDataType();
    if (stored < type.getMinAbsValue() || stored > type.getMaxAbsValue()) {
        return {true, std::nullopt};
    }
    return {true, type.absoluteToDisplayValue(stored)};
}

QUORProductReader::Value QUORProductReader::columnValue(const Product& product, const QUORPoint3D& grid,
                                                        int level) {
    // Far away, or nowhere: a place whose index would not be a number of this machine.
    if (!(std::abs(grid.x) < 1e6 && std::abs(grid.y) < 1e6)) {
        return {};
    }
    return valueAt(product, int(std::lround(grid.x)), int(std::lround(grid.y)), level);
}

QUORProductReader::Point QUORProductReader::read(const QUORPoint3D& place) const {
    Point point;
    point.height = place.z;
    if (const auto projection = _volume.file->getGeoProjection()) {
        point.coordinate = projection->projectToLatLon({place.x, place.y, 0.0});
    }
    const QUORPoint3D grid = QUORGridPlacement::ofVolume(*_volume.file, 1.0).toGrid(place);
    if (std::abs(grid.z) < 1e6) {
        point.volume = columnValue(_volume, grid, int(std::lround(grid.z)));
    }
    if (_layer.file) {
        point.layer = columnValue(_layer, QUORGridPlacement::ofLayer(*_layer.file, 1.0).toGrid(place), 0);
    }
    return point;
}

QList<QUORProductReader::Level> QUORProductReader::readProfile(double x, double y) const {
    const QUORGridPlacement placement = QUORGridPlacement::ofVolume(*_volume.file, 1.0);
    const QUORPoint3D grid = placement.toGrid({x, y, placement.origin.z});
    QList<Level> levels;
    if (!_volume.grid) {
        return levels;
    }
    for (int z = 0; z < _volume.grid->GetDimensions()[2]; ++z) {
        levels.append({placement.toScene({0.0, 0.0, double(z)}).z, columnValue(_volume, grid, z)});
    }
    return levels;
}

QUORProductReader::Section QUORProductReader::readSection(const QUORPoint3D& from, const QUORPoint3D& to,
                                                          int columns) const {
    Section section;
    section.length = std::hypot(to.x - from.x, to.y - from.y);
    const int count = std::max(columns, 2);
    for (int i = 0; i < count; ++i) {
        const double share = double(i) / (count - 1);
        const QList<Level> profile =
            readProfile(from.x + share * (to.x - from.x), from.y + share * (to.y - from.y));
        QList<Value> column;
        for (const Level& level : profile) {
            if (i == 0) {
                section.heights.append(level.height);
            }
            column.append(level.volume);
        }
        section.columns.append(column);
    }
    return section;
}
