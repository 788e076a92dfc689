// SPDX-License-Identifier: MIT
#include "QUORPointWidget.h"

#include "OffscreenScene.h"
#include "QUORPointWidgetObserver.h"
#include "ScratchHome.h"

#include <vtkActor.h>
#include <vtkCaptionActor2D.h>
#include <vtkPropAssembly.h>
#include <vtkPropCollection.h>

#include <vector>

namespace {

class Recorder : public QUORPointWidgetObserver {
public:
    void pointMoved(QUORPointWidget* /*widget*/, const QUORPoint3D& point) override {
        points.push_back(point);
    }
    std::vector<QUORPoint3D> points;
};

} // namespace

/// The volume is seen from above in parallel, with the cross-hair in the window's middle.
class QUORPointWidgetTest : public OffscreenScene {
protected:
    void SetUp() override {
        OffscreenScene::SetUp();
        if (IsSkipped()) {
            return;
        }
        lookDown(20000.0);
        widget->SetInteractor(interactor);
        widget->SetCurrentRenderer(renderer);
    }

    void TearDown() override {
        widget->SetEnabled(0);
        widget->SetInteractor(nullptr);
        OffscreenScene::TearDown();
    }

    template <class Part>
    Part* part(int index) {
        vtkPropCollection* parts = widget->getParts()->GetParts();
        return Part::SafeDownCast(parts->GetItemAsObject(index));
    }
    vtkActor* pointMarker() { return part<vtkActor>(1); }

    ScratchHome home;
    Recorder recorder;
    vtkNew<QUORPointWidget> widget;
};

TEST_F(QUORPointWidgetTest, OnlyTheLeftButtonDragsThePoint) {
    widget->init(&recorder);
    const double bounds[6] = {-10000, 10000, -10000, 10000, 0, 10000};
    widget->setBounds(bounds);
    widget->SetPosition(0.0, 0.0, 5000.0);
    widget->setHomePosition({3000, 4000, 500});
    widget->setVerticalScale(5.0);
    widget->setHomeLabel(QStringLiteral("KLOT"));
    widget->SetEnabled(1);
    window->Render();
    for (const int press : {vtkCommand::MiddleButtonPressEvent, vtkCommand::RightButtonPressEvent}) {
        send(static_cast<unsigned long>(press), SIDE / 2, SIDE / 2);
        send(vtkCommand::MouseMoveEvent, SIDE / 2 + 40, SIDE / 2 + 40);
        EXPECT_DOUBLE_EQ(widget->GetPosition()[0], 0.0);
    }
    drag({SIDE / 2, SIDE / 2}, {SIDE / 2 + 50, SIDE / 2});
    EXPECT_EQ(pointMarker()->GetPosition()[0], widget->getPoint().x);
    EXPECT_STREQ(part<vtkCaptionActor2D>(3)->GetCaption(), "Home: KLOT");
    EXPECT_DOUBLE_EQ(part<vtkActor>(2)->GetPosition()[2], 2500.0);
    ASSERT_EQ(recorder.points.size(), 1U);
    EXPECT_NEAR(recorder.points[0].x, 5000.0, 200.0);
}

TEST_F(QUORPointWidgetTest, NewBoundsKeepTheRelativeHeight) {
    const struct {
        const char* name;
        std::array<double, 6> bounds;
        QUORPoint3D expected;
    } rows[] = {
        {"twice as high", {-10000, 10000, -10000, 10000, 0, 20000}, {1000, 2000, 5000}},
        {"flat", {-9000, 9000, -9000, 9000, 7, 7}, {1000, 2000, 7}},
        {"all zero", {0, 0, 0, 0, 0, 0}, {0, 0, 0}},
    };
    widget->init(nullptr);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const double start[6] = {-10000, 10000, -10000, 10000, 0, 10000};
        widget->setBounds(start);
        widget->SetPosition(1000, 2000, 2500);
        widget->setBounds(row.bounds.data());
        const double* focus = widget->GetPosition();
        EXPECT_EQ((QUORPoint3D{focus[0], focus[1], focus[2]}), row.expected);
        EXPECT_EQ(widget->getPoint(), row.expected);
        EXPECT_DOUBLE_EQ(pointMarker()->GetPosition()[2], row.expected.z);
    }
}
