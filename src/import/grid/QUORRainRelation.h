// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>
#include <span>

/// A relation Z = a R^b between the reflectivity factor (mm^6/m^3) and the rain rate (mm/h).
struct QUORRainRelation {
    const char* name;
    double a;
    double b;
    const char* origin;

    /// What is reflected more strongly is hail, which would count as absurd rain.
    static constexpr double HAIL_CAP = 53.0;

    /// Less is no rain, mm/h.
    static constexpr double LEAST = 0.1;

    /// mm/h from dBZ; what is above the cap counts as the cap. No data and no echo stay what they are.
    float rate(float reflectivity) const;

    static std::span<const QUORRainRelation> getAll();
    static std::optional<QUORRainRelation> find(const QString& name);
    static QUORRainRelation standard() { return getAll().front(); }
};
