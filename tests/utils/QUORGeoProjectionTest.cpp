// SPDX-License-Identifier: MIT
#include "QUORGeoProjection.h"

#include "LogCapture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <thread>
#include <vector>

namespace {

constexpr double RADIUS = 6378137.0;
constexpr double FLATTENING = 298.257;
constexpr double SPHERE = 3.4028234663852886e+38;

QUORGeoProjection makeProjection(const char* name, double lat, double lon, double rf = FLATTENING) {
    return {QString::fromLatin1(name), QUORCoordinate(lat, lon), RADIUS, rf};
}

} // namespace

TEST(QUORGeoProjectionTest, TheReferenceIsTheOrigin) {
    const struct {
        const char* name;
        double lat, lon, rf;
    } rows[] = {{"aeqd", 60.0, 25.0, FLATTENING},
                {"aeqd", -33.4, -70.6, SPHERE},
                {"aeqd", 90.0, 0.0, FLATTENING},
                {"merc", 41.6, -88.1, FLATTENING},
                {"merc", -41.6, 170.0, SPHERE}};
    for (const auto& row : rows) {
        const QUORGeoProjection projection = makeProjection(row.name, row.lat, row.lon, row.rf);
        SCOPED_TRACE(std::string(row.name) + " at " + std::to_string(row.lat));
        ASSERT_TRUE(projection.isReady());
        const QUORPoint3D origin = projection.projectFromLatLon({row.lat, row.lon});
        EXPECT_NEAR(origin.x, 0.0, 0.05);
        EXPECT_NEAR(origin.y, 0.0, 0.05);
        const QUORCoordinate back = projection.projectToLatLon(origin);
        EXPECT_NEAR(back.getLat(), row.lat, 1e-6);
    }
}

TEST(QUORGeoProjectionTest, TellsTheScaleOfTheMapAtTheSite) {
    const struct {
        const char* name;
        double lat, rf, scale;
    } rows[] = {{"aeqd", 42.0, FLATTENING, 1.0},
                {"aeqd", 90.0, SPHERE, 1.0},
                {"merc", 0.0, SPHERE, 1.0},
                {"merc", -60.0, SPHERE, 2.0},
                // Snyder, Map Projections: A Working Manual (1987), equation 7-8
                {"merc", 42.0, FLATTENING, 1.34362},
                {"no-such-map", 42.0, FLATTENING, 1.0}};
    for (const auto& row : rows) {
        EXPECT_NEAR(makeProjection(row.name, row.lat, 10.0, row.rf).getScaleAtReference(), row.scale, 1e-4)
            << row.name << ' ' << row.lat;
    }
}

TEST(QUORGeoProjectionTest, RoundTripsAndScales) {
    for (const char* name : {"aeqd", "merc"}) {
        const QUORGeoProjection projection = makeProjection(name, 42.0, 179.5);
        for (const QUORCoordinate& c : {QUORCoordinate(42.5, 178.0), QUORCoordinate(41.0, -179.0)}) {
            const QUORPoint3D p = projection.projectFromLatLon(c);
            EXPECT_LT(std::abs(p.x), 300000.0) << name;
            const QUORCoordinate back = projection.projectToLatLon(p);
            EXPECT_NEAR(back.getLat(), c.getLat(), 1e-6) << name;
            EXPECT_NEAR(back.getLon(), c.getLon(), 1e-6) << name;
        }
    }
    const QUORPoint3D north = makeProjection("aeqd", 60.0, 25.0).projectFromLatLon({61.0, 25.0});
    EXPECT_NEAR(north.y, 111420.0, 20.0);
    EXPECT_NEAR(north.x, 0.0, 0.1);
    EXPECT_EQ(north.z, 0.0);
}

TEST(QUORGeoProjectionTest, PointsBeyondAPoleHaveTheirTrueLongitude) {
    const struct {
        double lat, lon, y, expectedLat, expectedLon;
    } rows[] = {{89.0, 10.0, 150000.0, 89.657, -170.0},
                {-89.0, 10.0, -150000.0, -89.657, -170.0},
                {89.0, -30.0, 150000.0, 89.657, 150.0},
                {89.0, 10.0, 50000.0, 89.448, 10.0}};
    for (const auto& row : rows) {
        const QUORCoordinate c = makeProjection("aeqd", row.lat, row.lon).projectToLatLon({0.0, row.y, 0.0});
        EXPECT_NEAR(c.getLat(), row.expectedLat, 0.001);
        EXPECT_NEAR(c.getLon(), row.expectedLon, 0.001);
    }
}

