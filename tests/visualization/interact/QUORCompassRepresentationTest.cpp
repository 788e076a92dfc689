// SPDX-License-Identifier: MIT
#include "QUORCompassRepresentation.h"

#include "OffscreenScene.h"
#include "QUORCameraInteractor.h"
#include "QUORCameraInteractorCallback.h"
#include "ScratchHome.h"

#include <vtkActor2D.h>
#include <vtkCompassWidget.h>
#include <vtkPropCollection.h>
#include <vtkProperty2D.h>
#include <vtkTextActor.h>

#include <cmath>
#include <numbers>

class QUORCompassRepresentationTest : public OffscreenScene {
protected:
    void SetUp() override {
        OffscreenScene::SetUp();
        if (IsSkipped()) {
            return;
        }
        camera->SetDefaultRenderer(renderer);
        camera->SetCurrentRenderer(renderer);
        compass->SetRenderer(renderer);
        widget->SetInteractor(interactor);
        widget->SetRepresentation(compass);
        widget->EnabledOn();
        renderer->AddViewProp(compass);
        vtkNew<QUORCameraInteractorCallback> follow;
        follow->setObserver(compass);
        camera->AddObserver(vtkCommand::UserEvent, follow);
        window->Render();
    }

    void TearDown() override {
        if (widget->GetInteractor()) {
            widget->EnabledOff();
            widget->SetInteractor(nullptr);
        }
        OffscreenScene::TearDown();
    }

    void look(const QUORPoint3D& position, const QUORPoint3D& direction) {
        camera->resetCamera(position, direction, 0.0, 0.0);
        camera->applyCamera(false);
        window->Render();
    }

    vtkTextActor* textOf(const QString& text) {
        vtkNew<vtkPropCollection> actors;
        compass->GetActors(actors);
        actors->InitTraversal();
        while (vtkProp* actor = actors->GetNextProp()) {
            auto* candidate = vtkTextActor::SafeDownCast(actor);
            if (candidate && text == QString::fromUtf8(candidate->GetInput())) {
                return candidate;
            }
        }
        return nullptr;
    }

    ScratchHome home;
    vtkNew<QUORCameraInteractor> camera;
    vtkNew<QUORCompassRepresentation> compass;
    vtkNew<vtkCompassWidget> widget;
};

TEST_F(QUORCompassRepresentationTest, FollowsTheCamera) {
    const struct {
        const char* name;
        QUORPoint3D position;
        QUORPoint3D direction;
        double heading;
        double tilt;
    } rows[] = {
        {"east", {0, 0, 50000}, {1, 0, -1}, 0.25, 45.0},
        {"north", {0, -90000, 50000}, {0, 1, -1}, 0.0, 45.0},
        {"west", {0, 0, 50000}, {-1, 0, -std::numbers::sqrt3}, 0.75, 60.0},
        {"upwards", {0, 0, 50000}, {0, 1, std::tan(0.1)}, 0.0, 0.0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        look(row.position, row.direction);
        EXPECT_NEAR(compass->GetHeading(), row.heading, 1e-6);
        EXPECT_NEAR(compass->GetTilt(), row.tilt, 1e-5);
        EXPECT_DOUBLE_EQ(compass->GetDistance(), camera->getTargetDistance());
    }
    compass->cameraReset(nullptr);
    EXPECT_NEAR(compass->GetHeading(), 0.0, 1e-6);
}

TEST_F(QUORCompassRepresentationTest, PointsToTrueNorth) {
    look({200000, -200000, 300000}, {-2, 2, -3});
    vtkTextActor* north = textOf(QStringLiteral("N"));
    ASSERT_TRUE(north);
    constexpr int CENTRE = 358; // of the ring, in both directions
    const double dx = north->GetPosition()[0] - CENTRE;
    const double dy = north->GetPosition()[1] - CENTRE;
    // Looking north-west, north lies 45 degrees to the right of the way ahead.
    EXPECT_GT(dx, 15.0);
    EXPECT_NEAR(dx, dy, 0.1);
}

TEST_F(QUORCompassRepresentationTest, TakesColoursFromTheStylesFile) {
    ScratchHome::writeSettings("QUOR3DVisStyles.conf",
                               "[COMPASS_NIGHT]\ncompass\\color\\r=0.5\ncompass\\color\\g=7\n"
                               "compass\\opacity\\nonhighlighted=0.25\ncompass\\opacity\\highlighted=0.75\n");
    compass->toggleDisplayMode(true);
    window->Render();
    EXPECT_FALSE(compass->isDay());
    vtkProperty2D* ring = compass->GetRingProperty();
    EXPECT_DOUBLE_EQ(ring->GetColor()[0], 0.5);
    EXPECT_DOUBLE_EQ(ring->GetColor()[1], 1.0);
    EXPECT_DOUBLE_EQ(ring->GetColor()[2], 0.3);
    EXPECT_DOUBLE_EQ(ring->GetOpacity(), 0.25);

    compass->Highlight(1);
    window->Render();
    EXPECT_DOUBLE_EQ(ring->GetOpacity(), 0.75);
    EXPECT_TRUE(textOf(QStringLiteral("Heading 0")));
}
