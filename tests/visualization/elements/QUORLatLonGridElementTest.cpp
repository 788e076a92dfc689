// SPDX-License-Identifier: MIT
#include "QUORLatLonGridElement.h"

#include "ElementFixture.h"
#include "QUORGeoProjection.h"

#include <vtkCellArray.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkVectorText.h>

#include <cmath>
#include <limits>

namespace {

QUORGeoProjection::CPtr projectionAt(double lat, double lon, const char* name = "aeqd") {
    return std::make_shared<const QUORGeoProjection>(QString::fromLatin1(name), QUORCoordinate(lat, lon),
                                                     6371000.0, std::numeric_limits<float>::max());
}

struct Size {
    double width;
    double height;
};

Size sizeOf(vtkActor* label) {
    const double* bounds = label->GetMapper()->GetBounds();
    return {bounds[1] - bounds[0], bounds[3] - bounds[2]};
}

} // namespace

class QUORLatLonGridElementTest : public ElementFixture<QUORLatLonGridElement, 42> {
protected:
    void updateWith(const QUORGeoProjection::CPtr& projection, double range) {
        QUORLayerParametersLatLonGrid record;
        record.setGeoProjection(projection);
        record.setRange(range);
        update(record);
    }

    /// The labels come in the order of their lines; the lines come last.
    vtkPolyData* lines() { return vtkPolyData::SafeDownCast(actors().back()->GetMapper()->GetInput()); }

    static void expectLabelAt(vtkActor* label, const QUORPoint3D& end, double dx, double dy) {
        const Size size = sizeOf(label);
        EXPECT_NEAR(label->GetPosition()[0], end.x + dx * size.width * 10000.0, 1e-3);
        EXPECT_NEAR(label->GetPosition()[1], end.y + dy * size.height * 10000.0, 1e-3);
        EXPECT_DOUBLE_EQ(label->GetScale()[0], 10000.0);
        EXPECT_DOUBLE_EQ(label->GetScale()[1], 10000.0);
        EXPECT_DOUBLE_EQ(label->GetScale()[2], 1.0);
    }
};

TEST_F(QUORLatLonGridElementTest, NamesDegrees) {
    const struct {
        double degrees;
        const char* latitude;
        const char* longitude;
    } rows[] = {{0.0, "0", "0"},          {12.0, "12N", "12E"},    {-12.5, "12.5S", "12.5W"},
                {180.0, "180N", "180"},   {-180.0, "180S", "180"}, {190.0, "190N", "170W"},
                {-190.0, "190S", "170E"}, {179.0, "179N", "179E"}, {-0.25, "0.25S", "0.25W"}};
    for (const auto& row : rows) {
        EXPECT_EQ(QUORLatLonGridElement::getLatitudeLabel(row.degrees), row.latitude);
        EXPECT_EQ(QUORLatLonGridElement::getLongitudeLabel(row.degrees), row.longitude);
    }
}

TEST_F(QUORLatLonGridElementTest, SpacesMeridiansByTheLatitude) {
    const auto projection = projectionAt(60.0, 25.0);
    updateWith(projection, 300000.0);
    // Four degrees of latitude and eight of longitude to each side; a meridian every two degrees.
    const int parallels = 9;
    const int meridians = 9;
    const int samplesOfParallel = 33; // every half degree over 16
    const int samplesOfMeridian = 33; // every quarter over 8
    EXPECT_EQ(lines()->GetNumberOfPoints(), parallels * samplesOfParallel + meridians * samplesOfMeridian);
    EXPECT_EQ(lines()->GetNumberOfLines(),
              parallels * (samplesOfParallel - 1) + meridians * (samplesOfMeridian - 1));
    EXPECT_EQ(actors().size(), 2U * (parallels + meridians) + 1U);

    const std::pair<vtkIdType, QUORCoordinate> seconds[] = {
        {1, QUORCoordinate(56.0, 17.5)}, {parallels * samplesOfParallel + 1, QUORCoordinate(56.25, 17.0)}};
    for (const auto& [index, coordinate] : seconds) {
        const QUORPoint3D point = projection->projectFromLatLon(coordinate);
        EXPECT_NEAR(lines()->GetPoint(index)[0], point.x, 1e-3);
        EXPECT_NEAR(lines()->GetPoint(index)[1], point.y, 1e-3);
    }
}

