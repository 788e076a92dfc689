// SPDX-License-Identifier: MIT
#include "QUOR3DOutlineElement.h"

#include "ElementFixture.h"

#include <vtkActor.h>
#include <vtkAssembly.h>
#include <vtkCellArray.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>

#include <cmath>
#include <limits>

class QUOR3DOutlineElementTest : public ElementFixture<QUOR3DOutlineElement, 11> {
protected:
    void updateWith(double altitude, double height, double interval) {
        QUORLayerParameters3dOutline record;
        record.setSiteAltitude(altitude);
        record.setDataHeight(height);
        record.setTickInterval(interval);
        update(record);
    }

    /// The box and the ticks.
    std::vector<vtkActor*> actors() {
        auto* assembly = vtkAssembly::SafeDownCast(element.getProp());
        return assembly ? partsOf<vtkActor>(assembly) : std::vector<vtkActor*>{};
    }
};

TEST_F(QUOR3DOutlineElementTest, MarksHeightsAboveSeaLevel) {
    const double infinity = std::numeric_limits<double>::infinity();
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
        {"negative interval", 0.0, 12000.0, -1.0, {}},
        {"flat", 0.0, 0.0, 2500.0, {}},
        {"negative height", 100.0, -100.0, 2500.0, {}},
        {"endless", 0.0, infinity, 2500.0, {}},
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
    updateWith(0.0, 12000.0, 20000.0);
    ASSERT_EQ(actors().size(), 2U);
    const std::array<double, 6> box{-0.5, 0.5, -0.5, 0.5, 0.0, 1.0};
    for (std::size_t i = 0; i < box.size(); ++i)
        EXPECT_DOUBLE_EQ(actors()[0]->GetBounds()[i], box[i]);

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

TEST_F(QUOR3DOutlineElementTest, TakesItsStyleFromTheFile) {
    updateWith(0.0, 12000.0, 2500.0);
    for (const std::size_t i : {0U, 1U}) {
        vtkProperty* property = actors().at(i)->GetProperty();
        EXPECT_DOUBLE_EQ(property->GetColor()[2], 0.3);
        EXPECT_FLOAT_EQ(property->GetLineWidth(), i == 0 ? 2.0F : 1.0F);
        EXPECT_EQ(property->GetRepresentation(), VTK_WIREFRAME);
        EXPECT_FALSE(property->GetLighting());
    }
    ScratchHome::writeSettings(
        "QUOR3DVisStyles.conf",
        "[OUTLINE3D_DAY]\nline\\color\\b=0.8\nline\\width=4\ntick\\color\\b=0.6\ntick\\width=3\n"
        "[OUTLINE3D_NIGHT]\nline\\color\\b=0.1\n");
    updateWith(10.0, 12000.0, 2500.0);
    EXPECT_DOUBLE_EQ(actors().at(0)->GetProperty()->GetColor()[2], 0.8);
    EXPECT_FLOAT_EQ(actors().at(0)->GetProperty()->GetLineWidth(), 4.0F);
    EXPECT_DOUBLE_EQ(actors().at(1)->GetProperty()->GetColor()[2], 0.6);
    EXPECT_FLOAT_EQ(actors().at(1)->GetProperty()->GetLineWidth(), 3.0F);
    EXPECT_TRUE(log.contains("QUOR3DOutlineElement::update(): Re-creating changed visualization.."));
}
