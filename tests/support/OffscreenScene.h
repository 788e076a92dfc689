// SPDX-License-Identifier: MIT
#pragma once

#include "QUORRenderWindowFactory.h"

#include <gtest/gtest.h>

#include <vtkCallbackCommand.h>
#include <vtkCamera.h>
#include <vtkGenericRenderWindowInteractor.h>
#include <vtkNew.h>
#include <vtkOpenGLRenderWindow.h>
#include <vtkRenderer.h>
#include <vtkSmartPointer.h>
#include <vtkUnsignedCharArray.h>

#include <array>

/// Adds one to the count at each such event of the object, which must not outlive the count.
inline void countEvents(vtkObject* object, unsigned long event, int& count) {
    vtkNew<vtkCallbackCommand> counter;
    counter->SetClientData(&count);
    counter->SetCallback([](vtkObject*, unsigned long, void* data, void*) { ++*static_cast<int*>(data); });
    object->AddObserver(event, counter);
}

/// A window that draws without a display, with one renderer and an interactor that synthetic events drive.
class OffscreenScene : public ::testing::Test {
protected:
    static constexpr int SIDE = 400;

    void SetUp() override {
        QString error;
        window = QUORRenderWindowFactory::create(error);
        if (!window) {
            GTEST_SKIP() << "cannot draw here: " << error.toStdString();
        }
        window->SetSize(SIDE, SIDE);
        window->AddRenderer(renderer);
        interactor->SetRenderWindow(window);
        interactor->SetInteractorStyle(nullptr);
        interactor->EnableRenderOff();
        interactor->Initialize();
        interactor->EnableRenderOn();
    }

    void TearDown() override {
        if (!window) {
            return;
        }
        interactor->SetRenderWindow(nullptr);
        renderer->RemoveAllViewProps();
        window->RemoveRenderer(renderer);
        window->Finalize();
    }

    /// From above, north up and in parallel: so much of the world to each side of the point.
    void lookDown(double range, double x = 0.0, double y = 0.0) {
        vtkCamera* camera = renderer->GetActiveCamera();
        camera->ParallelProjectionOn();
        camera->SetParallelScale(range);
        camera->SetPosition(x, y, 2.0 * range);
        camera->SetFocalPoint(x, y, 0.0);
        camera->SetViewUp(0.0, 1.0, 0.0);
        camera->SetClippingRange(0.1 * range, 10.0 * range);
    }

    void send(unsigned long event, int x, int y) {
        interactor->SetEventInformation(x, y);
        interactor->InvokeEvent(event);
    }

    void drag(std::array<int, 2> from, std::array<int, 2> to) {
        send(vtkCommand::MouseMoveEvent, from[0], from[1]);
        send(vtkCommand::LeftButtonPressEvent, from[0], from[1]);
        send(vtkCommand::MouseMoveEvent, to[0], to[1]);
        send(vtkCommand::LeftButtonReleaseEvent, to[0], to[1]);
    }

    static std::array<int, 3> pixel(vtkRenderWindow* of, int x, int y) {
        vtkNew<vtkUnsignedCharArray> rgb;
        of->GetPixelData(x, y, x, y, 0, rgb.Get(), 0);
        return {rgb->GetValue(0), rgb->GetValue(1), rgb->GetValue(2)};
    }
    std::array<int, 3> pixel(int x, int y) { return pixel(window, x, y); }

    vtkSmartPointer<vtkOpenGLRenderWindow> window;
    vtkNew<vtkRenderer> renderer;
    vtkNew<vtkGenericRenderWindowInteractor> interactor;
};
