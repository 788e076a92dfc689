// SPDX-License-Identifier: MIT
#include "QUORCameraInteractor.h"

#include "OffscreenScene.h"
#include "QUORCameraInteractorCallback.h"
#include "QUORCameraInteractorObserver.h"

#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace {

using Step = std::function<void(QUORCameraInteractor&)>;
constexpr double PI = 3.14159265358979;

void expectNear(const QUORPoint3D& actual, const QUORPoint3D& expected, double tolerance,
                const std::string& what) {
    EXPECT_NEAR(actual.x, expected.x, tolerance) << what;
    EXPECT_NEAR(actual.y, expected.y, tolerance) << what;
    EXPECT_NEAR(actual.z, expected.z, tolerance) << what;
}

/// From the south, 45 degrees down at the origin: 70711 away, maximum 1000000.
void lookFromSouth(QUORCameraInteractor& camera) {
    camera.resetCamera({0.0, -50000.0, 50000.0}, {0.0, 1.0, -1.0}, 1000000.0, 0.0);
}

Step pan(double dx, double dy) {
    return [=](auto& c) { c.panCamera(dx, dy); };
}

Step turn(double dHeading, double dPitch) {
    return [=](auto& c) { c.rotateCameraView(dHeading, dPitch); };
}

Step orbit(double dHeading, double dPitch) {
    return [=](auto& c) { c.rotateCameraTarget(dHeading, dPitch); };
}

/// By a share of the distance to the target.
Step approach(double share) {
    return [=](auto& c) { c.zoomCamera(share * c.getTargetDistance() / c.getMaxDistance()); };
}

Step zoom(double f) {
    return [=](auto& c) { c.zoomCamera(f); };
}

Step place(double heading, double pitch, double distance) {
    return [=](auto& c) { c.setCameraByHPD(heading, pitch, distance); };
}

Step view(const QUORPoint3D& position, const QUORPoint3D& direction) {
    return [=](auto& c) { c.setView(position, direction); };
}

Step reset(const QUORPoint3D& position, const QUORPoint3D& direction) {
    return [=](auto& c) { c.resetCamera(position, direction, 0.0, 0.0); };
}

class Recorder : public QUORCameraInteractorObserver {
public:
    void cameraMoved(QUORCameraInteractor* camera) override { calls += camera != nullptr ? "m" : "(m)"; }
    void cameraReset(QUORCameraInteractor* camera) override { calls += camera != nullptr ? "r" : "(r)"; }

    std::string calls;
};

TEST(QUORCameraInteractorTest, StartsHighAboveTheOrigin) {
    const vtkNew<QUORCameraInteractor> camera;
    expectNear(camera->getPosition(), {0.0, 0.0, 2000000.0}, 1e-9, "position");
    EXPECT_DOUBLE_EQ(camera->getHeading(), 0.0);
    EXPECT_NEAR(camera->getPitch(), PI / 2.0 - 0.000001, 1e-9);
    expectNear(camera->getTarget(), {0.0, 2.0, 0.0}, 1e-3, "target");
    EXPECT_DOUBLE_EQ(camera->getMaxDistance(), 4000000.0);
    EXPECT_DOUBLE_EQ(camera->getMaxTargetDistance(), 1200000.0);
}

namespace {

struct Movement {
    const char* name;
    Step step;
    QUORPoint3D position;
    double heading;
    double pitch;
};

void expectMovements(const Step& start, const std::vector<Movement>& rows) {
    for (const Movement& row : rows) {
        vtkNew<QUORCameraInteractor> camera;
        start(*camera);
        row.step(*camera);
        expectNear(camera->getPosition(), row.position, 0.01, row.name);
        EXPECT_NEAR(camera->getHeading(), row.heading, 1e-6) << row.name;
        EXPECT_NEAR(camera->getPitch(), row.pitch, 3e-6) << row.name;
        const QUORPoint3D& d = camera->getDirection();
        EXPECT_NEAR(std::hypot(d.x, d.y, d.z), 1.0, 1e-12) << row.name;
    }
}

} // namespace

