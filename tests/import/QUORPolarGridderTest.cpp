// SPDX-License-Identifier: MIT
#include "QUORPolarGridder.h"

#include "QUORFlatProducts.h"
#include "QUORReaderProcess.h"
#include "ReferenceGridder.h"
#include "TestFiles.h"
#include "TestVolume.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

using Quantity = QUORRadarQuantity;

/// Numbers without any pattern, the same in each run.
float scatter(double a, double b, double c) {
    const double x = std::sin(a * 12.9898 + b * 0.0078233 + c * 37.719) * 43758.5453;
    return float(x - std::floor(x));
}

/// Everything that can be: no data, no echo, values of one sign and the other.
float wild(double seed, double azimuth, double range, double lowest, double highest) {
    const float dice = scatter(azimuth, range, seed);
    if (dice < 0.15F) {
        return QUORRadarValue::NO_DATA;
    }
    return dice < 0.4F
               ? QUORRadarValue::NO_ECHO
               : float(std::round(2.0 * (lowest + (highest - lowest) * scatter(range, azimuth, seed)))) /
                     2.0F;
}

/// Sweeps with a gap in azimuth, gates of several lengths, jittering rays and a hole between 6 and 25
/// degrees.
TestVolume wildVolume() {
    TestVolume volume;
    double seed = 1.0;
    for (const double elevation : {25.0, 0.7, 6.0, 1.9, 3.8}) {
        QUORRadarSweep& sweep = volume.addSweep(elevation, 12.0 + elevation, 0.37 * seed);
        for (std::size_t ray = 0; ray < sweep.azimuths.size(); ++ray) {
            sweep.azimuths[ray] += 0.2F * scatter(double(ray), seed, 3.0);
            sweep.elevations[ray] += 0.1F * scatter(seed, double(ray), 5.0);
        }
        if (elevation == 1.9) {
            sweep.azimuths.erase(sweep.azimuths.begin() + 40, sweep.azimuths.begin() + 65);
            sweep.elevations.erase(sweep.elevations.begin() + 40, sweep.elevations.begin() + 65);
        }
        const TestVolume::Gates gates{int(250 - 30 * seed), 100.0 * seed, 150.0 + 100.0 * seed};
        for (const Quantity quantity : QUORRadarQuantities::ALL) {
            const bool isSigned = quantity == Quantity::Velocity;
            TestVolume::addMoment(
                sweep, quantity,
                [&](double azimuth, double range) {
                    return wild(seed + 10.0 * int(quantity), azimuth, range, isSigned ? -15.0 : 0.0,
                                isSigned ? 15.0 : 60.0);
                },
                gates);
        }
        seed += 1.0;
    }
    return volume;
}

QUORGridShape shapeOf(int points, int levels, double step, double vertical) {
    QUORGridShape shape;
    shape.points = {points, points - 6, levels};
    shape.steps = {step, step * 1.1, vertical};
    shape.centre();
    return shape;
}

bool isSame(float a, float b) {
    return (std::isnan(a) && std::isnan(b)) || a == b || std::abs(a - b) < 2e-4F;
}

/// One value at a place, from a volume gridded to a few cells around it.
float valueAt(const QUORRadarData& data, Quantity quantity, double x, double y, double z) {
    QUORGridShape shape;
    shape.points = {2, 2, 2};
    shape.steps = {1.0, 1.0, 1.0};
    shape.radar = {-x, -y};
    return QUORPolarGridder(data, quantity).gridLevel(shape, z).front();
}

struct Gate {
    float value;
    double x;
    double y;
    double height; ///< over the antenna
};

/// The strongest gates of a sweep, placed by the textbook's 4/3 earth (Doviak and Zrnic, 2.28).
std::vector<Gate> strongest(const QUORRadarSweep& sweep, std::size_t count) {
    std::vector<Gate> gates;
    const QUORRadarMoment& moment = *sweep.find(Quantity::Reflectivity);
    for (std::size_t i = 0; i < moment.codes.size(); ++i) {
        const float value = moment.value(moment.codes[i]);
        if (!std::isfinite(value)) {
            continue;
        }
        const std::size_t ray = i / std::size_t(moment.gates);
        const double range = moment.firstGate + moment.gateSpacing * double(i % std::size_t(moment.gates));
        const double elevation = sweep.elevations[ray] * M_PI / 180.0;
        const double azimuth = sweep.azimuths[ray] * M_PI / 180.0;
        const double earth = 6371000.0 * 4.0 / 3.0;
        const double height =
            std::sqrt(range * range + earth * earth + 2.0 * range * earth * std::sin(elevation)) - earth;
        const double ground = earth * std::asin(range * std::cos(elevation) / (earth + height));
        gates.push_back({value, ground * std::sin(azimuth), ground * std::cos(azimuth), height});
    }
    std::sort(gates.begin(), gates.end(), [](const Gate& a, const Gate& b) { return a.value > b.value; });
    gates.resize(std::min(gates.size(), count));
    return gates;
}

} // namespace

