// SPDX-License-Identifier: MIT
#include "QUOR3DOutlineElement.h"

#include "ElementFixture.h"

#include <vtkCellArray.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>

#include <cmath>
#include <set>

class QUOR3DOutlineElementTest : public ElementFixture<QUOR3DOutlineElement, 11> {
protected:
    void updateWith(double altitude, double height, double interval) {
        QUORLayerParameters3dOutline record;
        record.setSiteAltitude(altitude);
        record.setDataHeight(height);
        record.setTickInterval(interval);
        update(record);
    }
};

TEST_F(QUOR3DOutlineElementTest, MarksHeightsAboveSeaLevel) {
    const struct {
        const char* name;
        double altitude;
        double height;
        double interval;
        std::vector<double> heights; ///< metres above sea level
    } rows[] = {
        {"metric", 0.0, 12000.0, 2500.0, {0, 2500, 5000, 7500, 10000}},
        {"feet", 300.0, 9000.0, 3048.0, {3048, 6096, 9144}},
        {"first and last at the edges", 2500.0, 7500.0, 2500.0, {2500, 5000, 7500, 10000}},
        {"below sea level", -400.0, 3000.0, 2500.0, {0, 2500}},
        {"wholly below sea level", -4000.0, 3000.0, 2500.0, {}},
        {"no interval", 0.0, 12000.0, 0.0, {}},
        {"flat", 100.0, 0.0, 2500.0, {}},
        {"unbounded count", 0.0, 12000.0, 1e-9, {}},
        {"not a number", std::nan(""), 12000.0, 2500.0, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        element.invalidate();
        updateWith(row.altitude, row.height, row.interval);
        ASSERT_EQ(actors().size(), 2U);
        auto* data = vtkPolyData::SafeDownCast(actors()[1]->GetMapper()->GetInput());
        ASSERT_EQ(data->GetNumberOfPoints(), static_cast<vtkIdType>(row.heights.size()) * 4 * 3);
        ASSERT_EQ(data->GetNumberOfLines(), static_cast<vtkIdType>(row.heights.size()) * 4 * 2);
        for (vtkIdType i = 0; i < data->GetNumberOfPoints(); ++i) {
            const double height = row.heights[static_cast<std::size_t>(i / 12)];
            EXPECT_NEAR(data->GetPoint(i)[2], (height - row.altitude) / row.height, 1e-12);
        }
    }
}

TEST_F(QUOR3DOutlineElementTest, DrawsASmallLAtEachCornerOfAUnitBox) {
    ScratchHome::writeSettings("QUOR3DVisStyles.conf",
                               "[OUTLINE3D_DAY]\ntick\\width=3\n[OUTLINE3D_NIGHT]\nline\\width=9\n");
    updateWith(0.0, 12000.0, 20000.0);
    EXPECT_FLOAT_EQ(actors().at(0)->GetProperty()->GetLineWidth(), 2.0F);
    EXPECT_FLOAT_EQ(actors().at(1)->GetProperty()->GetLineWidth(), 3.0F);
    const std::array<double, 6> box{-0.5, 0.5, -0.5, 0.5, 0.0, 1.0};
    for (std::size_t i = 0; i < box.size(); ++i) {
        EXPECT_DOUBLE_EQ(actors()[0]->GetBounds()[i], box[i]);
    }

    auto* data = vtkPolyData::SafeDownCast(actors()[1]->GetMapper()->GetInput());
    ASSERT_EQ(data->GetNumberOfLines(), 8);
    std::set<std::array<double, 4>> legs; // from where to where, in hundredths
    for (vtkIdType line = 0; line < 8; ++line) {
        const double* ends = data->GetCell(line)->GetPoints()->GetPoint(0);
        const std::array<double, 2> corner{ends[0], ends[1]};
        ends = data->GetCell(line)->GetPoints()->GetPoint(1);
        legs.insert({std::round(100 * corner[0]), std::round(100 * corner[1]),
                     std::round(1000 * ends[0]) / 10, std::round(1000 * ends[1]) / 10});
    }
    std::set<std::array<double, 4>> expected;
    for (const auto& [x, y] : {std::pair{50, 50}, {50, -50}, {-50, 50}, {-50, -50}}) {
        expected.insert({double(x), double(y), 0.97 * x, double(y)});
        expected.insert({double(x), double(y), double(x), 0.97 * y});
    }
    EXPECT_EQ(legs, expected);
}