TEST(QUORCameraInteractorTest, Movements) {
    const double k = 0.001 * std::sqrt(2.0) * 50000.0;
    const double limit = 1.5690509957500003;
    const double root3 = std::sqrt(3.0);
    const QUORPoint3D south{0.0, -50000.0, 50000.0};
    const QUORPoint3D west{-50000.0, 0.0, 50000.0};
    expectMovements(
        lookFromSouth,
        {
            {"pan", pan(10, 100), {10.0 * k, -50000.0 + 100.0 * k, 50000.0}, 0.0, PI / 4},
            {"turn", turn(0.5, -0.25), south, 0.5, PI / 4 - 0.25},
            {"turn past straight down", turn(0.0, 2.0), south, 0.0, limit},
            {"orbit round", orbit(PI / 2, 0.0), west, PI / 2, PI / 4},
            {"orbit down", orbit(0.0, PI / 12), {0.0, -k * 500.0, k * 500.0 * root3}, 0.0, PI / 3},
            {"orbit over the top", orbit(PI / 2, 1.0), west, PI / 2, PI / 4},
            {"orbit under the ground", orbit(0.0, -0.9), south, 0.0, PI / 4},
            {"orbit below the floor", orbit(0.0, 0.02 - PI / 4), south, 0.0, PI / 4},
            {"place", place(-PI / 2, PI / 6, 40000.0), {20000.0 * root3, 0.0, 20000.0}, -PI / 2, PI / 6},
            {"floor", view({10.0, 0.0, -70.0}, {1.0, 0.0, -1.0}), {10.0, 0.0, 2000.0}, PI / 2, PI / 4},
            {"to the origin",
             [](auto& c) { c.panCamera(0.0, 500.0), c.targetToOrigo(); },
             {0.0, -500.0 * (100.0 - k), 50000.0},
             0.0,
             std::atan(50000.0 / (50000.0 - 500.0 * k))},
            {"outer limit", view({3e6, 0.0, 4e6}, {-1.0, 0.0, -1.0}), {6e5, 0.0, 8e5}, -PI / 2, PI / 4},
            {"straight down leans north",
             reset({0.0, 0.0, 9000.0}, {0.0, 0.0, -1.0}),
             {0.0, 0.0, 9000.0},
             0.0,
             PI / 2},
            {"straight down leans out",
             reset({-5.0, 0.0, 9000.0}, {0.0, 0.0, -1.0}),
             {-5.0, 0.0, 9000.0},
             -PI / 2,
             PI / 2},
        });
}

TEST(QUORCameraInteractorTest, ZoomStopsTwoKilometresFromTheTarget) {
    expectMovements(
        [](auto& c) {
            c.resetCamera({0.0, 0.0, 5000.0}, {0.0, 0.000001, -1.0}, 100000.0, 0.0);
        },
        {{"zoom to 1999", zoom(0.03001), {0.0, 0.0, 5000.0}, 0.0, PI / 2},
         {"zoom to 2001", zoom(0.02999), {0.0, 0.0, 2001.0}, 0.0, PI / 2}});
}

TEST(QUORCameraInteractorTest, TargetsAndTheirLimits) {
    struct Row {
        const char* name;
        QUORPoint3D direction;
        QUORPoint3D target;
        bool legal;
    };
    const std::vector<Row> rows{
        {"on the ground", {0.0, 1.0, -1.0}, {0.0, 0.0, 0.0}, true},
        {"beyond the legal distance", {0.0, 1.0, -0.1}, {0.0, 450000.0, 0.0}, false},
        {"pulled inside", {0.0, 1.0, -0.001}, {0.0, 1000000.0, 0.0}, false},
        {"behind", {0.0, 1.0, 1.0}, {0.0, -100000.0, 0.0}, false},
        {"level keeps the last", {0.0, 1.0, 0.0}, {0.0, 0.0, 0.0}, false},
    };
    for (const Row& row : rows) {
        vtkNew<QUORCameraInteractor> camera;
        lookFromSouth(*camera);
        camera->setView(camera->getPosition(), row.direction);
        expectNear(camera->getTarget(), row.target, 0.01, row.name);
        EXPECT_EQ(camera->isTargetLegal(), row.legal) << row.name;
        const double distance = std::hypot(row.target.y + 50000.0, 50000.0);
        EXPECT_NEAR(camera->getTargetDistance(), distance, 0.01) << row.name;
    }
}

TEST(QUORCameraInteractorTest, ApplyWritesTheCameraAndTellsObservers) {
    vtkNew<vtkRenderer> renderer;
    vtkNew<QUORCameraInteractor> camera;
    camera->SetCurrentRenderer(renderer);
    Recorder recorder;
    vtkNew<QUORCameraInteractorCallback> callback;
    camera->AddObserver(vtkCommand::UserEvent, callback);
    camera->applyCamera(false);
    EXPECT_EQ(recorder.calls, "");
    callback->setObserver(&recorder);

    lookFromSouth(*camera);
    camera->applyCamera(false);
    camera->applyCamera(false);
    lookFromSouth(*camera);
    camera->applyCamera(true);
    camera->applyCamera(false);
    EXPECT_EQ(recorder.calls, "rmm");

    vtkCamera* applied = renderer->GetActiveCamera();
    EXPECT_DOUBLE_EQ(applied->GetPosition()[1], -50000.0);
    EXPECT_NEAR(applied->GetFocalPoint()[2], 0.0, 1e-6);
    EXPECT_NEAR(applied->GetViewUp()[2], std::sqrt(0.5), 1e-9);
    EXPECT_DOUBLE_EQ(applied->GetClippingRange()[0], 100.0);
    EXPECT_DOUBLE_EQ(applied->GetClippingRange()[1], 2000000.0);

    int change = QUORCameraInteractor::Reset;
    callback->Execute(renderer, vtkCommand::UserEvent, &change);
    change = 2;
    callback->Execute(camera, vtkCommand::UserEvent, &change);
    callback->Execute(camera, vtkCommand::UserEvent, nullptr);
    EXPECT_EQ(recorder.calls, "rmm(r)");
}