TEST(QUORGeoProjectionTest, IllegalArgumentsAreLoggedAndNeverReady) {
    const struct {
        const char* name;
        double lat, radius, rf;
    } rows[] = {{"", 60.0, RADIUS, FLATTENING},
                {"aeqd", 91.0, RADIUS, FLATTENING},
                {"aeqd", 60.0, 0.0, FLATTENING},
                {"aeqd", 60.0, std::nan(""), FLATTENING},
                {"aeqd", 60.0, RADIUS, -1.0}};
    for (const auto& row : rows) {
        const LogCapture log;
        const QUORGeoProjection projection(QString::fromLatin1(row.name), {row.lat, 25.0}, row.radius,
                                           row.rf);
        EXPECT_FALSE(projection.isReady());
        EXPECT_EQ(log.count(QStringLiteral("D: QUORGeoProjection::QUORGeoProjection: Illegal projection.")),
                  1);
        EXPECT_EQ(log.count(QStringLiteral("D: refLoc=%1, 25").arg(row.lat)), 1);
        EXPECT_EQ(projection.projectFromLatLon({60.0, 25.0}), QUORPoint3D());
        EXPECT_EQ(projection.projectToLatLon({1.0, 1.0, 0.0}), QUORCoordinate());
        EXPECT_EQ(log.count(QStringLiteral(
                      "E: QUORGeoProjection::projectFromLatLon(): projection not initialized.")),
                  1);
        EXPECT_EQ(
            log.count(QStringLiteral("E: QUORGeoProjection::projectToLatLon(): projection not initialized.")),
            1);
    }
}

TEST(QUORGeoProjectionTest, AFailedInitialisationIsLoggedWithItsDefinition) {
    const LogCapture log;
    EXPECT_FALSE(makeProjection("nosuch", 60.0, 25.5).isReady());
    EXPECT_EQ(log.count(QStringLiteral("E: QUORGeoProjection::QUORGeoProjection(): pj_init_plus() failed!")),
              1);
    EXPECT_EQ(log.count(QStringLiteral("E: err: ")), 1);
    EXPECT_EQ(
        log.count(QStringLiteral("E: proj: +proj=nosuch +lat_0=60.000000 +lon_0=25.500000 +a=6378137.000000 "
                                 "+rf=298.257000")),
        1);
}

TEST(QUORGeoProjectionTest, FailedTransformsGiveZerosAndDoNotFloodTheLog) {
    const LogCapture log;
    const QUORGeoProjection projection = makeProjection("merc", 42.0, 1.0);
    const double infinity = std::numeric_limits<double>::infinity();
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(projection.projectToLatLon({infinity, 0.0, 0.0}), QUORCoordinate());
    }
    const int lines =
        log.count(QStringLiteral("QUORGeoProjection::projectToLatLon((): pj_transform() failed! ret="));
    EXPECT_GE(lines, 1);
    EXPECT_LE(lines, 20);
    EXPECT_EQ(log.count(QStringLiteral("E: srcXYZ=(inf, 0, 0)")), lines);
    EXPECT_NEAR(projection.projectToLatLon({0.0, 0.0, 0.0}).getLat(), 42.0, 1e-6);
}

TEST(QUORGeoProjectionTest, OneObjectServesManyThreads) {
    const QUORGeoProjection projection = makeProjection("aeqd", 60.0, 25.0);
    std::vector<QUORCoordinate> coordinates;
    for (int i = 0; i < 2000; ++i) {
        coordinates.emplace_back(55.0 + i * 0.005, 20.0 + i * 0.005);
    }
    std::vector<QUORPoint3D> expected(coordinates.size());
    projection.projectFromLatLon(coordinates, expected);
    std::vector<int> differences(4, 0);
    std::vector<std::thread> threads;
    for (int& different : differences) {
        threads.emplace_back([&] {
            for (std::size_t i = 0; i < coordinates.size(); ++i) {
                different += projection.projectFromLatLon(coordinates[i]) != expected[i];
                different += std::abs(projection.projectToLatLon(expected[i]).getLat() -
                                      coordinates[i].getLat()) > 1e-6;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(differences, std::vector<int>(4, 0));
}
