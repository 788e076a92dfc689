// SPDX-License-Identifier: MIT
#pragma once

#include "TerrainWriter.h"

#include <QString>

#include <cstdint>
#include <vector>

/// Invented towns around a site, written as a landmarks settings file. Pure: the same seed and site give
/// the same towns.
class LandmarkWriter {
public:
    struct Town {
        QString name;
        double lat;
        double lon;
        int altitude; ///< metres above the sea
        int priority; ///< 0, a city, to 5
    };

    /// On the dry land of the landscape that TerrainWriter makes of the same seed and site, where there is
    /// enough of it.
    static std::vector<Town> makeTowns(std::uint32_t seed, double siteLat, double siteLon);

    /// The text of a landmarks file.
    static QString toText(const std::vector<Town>& towns);
    /// Writes QUOR3DLandmarks.conf into the folder, which is made where it is missing. The file appears
    /// whole or not at all; an empty text, or the reason. `path` becomes the file's path.
    static QString write(const QString& folder, const std::vector<Town>& towns, QString& path);
};