TEST(QUORPolarGridder, AgreesWithASlowSecondOpinionInEveryCell) {
    const TestVolume volume = wildVolume();
    const QUORGridShape shape = shapeOf(28, 12, 5113.0, 917.0);
    for (const Quantity quantity : QUORRadarQuantities::ALL) {
        for (const bool inPower : {false, true}) {
            const auto between = inPower ? QUORBetweenBeams::Power : QUORBetweenBeams::Decibel;
            const std::vector<float> grid = QUORPolarGridder(volume, quantity, between).grid(shape);
            const ReferenceGridder reference(volume, quantity, inPower);
            std::size_t cell = 0;
            int differing = 0;
            int withData = 0;
            for (int k = 0; k < shape.points[2]; ++k) {
                for (int j = 0; j < shape.points[1]; ++j) {
                    for (int i = 0; i < shape.points[0]; ++i, ++cell) {
                        const float expected = reference.at(shape.x(i), shape.y(j), shape.z(k));
                        differing += isSame(grid[cell], expected) ? 0 : 1;
                        withData += std::isfinite(expected) ? 1 : 0;
                    }
                }
            }
            EXPECT_EQ(differing, 0) << QUORRadarQuantities::letter(quantity) << (inPower ? " in power" : "");
            EXPECT_GT(withData, 300);
        }
    }
}

TEST(QUORPolarGridder, PutsAnEchoWhereItsBeamIs) {
    // 4/3 earth: at 100 km, a beam of 1 degree is 1745 + 588 = 2333 m over its antenna, whatever the
    // altitude.
    TestVolume volume;
    volume.site.altitude = 2500.0;
    TestVolume::addMoment(volume.addSweep(1.0), Quantity::Reflectivity, [](double azimuth, double range) {
        return std::abs(azimuth - 90.5) < 0.1 && std::abs(range - 99750.0) < 1.0 ? 50.0F
                                                                                 : QUORRadarValue::NO_ECHO;
    });
    const double y = -99750.0 * std::sin(0.5 * M_PI / 180.0);
    EXPECT_EQ(valueAt(volume, Quantity::Reflectivity, 99680.0, y, 2320.0), 50.0F);
    EXPECT_EQ(valueAt(volume, Quantity::Reflectivity, 99000.0, y, 2310.0), QUORRadarValue::NO_ECHO);
    EXPECT_EQ(valueAt(volume, Quantity::Reflectivity, 99680.0, y + 2000.0, 2320.0), QUORRadarValue::NO_ECHO);
    // The beam is a degree wide: 870 m up and down, and no farther.
    EXPECT_EQ(valueAt(volume, Quantity::Reflectivity, 99680.0, y, 2320.0 + 840.0), 50.0F);
    EXPECT_TRUE(std::isnan(valueAt(volume, Quantity::Reflectivity, 99680.0, y, 2320.0 + 900.0)));
    EXPECT_TRUE(std::isnan(valueAt(volume, Quantity::Reflectivity, 99680.0, y, 2320.0 - 900.0)));
}

