// SPDX-License-Identifier: MIT
#include "QUORCoordinate.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr QUORCoordinate::Modifier BOTH = QUORCoordinate::Both;
constexpr QUORCoordinate::Modifier LATITUDE = QUORCoordinate::Latitude;
constexpr QUORCoordinate::Modifier LONGITUDE = QUORCoordinate::Longitude;

std::string text(const QString& s) {
    return s.toStdString();
}

} // namespace

TEST(QUORCoordinateTest, BinaryAnglesCoverHalfATurnEachWay) {
    const struct {
        unsigned int angle;
        double degrees;
    } rows[] = {{0U, 0.0}, {1U << 30, 90.0}, {1U << 31, -180.0}, {3U << 30, -90.0}, {0xFFFFFFFFU, 0.0}};
    for (const auto& row : rows) {
        const QUORCoordinate c(row.angle, row.angle);
        EXPECT_NEAR(c.getLat(), row.degrees, 1e-6) << row.angle;
        EXPECT_NEAR(c.getLon(), row.degrees, 1e-6) << row.angle;
    }
}

TEST(QUORCoordinateTest, AnglesUpToOneTurnAwayAreNormalized) {
    const struct {
        double angle;
        double expected;
    } rows[] = {{190.0, -170.0}, {-190.0, 170.0},  {400.0, 0.0}, {-361.0, 0.0},       {95.0, 95.0},
                {180.0, 180.0},  {-180.0, -180.0}, {360.0, 0.0}, {NOT_A_NUMBER, 0.0}, {-360.0, 0.0}};
    for (const auto& row : rows) {
        EXPECT_DOUBLE_EQ(QUORCoordinate(0.0, row.angle).getLon(), row.expected) << row.angle;
        EXPECT_DOUBLE_EQ(QUORCoordinate(row.angle, 0.0).getLat(), row.expected) << row.angle;
    }
}

TEST(QUORCoordinateTest, DegreesMinutesSecondsTakeTheirSignFromTheHemisphere) {
    const QUORCoordinate c(60, 30, 0, 'S', 24, 15, 36, 'E');
    EXPECT_DOUBLE_EQ(c.getLat(), -60.5);
    EXPECT_DOUBLE_EQ(c.getLon(), 24.26);
    EXPECT_EQ(QUORCoordinate(10, 0, 0, 'n', 20, 0, 0, 'w'), QUORCoordinate(10.0, -20.0));
}

TEST(QUORCoordinateTest, BearingAndDistance) {
    const QUORCoordinate centre(60.0, 25.0);
    const struct {
        QUORCoordinate to;
        double bearing;
        double distance;
        double tolerance;
    } rows[] = {{{61.0, 25.0}, 0.0, 111420.0, 20.0},
                {{60.0, 25.01}, 90.0, 558.0, 1.0},
                {{59.0, 25.0}, 180.0, 111403.0, 20.0},
                {{60.0, 24.99}, 270.0, 558.0, 1.0}};
    for (const auto& row : rows) {
        // A bearing a hair west of north is near 360.
        const double bearing = centre.getBearingTo(row.to);
        EXPECT_NEAR(bearing > 359.0 ? bearing - 360.0 : bearing, row.bearing, 0.02);
        EXPECT_NEAR(centre.getDistanceTo(row.to), row.distance, row.tolerance);
    }
    EXPECT_EQ(centre.getDistanceTo(centre), 0.0);
}

TEST(QUORCoordinateTest, DegreeLengths) {
    EXPECT_NEAR(QUORCoordinate(0.0, 25.0).calcOneLonDegLength(), 111319.5, 1.0);
    EXPECT_NEAR(QUORCoordinate(60.0, 25.0).calcOneLonDegLength(), 55800.0, 10.0);
    EXPECT_NEAR(QUORCoordinate(60.0, 179.9).calcOneLonDegLength(), 55800.0, 10.0);
    EXPECT_NEAR(QUORCoordinate(0.0, 25.0).calcOneLatDegLength(), 110575.0, 10.0);
    EXPECT_NEAR(QUORCoordinate(-90.0, 25.0).calcOneLatDegLength(), 111693.0, 10.0);
}

TEST(QUORCoordinateTest, BoundsOfASquareArea) {
    const struct {
        QUORCoordinate centre;
        double range;
        int minDegrees;
        int minLat, maxLat, minLon, maxLon;
    } rows[] = {
        {{60.3, 25.4}, 240000.0, 0, 57, 63, 18, 32},       {{60.3, 25.4}, 1000.0, 2, 58, 62, 20, 30},
        {{0.0, 179.5}, 100000.0, 0, -1, 1, 179, 181},      {{89.5, 10.0}, 200000.0, 0, 88, 90, -180, 180},
        {{-89.5, 10.0}, 200000.0, 0, -90, -88, -180, 180}, {{90.0, 10.0}, 200000.0, 0, 88, 90, -180, 180},
        {{10.0, 10.0}, 1e300, 0, -90, 90, -180, 180}};
    for (const auto& row : rows) {
        int minLat = 0;
        int maxLat = 0;
        int minLon = 0;
        int maxLon = 0;
        row.centre.calcLatLonBounds(row.range, minLat, maxLat, minLon, maxLon, row.minDegrees);
        SCOPED_TRACE(text(row.centre.toDecimalString(BOTH)));
        EXPECT_EQ(minLat, row.minLat);
        EXPECT_EQ(maxLat, row.maxLat);
        EXPECT_EQ(minLon, row.minLon);
        EXPECT_EQ(maxLon, row.maxLon);
    }
}

TEST(QUORCoordinateTest, TextForms) {
    const QUORCoordinate north(60.1234, 24.5);
    EXPECT_EQ(text(north.toDecimalString(LATITUDE)), "60.1234\u00b0 N");
    EXPECT_EQ(text(north.toDmString(LATITUDE)), "60\u00b0 7' 24.24\" N");
    EXPECT_EQ(text(north.toDMsString(LATITUDE)), "60\u00b0 7.404' N");
    const QUORCoordinate southWest(-33.25, -70.5);
    EXPECT_EQ(text(southWest.toDecimalString(BOTH)), "33.2500\u00b0 S, 70.5000\u00b0 W");
    EXPECT_EQ(text(southWest.toDmString(LONGITUDE)), "70\u00b0 30' 0.00\" W");
    EXPECT_EQ(text(southWest.toDMsString(QUORCoordinate::Modifier(3))),
              "33\u00b0 15.000' S, 70\u00b0 30.000' W");
}

TEST(QUORCoordinateTest, NoPartOfATextReadsSixty) {
    const struct {
        double degrees;
        const char* seconds;
        const char* minutes;
    } rows[] = {{1.4999999, "1\u00b0 30' 0.00\" E", "1\u00b0 30.000' E"},
                {1.0 + 29.99999 / 60.0, "1\u00b0 30' 0.00\" E", "1\u00b0 30.000' E"},
                {-6.999999, "7\u00b0 0' 0.00\" W", "7\u00b0 0.000' W"},
                {6.0 + 59.99940 / 60.0, "6\u00b0 59' 59.96\" E", "6\u00b0 59.999' E"},
                {179.9999999, "180\u00b0 0' 0.00\" E", "180\u00b0 0.000' E"}};
    for (const auto& row : rows) {
        const QUORCoordinate place(0.0, row.degrees);
        EXPECT_EQ(text(place.toDmString(LONGITUDE)), row.seconds);
        EXPECT_EQ(text(place.toDMsString(LONGITUDE)), row.minutes);
    }
}
