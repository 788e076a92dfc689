// SPDX-License-Identifier: MIT
#include "RadarFiles.h"

#include <cmath>

namespace {

constexpr std::size_t RAYS = 12;
constexpr std::size_t GATES = 5;

/// Gate g of ray r holds 10 r + g + 2, but for the first two gates of the first ray: 0 and 255.
std::vector<unsigned char> rampBytes() {
    std::vector<unsigned char> values;
    for (std::size_t ray = 0; ray < RAYS; ++ray) {
        for (std::size_t gate = 0; gate < GATES; ++gate) {
            values.push_back(static_cast<unsigned char>(10 * ray + gate + 2));
        }
    }
    values[0] = 0;
    values[1] = 255;
    return values;
}

void addOdimData(NetcdfMaker& file, const std::string& group, const char* quantity) {
    file.text(group + "/what", "quantity", quantity).number(group + "/what", "gain", 0.5);
    file.number(group + "/what", "offset", -32.0).number(group + "/what", "nodata", 255.0);
    file.number(group + "/what", "undetect", 0.0);
    file.bytes(group, "data", {{"rays", RAYS}, {"gates", GATES}}, rampBytes());
}

void addOdimSweep(NetcdfMaker& file, const std::string& group, double elevation) {
    file.number(group + "/where", "elangle", elevation).number(group + "/where", "nrays", double(RAYS));
    file.number(group + "/where", "nbins", double(GATES)).number(group + "/where", "rscale", 1000.0);
    file.number(group + "/where", "rstart", 2.0);
    file.text(group + "/what", "startdate", "20240601").text(group + "/what", "starttime", "123010");
}

void addOdimRoot(NetcdfMaker& file, const char* object, const char* time) {
    file.text("", "Conventions", "ODIM_H5/V2_3")
        .text("what", "object", object)
        .text("what", "date", "20240601");
    file.text("what", "time", time).text("what", "source", "WMO:00000,PLC:R\u00f8st \u00c5sen,CMT:x");
    file.number("where", "lat", 50.25).number("where", "lon", 10.5).number("where", "height", 412.0);
    file.number("how", "wavelength", 5.33).number("how", "beamwidth", 1.1);
}

std::vector<double> sequence(std::size_t count, double first, double step) {
    std::vector<double> values;
    for (std::size_t i = 0; i < count; ++i) {
        values.push_back(first + step * double(i));
    }
    return values;
}

void addCfRadialRoot(NetcdfMaker& file) {
    file.text("", "site_name", "Ka-band 1").text("", "time_coverage_start", "2024-06-01T12:30:05Z");
    file.doubles("", "latitude", {}, {50.25}).doubles("", "longitude", {}, {10.5});
    file.doubles("", "altitude", {}, {412.0}).doubles("", "altitude_agl", {}, {12.0});
    file.doubles("", "frequency", {{"frequency", 1}}, {5.6e9});
}

/// Packed: 100 r + g, fifths of a unit from -10; the first gate is missing, the second below the threshold.
std::vector<short> rampShorts(std::size_t rays) {
    std::vector<short> values;
    for (std::size_t ray = 0; ray < rays; ++ray) {
        for (std::size_t gate = 0; gate < GATES; ++gate) {
            values.push_back(short(100 * ray + gate));
        }
    }
    values[0] = -9999;
    values[1] = -9998;
    return values;
}

void addCfRadial1(NetcdfMaker& file) {
    constexpr std::size_t all = 2 * RAYS + 1;
    addCfRadialRoot(file);
    const NetcdfMaker::Dimension time{"time", all};
    const NetcdfMaker::Dimension sweep{"sweep", 2};
    std::vector<double> azimuths = sequence(all, 10.0, 30.0);
    for (double& azimuth : azimuths) {
        azimuth = azimuth >= 360.0 ? azimuth - 360.0 * int(azimuth / 360.0) : azimuth;
    }
    std::vector<double> elevations(all, 0.8);
    std::fill(elevations.begin() + RAYS + 1, elevations.end(), 2.1);
    elevations[RAYS] = 1.5;
    file.doubles("", "azimuth", {time}, azimuths).doubles("", "elevation", {time}, elevations);
    file.doubles("", "nyquist_velocity", {time}, std::vector<double>(all, 8.0));
    file.doubles("", "prt", {time}, std::vector<double>(all, 0.001));
    file.doubles("", "range", {{"range", GATES}}, sequence(GATES, 2500.0, 1000.0)).of("units", "meters");
    file.doubles("", "sweep_start_ray_index", {sweep}, {0.0, RAYS + 1.0});
    file.doubles("", "sweep_end_ray_index", {sweep}, {RAYS - 1.0, 2.0 * RAYS});
    file.doubles("", "fixed_angle", {sweep}, {0.75, 2.0});
    file.shorts("", "measured_z", {time, {"range", GATES}}, rampShorts(all)).of("scale_factor", 0.2);
    file.of("add_offset", -10.0).of("_FillValue", -9999.0).of("_Undetect", -9998.0).of("units", "dBZ");
    file.of("standard_name", "equivalent_reflectivity_factor");
    file.shorts("", "inbound", {time, {"range", GATES}}, rampShorts(all)).of("scale_factor", 0.01);
    file.of("standard_name", "radial_velocity_of_scatterers_toward_instrument").of("units", "m/s");
    file.shorts("", "ncp", {time, {"range", GATES}}, rampShorts(all));
}

Level2Writer::Moment moment(const char* name, int gates, unsigned int seed) {
    return {name, gates, 2125, 250, 8, 2.0F, name[0] == 'R' ? 66.0F : 129.0F, [seed](int gate) {
                return gate < 2 ? unsigned(gate) : 70U + (seed + unsigned(gate)) % 100U;
            }};
}

} // namespace