TEST(QUORPolarGridder, PutsTheCoresOfRealVolumesWhereTheirBeamsAre) {
    for (const char* name : {"open/KLBB20160601_150025_V06", "open/T_PAGZ35_C_ENMI_20170421090837.hdf",
                             "open/example_plot_ppi_single_sweep.nc"}) {
        const QString file = sampleDataPath(QLatin1String(name));
        if (file.isEmpty()) {
            GTEST_SKIP() << "no sample data";
        }
        const QUORRadarData data = QUORReaderProcess().read(file);
        int cores = 0;
        int found = 0;
        for (const QUORRadarSweep* sweep : QUORPolarGridder(data, Quantity::Reflectivity).getSweeps()) {
            const std::vector<Gate> gates = strongest(*sweep, 20);
            cores += int(gates.size());
            for (const Gate& gate : gates) {
                const float value = valueAt(data, Quantity::Reflectivity, gate.x, gate.y, gate.height);
                found += std::abs(value - gate.value) < 1.0F ? 1 : 0;
            }
        }
        EXPECT_GE(cores, 60) << name;
        EXPECT_GE(found, cores - cores / 20) << name;
    }
}

TEST(QUORPolarGridder, NeverAveragesAcrossTheNyquistFold) {
    const auto speedBetween = [](float below, float above, double nyquist) {
        TestVolume volume;
        TestVolume::addMoment(volume.addSweep(1.0, nyquist), Quantity::Velocity,
                              [=](double, double) { return below; });
        TestVolume::addMoment(volume.addSweep(2.0, nyquist), Quantity::Velocity,
                              [=](double, double) { return above; });
        // Over 50 km, 1.4 degrees: 1221 + 147 m.
        return valueAt(volume, Quantity::Velocity, 0.0, 50000.0, 1369.0);
    };
    EXPECT_NEAR(speedBetween(4.0F, 9.0F, 10.0), 6.0, 0.1);
    EXPECT_EQ(speedBetween(9.5F, -9.5F, 10.0), 9.5F);
    EXPECT_EQ(speedBetween(4.0F, 9.0F, 0.0), 4.0F);
}

TEST(QUORPolarGridder, TakesReflectivityOfASplitCutFromTheLongTurnAndTheFirstOfRepeats) {
    TestVolume volume;
    const auto constant = [](float value) { return [value](double, double) { return value; }; };
    QUORRadarSweep& doppler = volume.addSweep(0.52);
    TestVolume::addMoment(doppler, Quantity::Reflectivity, constant(10.0F), {100, 250.0, 500.0});
    TestVolume::addMoment(doppler, Quantity::Velocity, constant(7.0F), {100, 250.0, 500.0});
    TestVolume::addMoment(volume.addSweep(0.48), Quantity::Reflectivity, constant(20.0F));
    TestVolume::addMoment(volume.addSweep(1.5), Quantity::Reflectivity, constant(20.0F));
    TestVolume::addMoment(volume.addSweep(0.5), Quantity::Reflectivity, constant(30.0F));
    EXPECT_EQ(QUORPolarGridder(volume, Quantity::Reflectivity).getSweeps().size(), 2U);
    EXPECT_EQ(valueAt(volume, Quantity::Reflectivity, 30000.0, 0.0, 315.0), 20.0F);
    EXPECT_EQ(valueAt(volume, Quantity::Velocity, 30000.0, 0.0, 315.0), 7.0F);
}

TEST(QUORFlatProducts, TakeTheHighestValueAndTheLiquidWaterOfColumns) {
    QUORGridShape shape;
    shape.points = {4, 1, 3};
    shape.steps = {1000.0, 1000.0, 1000.0};
    const float none = QUORRadarValue::NO_DATA;
    const float clear = QUORRadarValue::NO_ECHO;
    //                                 storm, hail, clear, outside
    const std::vector<float> values{40.0F, 70.0F, clear, none, 50.0F, 70.0F,
                                    clear, none,  clear, none, clear, none};
    const std::vector<float> highest = QUORFlatProducts::maximum(shape, values);
    EXPECT_EQ(highest[0], 50.0F);
    EXPECT_EQ(highest[1], 70.0F);
    EXPECT_EQ(highest[2], clear);
    EXPECT_TRUE(std::isnan(highest[3]));
    const std::vector<float> water = QUORFlatProducts::liquidWater(shape, values);
    // 3.44e-3 ((1e4 + 1e5) / 2)^(4/7) + 3.44e-3 (1e5 / 2)^(4/7) = 1.758 + 1.665
    EXPECT_NEAR(water[0], 3.42, 0.02);
    // Cut at 56 dBZ: 3.44e-3 (10^5.6)^(4/7).
    EXPECT_NEAR(water[1], 5.45, 0.02);
    EXPECT_EQ(water[2], clear);
    EXPECT_TRUE(std::isnan(water[3]));
}