TEST_F(QUORLatLonGridElementTest, LabelsTheEndsOfEachLine) {
    const auto projection = projectionAt(2.0, 178.0);
    updateWith(projection, 100000.0);
    ASSERT_EQ(actors().size(), 2U * (9 + 9) + 1U);
    const auto at = [&](double lat, double lon) {
        return projection->projectFromLatLon(QUORCoordinate(lat, lon));
    };
    expectLabelAt(actors()[0], at(-2.0, 174.0), -1.4, -0.25);
    expectLabelAt(actors()[1], at(-2.0, 182.0), 0.2, -0.3);
    expectLabelAt(actors()[18], at(-2.0, 174.0), -0.5, -1.4);
    expectLabelAt(actors()[19], at(6.0, 174.0), -0.5, 0.6);
    // The equator's label is the bare number, narrower than its neighbours'.
    EXPECT_LT(sizeOf(actors()[4]).width, 0.7 * sizeOf(actors()[2]).width);
    // Beyond the date line the lines go on in one piece.
    EXPECT_EQ(lines()->GetNumberOfLines(), 18 * 32);
    EXPECT_LT(lines()->GetLength(), 1.5e6);
}

TEST_F(QUORLatLonGridElementTest, SpansAllLongitudesAtThePole) {
    const auto projection = projectionAt(88.0, 10.0);
    updateWith(projection, 200000.0);
    const int parallels = 7;  // 84 to 90
    const int meridians = 46; // -180 to 180 by 8, both ends
    EXPECT_EQ(lines()->GetNumberOfPoints(), parallels * 181 + meridians * 25);
    // The parallels have end labels only, exactly at their ends; the meridians only their southern ones.
    ASSERT_EQ(actors().size(), static_cast<std::size_t>(parallels + meridians + 1));
    for (int i = 0; i < parallels; ++i) {
        expectLabelAt(actors()[static_cast<std::size_t>(i)],
                      projection->projectFromLatLon(QUORCoordinate(84.0 + i, 180.0)), 0.0, 0.0);
    }
    expectLabelAt(actors()[parallels], projection->projectFromLatLon(QUORCoordinate(84.0, -180.0)), -0.5,
                  -1.4);
}

TEST_F(QUORLatLonGridElementTest, StaysBoundedWhateverTheArea) {
    const struct {
        const char* name;
        QUORGeoProjection::CPtr projection;
        double range;
        vtkIdType points; ///< 0: shows nothing
    } rows[] = {
        {"no projection", nullptr, 1e5, 0},
        {"not ready", projectionAt(60.0, 25.0, "no-such-map"), 1e5, 0},
        {"whole earth", projectionAt(10.0, 20.0), 1e12, 181 * 181 + 46 * 721},
        {"no number", projectionAt(10.0, 20.0), std::nan(""), 0},
        {"negative", projectionAt(10.0, 20.0), -5.0, 0},
        {"no extent", projectionAt(10.0, 20.0), 0.0, 9 * 41 + 11 * 33},
        {"whole earth, Mercator", projectionAt(0.0, 0.0, "merc"), 1e12, 171 * 181 + 46 * 681},
        {"Mercator up to 85 degrees", projectionAt(84.0, 10.0, "merc"), 100000.0, 6 * 32 + 8 * 21},
        {"Mercator at the pole", projectionAt(89.9, 10.0, "merc"), 1000.0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        updateWith(row.projection, row.range);
        ASSERT_EQ(row.points > 0, bool(element.getProp()));
        if (row.points == 0) {
            continue;
        }
        EXPECT_EQ(lines()->GetNumberOfPoints(), row.points);
        const double* bounds = lines()->GetBounds();
        for (int i = 0; i < 6; ++i) {
            EXPECT_LT(std::abs(bounds[i]), 3.0e7);
        }
    }
}
