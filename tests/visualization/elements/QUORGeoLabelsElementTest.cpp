// SPDX-License-Identifier: MIT
#include "QUORGeoLabelsElement.h"

#include "ElementFixture.h"
#include "OffscreenScene.h"
#include "QUORGeoProjection.h"
#include "QUORLandmarkSet.h"

#include <vtkActor.h>
#include <vtkCamera.h>
#include <vtkPropAssembly.h>
#include <vtkPropCollection.h>
#include <vtkTextActor.h>
#include <vtkTextProperty.h>

#include <cmath>

namespace {

QUORLandmark::Ptr landmark(const QString& label, double lat, double lon, double alt, unsigned priority) {
    return std::make_shared<QUORLandmark>(label, QUORCoordinate(lat, lon), alt, 1.0, 0.5, 9.0, priority);
}

QUORLandmarkSet::CPtr makeSet(const QVector<QUORLandmark::Ptr>& landmarks) {
    auto set = std::make_shared<QUORLandmarkSet>(QUORCoordinate(), QUORCoordinate(), QUORCoordinate());
    for (const QUORLandmark::Ptr& each : landmarks) {
        set->append(each);
    }
    return set;
}

} // namespace

class QUORGeoLabelsElementTest : public ElementFixture<QUORGeoLabelsElement, 43> {
protected:
    void updateWith(const QUORLandmarkSet::CPtr& set, double verticalScale) {
        QUORLayerParametersGeoLabels record;
        record.setGeoProjection(projection);
        record.setLandmarks(set);
        record.setVerticalScale(verticalScale);
        update(record);
    }

    const QUORGeoProjection::CPtr projection =
        std::make_shared<QUORGeoProjection>("aeqd", QUORCoordinate(42.0, 1.5), 6378137.0, 298.257);
};

TEST_F(QUORGeoLabelsElementTest, LabelsEachLandmarkInItsPlace) {
    updateWith(makeSet({landmark("Small", 42.0, 1.5, 0.0, 5), landmark("Large", 43.0, 1.5, 1000.0, 0),
                        landmark("West", 42.0, 0.5, -100.0, 2)}),
               5.0);
    const struct {
        const char* text;
        int size;
        std::array<double, 3> position;
    } rows[] = {{"Small", 6, {0, 0, 750}}, {"Large", 11, {0, 111080, 5750}}, {"West", 9, {-82850, 480, 250}}};
    ASSERT_EQ(element.getLabels().size(), 3);
    ASSERT_EQ(vtkPropAssembly::SafeDownCast(element.getProp())->GetParts()->GetNumberOfItems(), 3);
    for (int i = 0; i < 3; ++i) {
        SCOPED_TRACE(rows[i].text);
        QUORLandmarkLabel& label = *element.getLabels()[i];
        EXPECT_EQ(label.GetText(), QLatin1String(rows[i].text));
        EXPECT_EQ(label.GetSize(), rows[i].size);
        EXPECT_EQ(label.GetColor(), (std::array<double, 3>{1.0, 0.5, 1.0}));
        EXPECT_TRUE(label.GetVisibility());
        for (std::size_t axis = 0; axis < 3; ++axis) {
            EXPECT_NEAR(label.GetWorldPosition()[axis], rows[i].position[axis], 100.0);
        }
        EXPECT_NEAR(label.GetWorldPosition()[2], rows[i].position[2], 1e-6);
    }
}

TEST_F(QUORGeoLabelsElementTest, MovesLabelsAndFollowsItsRecord) {
    const QUORLandmark::Ptr town = landmark("Town", 42.5, 1.5, 50.0, 1);
    const QUORLandmarkSet::CPtr set = makeSet({town});
    updateWith(set, 1.0);
    const vtkSmartPointer<QUORLandmarkLabel> label = element.getLabels().at(0);
    const vtkSmartPointer<vtkProp> prop = element.getProp();
    updateWith(set, 3.0);
    updateWith(makeSet({town}), 4.0); // the next image of the same area
    EXPECT_EQ(element.getLabels().at(0), label);
    EXPECT_EQ(element.getProp(), prop);
    EXPECT_DOUBLE_EQ(label->GetWorldPosition()[2], 800.0);
    EXPECT_EQ(log.count(QStringLiteral("Create landmark labels:")), 1);
    EXPECT_EQ(log.count(QStringLiteral("Update landmark labels:")), 2);

    updateWith(makeSet({landmark("Other", 41.0, 1.0, 0.0, 0), town}), 4.0);
    ASSERT_EQ(element.getLabels().size(), 2);
    EXPECT_EQ(element.getLabels().at(0)->GetText(), QStringLiteral("Other"));
    updateWith(makeSet({}), 4.0);
    ASSERT_NE(element.getProp(), nullptr);
    EXPECT_EQ(vtkPropAssembly::SafeDownCast(element.getProp())->GetParts()->GetNumberOfItems(), 0);
    element.invalidate();
    EXPECT_EQ(element.getProp(), nullptr);
    updateWith(set, 4.0);
    EXPECT_EQ(element.getLabels().size(), 1);
}

