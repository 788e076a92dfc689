// SPDX-License-Identifier: MIT
#include "QUORDataType.h"

#include <gtest/gtest.h>

#include <limits>

TEST(QUORDataType, DescribesEveryCode) {
    const struct {
        int code;
        const char* name;
        const char* unit;
        const char* configuration;
        unsigned int maximum;
        int itemSize;
    } rows[] = {
        {2, "Reflectivity", "dBZ", "Z", 254, 1},      {9, "Reflectivity", "dBZ", "Z", 65534, 2},
        {4, "Spectrum width", "m/s", "W", 254, 1},    {11, "Spectrum width", "m/s", "W", 65534, 2},
        {3, "Radial velocity", "m/s", "V", 254, 1},   {10, "Radial velocity", "m/s", "V", 65534, 2},
        {13, "Rainfall rate", "mm/h", "R", 65534, 2}, {5, "Not available", "NA", "", 254, 0},
        {14, "Not available", "NA", "", 254, 0},      {-1, "Not available", "NA", "", 254, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.code);
        const QUORDataType type(row.code);
        EXPECT_EQ(type.getQuantityName(), QLatin1String(row.name));
        EXPECT_EQ(type.getQuantityUnit(), QLatin1String(row.unit));
        EXPECT_EQ(type.getConfiguration(), QLatin1String(row.configuration));
        EXPECT_EQ(type.getMinAbsValue(), 1u);
        EXPECT_EQ(type.getMaxAbsValue(), row.maximum);
        EXPECT_EQ(type.getItemSize(), row.itemSize);
        EXPECT_EQ(type.getRawType(), row.itemSize == 0 ? -1 : row.code);
        EXPECT_EQ(type.getDisplayStr(0), QStringLiteral("NA"));
    }
}

TEST(QUORDataType, ConvertsEveryAbsoluteValueThereAndBack) {
    for (const QUORDataType::Row& row : QUORDataType::getRows()) {
        const QUORDataType type(row.code, 1000, 1, 533, 0);
        for (unsigned int n = row.minimum; n <= row.maximum; ++n) {
            ASSERT_EQ(type.displayToAbsoluteValue(type.absoluteToDisplayValue(n)), n) << row.code;
        }
    }
}

TEST(QUORDataType, ConvertsKnownValues) {
    const struct {
        QUORDataType type;
        double display;
        unsigned int absolute;
    } rows[] = {
        {QUORDataType(2), -31.5, 1},      {QUORDataType(2), 0.0, 64},
        {QUORDataType(2), 95.0, 254},     {QUORDataType(9), 0.0, 32768},
        {QUORDataType(11), 12.34, 1234},  {QUORDataType(13), 0.0, 1},
        {QUORDataType(13), 0.4095, 4096}, {QUORDataType(13), 0.8192, 8193},
        {QUORDataType(13), 1.0, 9097},    {QUORDataType(13), 13418.4959, 65534},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.type.displayToAbsoluteValue(row.display), row.absolute) << row.display;
    }
    EXPECT_NEAR(QUORDataType(13).absoluteToDisplayValue(4096), 0.4095, 1e-9);
    EXPECT_NEAR(QUORDataType(13).absoluteToDisplayValue(8193), 0.8193, 1e-9);
    EXPECT_NEAR(QUORDataType(13).getMaxDisplayValue(), 13418.4959, 1e-9);
    EXPECT_EQ(QUORDataType(2).getDisplayStr(1), QStringLiteral("-31.5"));
    EXPECT_EQ(QUORDataType(2).getDisplayStr(64), QStringLiteral("0.0"));
    EXPECT_EQ(QUORDataType(9).getDisplayStr(32768), QStringLiteral("0.0"));
}

TEST(QUORDataType, NyquistFactorFollowsTheScan) {
    const struct {
        int code;
        int mode;
        int pulse;
        double factor;
    } rows[] = {{3, 0, 0, 13.325}, {3, 1, 0, 26.65},  {3, 2, 0, 39.975}, {3, 3, 0, 53.3},
                {3, 4, 0, 13.325}, {3, 1, 2, 13.325}, {4, 1, 0, 13.325}, {4, 0, 2, 6.6625}};
    for (const auto& row : rows) {
        const QUORDataType type(row.code, 1000, row.mode, 533, row.pulse);
        const double unit =
            row.code == 3 ? type.absoluteToDisplayValue(255) : type.absoluteToDisplayValue(256);
        EXPECT_NEAR(unit, row.factor, 1e-9) << row.code << " " << row.mode << " " << row.pulse;
    }
    EXPECT_NE(QUORDataType(3, 1000, 0, 533, 0), QUORDataType(3, 1000, 1, 533, 0));
    EXPECT_EQ(QUORDataType(3, 1000, 1, 533, 2), QUORDataType(3, 1000, 0, 533, 0));
    EXPECT_EQ(QUORDataType(10, 1000, 0, 533, 0), QUORDataType(10));
    EXPECT_NE(QUORDataType(2), QUORDataType(9));
}

TEST(QUORDataType, ValuesBeyondTheRangeStayDefined) {
    const QUORDataType velocity(3, 1000, 0, 400, 0);
    EXPECT_EQ(velocity.displayToAbsoluteValue(10), 255u);
    EXPECT_EQ(velocity.displayToAbsoluteValue(20), 255u);
    EXPECT_EQ(velocity.displayToAbsoluteValue(-20), 1u);
    EXPECT_EQ(velocity.absoluteToDisplayValue(128), 0.0);
    EXPECT_EQ(QUORDataType(10).displayToAbsoluteValue(400), 65534u);
    EXPECT_EQ(QUORDataType(10).displayToAbsoluteValue(-400), 1u);
    EXPECT_EQ(QUORDataType(2).displayToAbsoluteValue(-9999), 0u);
    EXPECT_EQ(QUORDataType(13).displayToAbsoluteValue(-1), 1u);
    EXPECT_EQ(QUORDataType(13).displayToAbsoluteValue(1e6), 65534u);
    EXPECT_EQ(QUORDataType(9).displayToAbsoluteValue(1e300), std::numeric_limits<unsigned int>::max());
    EXPECT_EQ(QUORDataType(9).displayToAbsoluteValue(std::numeric_limits<double>::quiet_NaN()), 0u);

    const QUORDataType noWavelength(3, 1000, 0, 0, 0);
    EXPECT_EQ(noWavelength.absoluteToDisplayValue(200), 0.0);
    EXPECT_EQ(noWavelength.displayToAbsoluteValue(5.0), 128u);
}
