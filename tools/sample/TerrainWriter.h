// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <functional>

/// A made-up landscape around a site, written as SRTM tiles: hills and ranges, a coast to the south-east, a
/// volcano in the north-west and a patch of voids in the mountains. Heights depend on the place alone, so
/// neighbouring tiles agree on their common edge. Pure: the same seed and site give the same land.
class TerrainWriter {
public:
    static constexpr int POSTS = 1201;
    static constexpr int VOID_HEIGHT = -32768;

    TerrainWriter(std::uint32_t seed, double siteLat, double siteLon);

    /// Metres above the sea, 0 at sea; VOID_HEIGHT where nothing was measured.
    int heightAt(double lat, double lon) const;

    /// Such as N41E001.hgt, of the whole degrees of the south-west corner.
    static QString fileName(int lat, int lon);
    QByteArray makeTile(int lat, int lon) const;

    /// Writes the tiles that reach within so many degrees of the site into the folder, which is made where
    /// it is missing; `written` is told each path. Each file appears whole or not at all. An empty text, or
    /// the reason.
    QString writeTiles(const QString& folder, int degrees,
                       const std::function<void(const QString& path)>& written) const;

private:
    double landShare(double lat, double lon) const;
    double volcano(double lat, double lon) const;

    std::uint32_t _seed;
    double _siteLat;
    double _siteLon;
};
