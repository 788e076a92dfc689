// SPDX-License-Identifier: MIT
#pragma once

#include "QUORCoordinate.h"
#include "QUORFile.h"
#include "QUORPoint3D.h"

#include <QList>

#include <vtkSmartPointer.h>

#include <memory>
#include <optional>

class vtkImageData;

/// The measured values of a scene: what the files hold, neither reduced nor smoothed. Places are scene metres
/// at a vertical scale of 1, so that z is the height above sea level. Made once with the files' grids in
/// memory, read from then on by any thread.
class QUORProductReader {
public:
    using CPtr = std::shared_ptr<const QUORProductReader>;

    /// A stored value: nothing outside the grid, and `value` only where something was measured.
    struct Value {
        bool isInside = false;
        std::optional<double> value; ///< display value of the product's data type
    };
    struct Point {
        QUORCoordinate coordinate;
        double height = 0.0; ///< metres above sea level
        Value volume;
        Value layer; ///< of the 2D product under it
    };
    struct Level {
        double height = 0.0; ///< metres above sea level
        Value volume;
    };
    /// Values over a line, each column from the ground up.
    struct Section {
        double length = 0.0; ///< metres
        QList<double> heights;
        QList<QList<Value>> columns;
    };

    /// The 2D file may be null. A file that cannot be read gives no values.
    QUORProductReader(QUORFile::CPtr volume, QUORFile::CPtr layer);
    ~QUORProductReader();

    /// The nearest grid points' values.
    Point read(const QUORPoint3D& place) const;
    /// Every level of the volume over a place, from the ground up.
    QList<Level> readProfile(double x, double y) const;
    /// At least two columns, at even distances.
    Section readSection(const QUORPoint3D& from, const QUORPoint3D& to, int columns) const;

    const QUORFile::CPtr& getVolume() const { return _volume.file; }
    const QUORFile::CPtr& getLayer() const { return _layer.file; }

private:
    struct Product {
        QUORFile::CPtr file;
        vtkSmartPointer<vtkImageData> grid;
    };

    static Value valueAt(const Product& product, int x, int y, int z);
    static Value columnValue(const Product& product, const QUORPoint3D& grid, int level);

    Product _volume;
    Product _layer;
};