void RadarFiles::writeOdim(const QString& path, const Spoil& spoil, const char* object) {
    NetcdfMaker file(path);
    addOdimRoot(file, object, "123005");
    addOdimSweep(file, "dataset1", 3.0);
    addOdimData(file, "dataset1/data1", "DBZH");
    addOdimSweep(file, "dataset2", 1.0);
    file.number("dataset2/how", "NI", 24.5).number("dataset2/how", "highprf", 1000.0);
    file.numbers("dataset2/how", "startazA", sequence(RAYS, 350.0, -30.0));
    file.numbers("dataset2/how", "stopazA", sequence(RAYS, 320.0, -30.0));
    addOdimData(file, "dataset2/data1", "TH");
    addOdimData(file, "dataset2/data2", "ZDR");
    addOdimData(file, "dataset2/data3", "DBZH");
    addOdimData(file, "dataset2/data10", "VRADH");
    if (spoil) {
        spoil(file);
    }
}

void RadarFiles::writeOdimScan(const QString& path, double elevation, const char* quantity, int seconds) {
    NetcdfMaker file(path);
    addOdimRoot(file, "SCAN",
                QStringLiteral("12%1%2")
                    .arg(30 + seconds / 60)
                    .arg(seconds % 60, 2, 10, QLatin1Char('0'))
                    .toLatin1());
    addOdimSweep(file, "dataset1", elevation);
    addOdimData(file, "dataset1/data1", quantity);
}

void RadarFiles::writeCfRadial1(const QString& path, const Spoil& spoil) {
    NetcdfMaker file(path);
    addCfRadial1(file);
    if (spoil) {
        spoil(file);
    }
}

void RadarFiles::writeClassicCfRadial1(const QString& path) {
    NetcdfMaker file(path, true);
    addCfRadial1(file);
}

