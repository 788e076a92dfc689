// SPDX-License-Identifier: MIT
#pragma once

#include "QUORNetcdfFile.h"
#include "QUORRadarData.h"

/// Which map the x and y of a grid lie on: the grid mapping of the CF conventions (appendix F), degrees, or
/// azimuthal equidistant around the origin that the field's Python toolkits store.
class QUORGridMapping {
public:
    /// Of a field with that coordinate along x.
    QUORGridMapping(const QUORNetcdfGroup& root, const QUORNetcdfVariable& field, const QString& xName);

    /// Sets the site, which is the origin of the products, the earth and the plane of the grid. Throws a
    /// QUORImportError for a mapping that is not known and a grid without a place.
    void place(QUORRadarData& data) const;

private:
    QString describe() const;
    void placeEquidistant(QUORRadarData& data) const;
    void placeInMiddle(QUORRadarData& data) const;
    QString earth() const;
    double attribute(const char* name, double otherwise) const;

    QUORNetcdfGroup _root;
    std::optional<QUORNetcdfVariable> _mapping;
    QString _name;
    double _radius;
    double _inverseFlattening;
};
