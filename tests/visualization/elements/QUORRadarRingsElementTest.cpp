// SPDX-License-Identifier: MIT
#include "QUORRadarRingsElement.h"

#include "ElementFixture.h"

#include <vtkCellArray.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkVectorText.h>

#include <cmath>
#include <limits>

namespace {

QUORLayerParametersRadarRings makeRecord(double range, bool metric) {
    QUORLayerParametersRadarRings record;
    record.setRange(range);
    record.setMetricUnits(metric);
    return record;
}

/// Bounds of a text's geometry.
std::array<double, 6> boundsOf(const char* text) {
    vtkNew<vtkVectorText> geometry;
    geometry->SetText(text);
    geometry->Update();
    std::array<double, 6> bounds{};
    geometry->GetOutput()->GetBounds(bounds.data());
    return bounds;
}

} // namespace

using QUORRadarRingsElementTest = ElementFixture<QUORRadarRingsElement, 44>;

TEST_F(QUORRadarRingsElementTest, DrawsRingsAndSpokes) {
    update(makeRecord(40000.0, false));
    const double outer = 74127.36;
    ASSERT_EQ(actors().size(), 9U);
    vtkActor* lines = actors().front();
    auto* data = vtkPolyData::SafeDownCast(lines->GetMapper()->GetInput());
    ASSERT_EQ(data->GetNumberOfLines(), 4 * 64 + 12);
    EXPECT_FALSE(lines->GetProperty()->GetLighting());
    EXPECT_EQ(lines->GetProperty()->GetRepresentation(), VTK_WIREFRAME);

    double start[3];
    double end[3];
    vtkIdType count = 0;
    const vtkIdType* ids = nullptr;
    for (int line = 0; line < data->GetNumberOfLines(); ++line) {
        SCOPED_TRACE(line);
        data->GetLines()->GetCellAtId(line, count, ids);
        ASSERT_EQ(count, 2);
        data->GetPoint(ids[0], start);
        data->GetPoint(ids[1], end);
        const bool spoke = line >= 4 * 64;
        const double radius = spoke ? outer : outer * (1.0 - 0.25 * (line / 64));
        EXPECT_NEAR(std::hypot(start[0], start[1]), radius, 1e-6);
        EXPECT_NEAR(std::hypot(end[0], end[1]), spoke ? 0.25 * outer : radius, 1e-6);
        const double turn =
            std::remainder(std::atan2(end[1], end[0]) - std::atan2(start[1], start[0]), 2 * M_PI);
        EXPECT_NEAR(turn, spoke ? 0.0 : 2 * M_PI / 64, 1e-9);
        if (spoke) {
            EXPECT_NEAR(std::remainder(std::atan2(start[1], start[0]) - (line - 4 * 64) * M_PI / 6, 2 * M_PI),
                        0.0, 1e-9);
        }
    }
}

TEST_F(QUORRadarRingsElementTest, LabelsEachRingTwice) {
    const struct {
        double range;
        bool metric;
        double unit;
        std::array<const char*, 4> texts;
    } rows[] = {
        {80000.0, true, 1.0, {"80km", "60km", "40km", "20km"}},
        {40000.0, false, 1.853184, {"40NM", "30NM", "20NM", "10NM"}},
        {30000.0, true, 1.0, {"30km", "22km", "15km", "7km"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.texts[0]);
        update(makeRecord(row.range, row.metric));
        const std::vector<vtkActor*> parts = actors();
        ASSERT_EQ(parts.size(), 9U);
        const double scale = row.range * row.unit / 40.0;
        for (std::size_t i = 0; i < 4; ++i) {
            SCOPED_TRACE(row.texts[i]);
            const auto text = boundsOf(row.texts[i]);
            const double width = text[1] - text[0];
            const double height = text[3] - text[2];
            const double radius = row.unit * row.range * (1.0 - 0.25 * static_cast<double>(i));
            const double x[2] = {radius, -radius - 1.1 * width * scale};
            for (std::size_t side = 0; side < 2; ++side) {
                vtkActor* label = parts[1 + 2 * i + side];
                for (int axis = 0; axis < 6; ++axis) {
                    EXPECT_DOUBLE_EQ(label->GetMapper()->GetBounds()[axis],
                                     text[static_cast<std::size_t>(axis)]);
                }
                EXPECT_NEAR(label->GetPosition()[0], x[side], 1e-6);
                EXPECT_NEAR(label->GetPosition()[1], 0.3 * height * scale, 1e-6);
                EXPECT_DOUBLE_EQ(label->GetPosition()[2], 0.0);
                EXPECT_NEAR(label->GetScale()[0], scale, 1e-9);
                EXPECT_NEAR(label->GetScale()[1], scale, 1e-9);
                EXPECT_DOUBLE_EQ(label->GetScale()[2], 1.0);
            }
        }
    }
}

TEST_F(QUORRadarRingsElementTest, ShowsNothingWithoutASensibleRadius) {
    for (const double range : {0.0, -20000.0, 6.0e7, std::numeric_limits<double>::infinity(), std::nan("")}) {
        SCOPED_TRACE(range);
        update(makeRecord(range, true));
        EXPECT_FALSE(element.getProp());
    }
}

TEST_F(QUORRadarRingsElementTest, AHaloLiesUnderEachLabel) {
    ScratchHome::writeSettings("QUOR3DVisStyles.conf",
                               "[RADARRINGS_DAY]\nlabel\\halo\\width=1.5\nlabel\\size=20000\n");
    update(makeRecord(80000.0, true));
    ASSERT_EQ(actors().size(), 17U);
    vtkActor* halo = actors()[1];
    EXPECT_EQ(halo->GetProperty()->GetRepresentation(), VTK_WIREFRAME);
    EXPECT_FLOAT_EQ(halo->GetProperty()->GetLineWidth(), 3.0F);
    EXPECT_EQ(halo->GetMapper(), actors()[2]->GetMapper());
    EXPECT_DOUBLE_EQ(halo->GetPosition()[0], actors()[2]->GetPosition()[0]);
    EXPECT_NEAR(halo->GetScale()[0], 4000.0, 1e-6);
}