/// From 1,000 km above, looking down on 268 km to each side of the middle.
class QUORLandmarkLabelTest : public OffscreenScene {
protected:
    void SetUp() override {
        OffscreenScene::SetUp();
        vtkCamera* camera = renderer->GetActiveCamera();
        camera->SetPosition(0, 0, 1000000);
        camera->SetFocalPoint(0, 0, 0);
        camera->SetViewUp(0, 1, 0);
        camera->SetClippingRange(100, 4000000);
        label->SetText(QStringLiteral("Test"));
        label->SetColor(1.0, 0.0, 0.0);
        label->SetSize(11);
        renderer->AddViewProp(label);
    }

    /// How many pixels of a part of the picture are of the label's colour, more or less.
    int redPixels(int x0, int y0, int x1, int y1) {
        vtkNew<vtkUnsignedCharArray> rgb;
        window->GetPixelData(x0, y0, x1, y1, 0, rgb.Get(), 0);
        int count = 0;
        for (vtkIdType i = 0; i < rgb->GetNumberOfValues(); i += 3) {
            count += rgb->GetValue(i) > 100 ? 1 : 0;
        }
        return count;
    }

    static constexpr int MIDDLE = SIDE / 2;
    vtkNew<QUORLandmarkLabel> label;
};

TEST_F(QUORLandmarkLabelTest, DrawsASphereAndTheNameAboveIt) {
    const struct {
        int size;
        double scale;
        int leastHeight; ///< pixels of the text
    } rows[] = {{11, 3.2, 11}, {6, 2.2, 7}};
    for (const auto& row : rows) {
        label->SetSize(row.size);
        window->Render();
        EXPECT_DOUBLE_EQ(label->GetMarker()->GetScale()[0], row.scale);
        EXPECT_EQ(pixel(MIDDLE, MIDDLE), (std::array<int, 3>{255, 0, 0}));
        double box[4];
        label->GetTextActor()->GetBoundingBox(renderer, box);
        EXPECT_GE(box[3] - box[2], row.leastHeight);
        EXPECT_GT(redPixels(MIDDLE - 30, MIDDLE + 6, MIDDLE + 30, MIDDLE + 40), row.size > 6 ? 40 : 10);
        EXPECT_EQ(redPixels(MIDDLE - 60, MIDDLE - 60, MIDDLE + 60, MIDDLE - 5), 0);
    }
}

TEST_F(QUORLandmarkLabelTest, LeavesOutWhatTheCameraDoesNotSee) {
    const struct {
        const char* name;
        double x, y, z;
        bool drawn;
    } rows[] = {{"in view", 10000, 10000, 0, true},
                {"behind the camera", 0, 0, 2000000, false},
                {"behind and aside", 90000, 0, 1500000, false},
                {"beside the view", 600000, 0, 0, false},
                {"endlessly high", 0, 0, 1e300, false},
                {"not a number", 0, 0, std::nan(""), false}};
    for (const auto& row : rows) {
        label->SetWorldPosition(row.x, row.y, row.z);
        window->Render();
        EXPECT_EQ(redPixels(0, 0, SIDE - 1, SIDE - 1) > 0, row.drawn) << row.name;
    }
    EXPECT_EQ(label->GetBounds(), nullptr);
}

TEST_F(QUORLandmarkLabelTest, DrawsNamesOutsideAscii) {
    const auto draw = [&](const QString& text) {
        label->SetText(text);
        window->Render();
        return redPixels(MIDDLE - 100, MIDDLE + 6, MIDDLE + 100, MIDDLE + 60);
    };
    const int plain = draw(QStringLiteral("Asvik"));
    EXPECT_GT(draw(QString::fromUtf8("Åsvik")), plain);
    EXPECT_GT(draw(QString::fromUtf8("Hohenbrück")), draw(QStringLiteral("Hohenbrck")) + 10);
}
