// SPDX-License-Identifier: MIT
#pragma once

#include "Level2Writer.h"
#include "NetcdfMaker.h"

#include <functional>

/// Small files of every format with the same storm: 12 rays, 5 gates of 1 km.
namespace RadarFiles {

/// Called before the file is closed, to spoil it.
using Spoil = std::function<void(NetcdfMaker&)>;

/// ODIM_H5: sweeps of 3.0 and 1.0 degrees (in that order), TH, DBZH, VRADH and ZDR in the lower one.
void writeOdim(const QString& path, const Spoil& spoil = {}, const char* object = "PVOL");
/// One sweep of an ODIM_H5 scan, with one quantity.
void writeOdimScan(const QString& path, double elevation, const char* quantity, int seconds);
/// CfRadial 1: two sweeps with a ray between them that belongs to none.
void writeCfRadial1(const QString& path, const Spoil& spoil = {});
/// The same as a classic netCDF file.
void writeClassicCfRadial1(const QString& path);
/// CfRadial 2: a group for each of two sweeps.
void writeCfRadial2(const QString& path, const Spoil& spoil = {});
/// 4 x 3 x 2 points, kilometres, north to south; the origin at x = 1, y = -1.
void writeGrid(const QString& path, const Spoil& spoil = {});
/// NEXRAD Level II: a split cut of 720 and 360 rays, then one sweep with all moments.
Level2Writer makeLevel2();

} // namespace RadarFiles
