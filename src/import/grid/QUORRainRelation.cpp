// SPDX-License-Identifier: MIT
#include "QUORRainRelation.h"

#include "QUORRadarData.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr QUORRainRelation RELATIONS[] = {
    {"marshall-palmer", 200.0, 1.6, "Marshall and Palmer 1948: widespread rain"},
    {"convective", 300.0, 1.4, "WSR-88D, convective"},
    {"tropical", 250.0, 1.2, "Rosenfeld, tropical"},
    {"east-cool", 130.0, 2.0, "WSR-88D, east, cool season stratiform"},
    {"west-cool", 75.0, 2.0, "WSR-88D, west, cool season stratiform"},
};

} // namespace

float QUORRainRelation::rate(float reflectivity) const {
    if (!std::isfinite(reflectivity)) {
        return reflectivity;
    }
    const double factor = std::pow(10.0, std::min(double(reflectivity), HAIL_CAP) / 10.0);
    const double rain = std::pow(factor / a, 1.0 / b);
    return rain < LEAST ? QUORRadarValue::NO_ECHO : float(rain);
}

std::span<const QUORRainRelation> QUORRainRelation::getAll() {
    return RELATIONS;
}

std::optional<QUORRainRelation> QUORRainRelation::find(const QString& name) {
    for (const QUORRainRelation& relation : RELATIONS) {
        if (name.compare(QLatin1String(relation.name), Qt::CaseInsensitive) == 0) {
            return relation;
        }
    }
    return {};
}
