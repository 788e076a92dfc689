// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <array>
#include <optional>

/// The quantities that products hold.
enum class QUORRadarQuantity { Reflectivity, Velocity, Width, RainRate };

/// What is known of a quantity, and the names under which the public formats store it.
namespace QUORRadarQuantities {

inline constexpr std::array ALL{QUORRadarQuantity::Reflectivity, QUORRadarQuantity::Velocity,
                                QUORRadarQuantity::Width, QUORRadarQuantity::RainRate};

/// A field of a file: which quantity it is, and how good a choice among the fields of that quantity.
struct Match {
    QUORRadarQuantity quantity;
    int rank;    ///< the lowest is the best
    double sign; ///< -1 for velocities that are positive towards the radar
};
/// By the name of the field, else by its standard name; both without case. Nothing for what no product
/// holds.
std::optional<Match> find(const QString& name, const QString& standardName = {});

/// What the file's numbers are multiplied by to be in dBZ, m/s or mm/h; nothing for a foreign unit. No
/// unit counts as the right one.
std::optional<double> unitFactor(QUORRadarQuantity quantity, const QString& unit);

/// The configuration that the products form: "Z", "V", "W" or "R".
char letter(QUORRadarQuantity quantity);
std::optional<QUORRadarQuantity> fromLetter(QChar letter);
/// In words, with the unit.
QString describe(QUORRadarQuantity quantity);

} // namespace QUORRadarQuantities