void RadarFiles::writeCfRadial2(const QString& path, const Spoil& spoil) {
    NetcdfMaker file(path);
    addCfRadialRoot(file);
    file.characters("", "sweep_group_name", {{"sweep", 2}, {"letters", 7}}, "sweep_Bsweep_A");
    double elevation = 0.8;
    for (const std::string group : {"sweep_A", "sweep_B"}) {
        const NetcdfMaker::Dimension time{"time", RAYS};
        file.doubles(group, "azimuth", {time}, sequence(RAYS, 15.0, 30.0));
        file.doubles(group, "elevation", {time}, std::vector<double>(RAYS, elevation));
        file.doubles(group, "range", {{"range", GATES}}, sequence(GATES, 2.5, 1.0)).of("units", "km");
        file.doubles(group, "sweep_fixed_angle", {}, {elevation});
        file.shorts(group, "DBZ", {time, {"range", GATES}}, rampShorts(RAYS)).of("scale_factor", 0.2);
        file.of("add_offset", -10.0).of("_FillValue", -9999.0).of("_Undetect", -9998.0);
        elevation += 1.3;
    }
    if (spoil) {
        spoil(file);
    }
}

void RadarFiles::writeGrid(const QString& path, const Spoil& spoil) {
    NetcdfMaker file(path);
    file.text("", "site_name", "Gunn_Pt");
    file.doubles("", "time", {{"time", 1}}, {65.0}).of("units", "seconds since 2024-06-01T12:29:00Z");
    file.doubles("", "origin_latitude", {{"time", 1}}, {-12.25})
        .doubles("", "origin_longitude", {{"time", 1}}, {131.0});
    file.doubles("", "origin_altitude", {{"time", 1}}, {50.0});
    file.doubles("", "x", {{"x", 4}}, {-1.0, 0.0, 1.0, 2.0}).of("units", "km").of("axis", "X");
    file.doubles("", "y", {{"y", 3}}, {2.0, 0.0, -2.0}).of("units", "km").of("axis", "Y");
    file.doubles("", "z", {{"z", 2}}, {500.0, 1000.0}).of("units", "m").of("axis", "Z");
    std::vector<double> values = sequence(24, 1.0, 1.0);
    values[5] = -9999.0;
    file.doubles("", "DT", {{"time", 1}, {"z", 2}, {"y", 3}, {"x", 4}}, values).of("_FillValue", -9999.0);
    file.of("units", "dBZ").of("standard_name", "corrected_equivalent_reflectivity_factor");
    file.doubles("", "ROI", {{"time", 1}, {"z", 2}, {"y", 3}, {"x", 4}}, values);
    if (spoil) {
        spoil(file);
    }
}

Level2Writer RadarFiles::makeLevel2() {
    Level2Writer writer("KTST", QDateTime(QDate(2024, 6, 1), QTime(12, 30, 5), Qt::UTC), 33.5F, -101.75F,
                        1000, 24);
    const auto sweep = [&writer](int number, int rays, float elevation, bool last,
                                 const Level2Writer::Ray& model) {
        for (int i = 0; i < rays; ++i) {
            Level2Writer::Ray ray = model;
            ray.azimuth = float(std::fmod(287.25 + i * 360.0 / rays, 360.0));
            ray.elevation = elevation + (i < 5 ? 0.2F : 0.0F);
            ray.elevationNumber = number;
            ray.status = i == 0 ? (number == 1 ? 3 : 0) : i + 1 < rays ? 1 : (last ? 4 : 2);
            writer.add(ray);
        }
    };
    Level2Writer::Ray search;
    search.nyquist = 8.47;
    search.unambiguousRange = 466000.0;
    search.moments = {moment("REF", 400, 1), moment("ZDR", 300, 9)};
    sweep(1, 720, 0.5F, false, search);
    Level2Writer::Ray doppler;
    doppler.nyquist = 22.56;
    doppler.unambiguousRange = 175000.0;
    doppler.moments = {moment("REF", 300, 2), moment("VEL", 300, 3), moment("SW ", 300, 4)};
    sweep(2, 360, 0.53F, false, doppler);
    sweep(3, 360, 1.5F, true, doppler);
    return writer;
}