/// Two equal cameras: one driven by events on a window, one by program.
class QUORCameraInputTest : public OffscreenScene {
protected:
    void SetUp() override {
        OffscreenScene::SetUp();
        interactor->EnableRenderOff();
        camera->SetDefaultRenderer(renderer);
        camera->SetCurrentRenderer(renderer);
        interactor->SetInteractorStyle(camera);
        countEvents(interactor, vtkCommand::RenderEvent, renders);
    }

    /// With the control or the shift key held, when that is asked for.
    std::function<void()> dragging(unsigned long press, bool control = false, bool shift = false) {
        return [=, this] {
            interactor->SetEventInformation(200, 150, control, shift);
            interactor->InvokeEvent(press);
            interactor->SetEventInformation(230, 130, control, shift);
            interactor->InvokeEvent(vtkCommand::MouseMoveEvent);
            interactor->InvokeEvent(press + 1); // the release
            interactor->SetEventInformation(10, 10, 0, 0);
            interactor->InvokeEvent(vtkCommand::MouseMoveEvent);
        };
    }
    std::function<void()> key(const char* name, char code, bool control = false, bool shift = false) {
        return [=, this] {
            interactor->SetEventInformation(0, 0, control, shift, code, 0, name);
            interactor->InvokeEvent(vtkCommand::KeyPressEvent);
            interactor->InvokeEvent(vtkCommand::CharEvent);
        };
    }
    std::function<void()> event(unsigned long id) {
        return [=, this] { interactor->InvokeEvent(id); };
    }

    vtkNew<QUORCameraInteractor> camera;
    vtkNew<QUORCameraInteractor> model;
    int renders = 0;
};

TEST_F(QUORCameraInputTest, EventsMoveTheCamera) {
    constexpr auto LEFT = vtkCommand::LeftButtonPressEvent;
    const Step away = [](auto& c) {
        lookFromSouth(c);
        c.setView(c.getPosition(), {0.0, 1.0, 0.2});
    };
    const Step aside = [](auto& c) {
        lookFromSouth(c);
        c.panCamera(50.0, 20.0);
    };
    const struct {
        const char* name;
        Step start;
        std::function<void()> input;
        Step expected;
        bool draws = true;
    } rows[] = {
        {"left", lookFromSouth, dragging(LEFT), orbit(0.06, -0.04)},
        {"left, no target", away, dragging(LEFT), turn(-0.06, -0.04)},
        {"control and left", lookFromSouth, dragging(LEFT, true), turn(-0.06, -0.04)},
        {"shift and left", lookFromSouth, dragging(LEFT, false, true), pan(15.0, -10.0)},
        {"middle", lookFromSouth, dragging(vtkCommand::MiddleButtonPressEvent), zoom(0.1)},
        {"right", lookFromSouth, dragging(vtkCommand::RightButtonPressEvent), pan(15.0, -10.0)},
        {"wheel forward", lookFromSouth, event(vtkCommand::MouseWheelForwardEvent), approach(0.1)},
        {"wheel backward", lookFromSouth, event(vtkCommand::MouseWheelBackwardEvent), approach(-0.1)},
        {"arrow", aside, key("Left", 0), pan(-10.0, 0.0)},
        {"control and arrow", aside, key("Right", 0, true), turn(0.008, 0.0)},
        {"shift and arrow", aside, key("Up", 0, false, true), orbit(0.0, -0.008)},
        {"plus", aside, key("plus", '+'), zoom(0.01)},
        {"reset", aside, key("r", 'r'), lookFromSouth},
        {"to the origin", aside, key("t", 't'), [](auto& c) { c.targetToOrigo(); }},
        {"a key of the toolkit", aside, key("w", 'w'), [](auto&) {}, false},
    };
    for (const auto& row : rows) {
        row.start(*camera);
        row.start(*model);
        renders = 0;
        row.input();
        row.expected(*model);
        model->calculateVectors();
        expectNear(camera->getPosition(), model->getPosition(), 0.01, row.name);
        expectNear(camera->getDirection(), model->getDirection(), 1e-7, row.name);
        EXPECT_EQ(renders > 0, row.draws) << row.name;
        EXPECT_EQ(camera->GetState(), VTKIS_NONE) << row.name;
    }
}

} // namespace
