// SPDX-License-Identifier: MIT
#include "QUOR3DOutlineElement.h"

#include "ElementFixture.h"

#include <vtkCellArray.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>

#include <cmath>

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
    std::array<int, 4> legsOfCorner{};
    for (vtkIdType line = 0; line < 8; ++line) {
        vtkIdType count = 0;
        const vtkIdType* ids = nullptr;
        data->GetLines()->GetCellAtId(line, count, ids);
        double corner[3];
        double inner[3];
        data->GetPoint(ids[0], corner);
        data->GetPoint(ids[1], inner);
        EXPECT_DOUBLE_EQ(std::abs(corner[0]), 0.5);
        EXPECT_DOUBLE_EQ(std::abs(corner[1]), 0.5);
        const bool alongX = inner[0] != corner[0];
        EXPECT_NEAR(inner[0], corner[0] * (alongX ? 0.97 : 1.0), 1e-12);
        EXPECT_NEAR(inner[1], corner[1] * (alongX ? 1.0 : 0.97), 1e-12);
        const std::size_t index = (corner[0] > 0 ? 1U : 0U) + (corner[1] > 0 ? 2U : 0U);
        legsOfCorner[index] += alongX ? 1 : 10;
    }
    EXPECT_EQ(legsOfCorner, (std::array<int, 4>{11, 11, 11, 11}));
}
