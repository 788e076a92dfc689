// SPDX-License-Identifier: MIT
#include "QUOREglRenderWindow.h"
#include "QUORRenderWindowFactory.h"
#include "RenderFixture.h"

#include <vtkActor.h>
#include <vtkCamera.h>
#include <vtkNew.h>
#include <vtkOpenGLRenderWindow.h>
#include <vtkPolyDataMapper.h>
#include <vtkPropCollection.h>
#include <vtkProperty.h>
#include <vtkRenderer.h>
#include <vtkSphereSource.h>
#include <vtkUnsignedCharArray.h>

#include <gtest/gtest.h>

#include <array>

namespace {

using Colour = std::array<int, 3>;

Colour pixel(vtkRenderWindow* window, int x, int y) {
    vtkNew<vtkUnsignedCharArray> data;
    window->GetPixelData(x, y, x, y, 0, data);
    return {data->GetValue(0), data->GetValue(1), data->GetValue(2)};
}

/// A flat-coloured sphere in the middle of a coloured background.
vtkSmartPointer<vtkRenderer> sphereScene() {
    vtkNew<vtkSphereSource> sphere;
    vtkNew<vtkPolyDataMapper> mapper;
    mapper->SetInputConnection(sphere->GetOutputPort());
    vtkNew<vtkActor> actor;
    actor->SetMapper(mapper);
    actor->GetProperty()->SetColor(1.0, 0.0, 0.0);
    actor->GetProperty()->LightingOff();
    auto renderer = vtkSmartPointer<vtkRenderer>::New();
    renderer->AddActor(actor);
    renderer->SetBackground(0.0, 0.2, 0.4);
    renderer->ResetCamera();
    return renderer;
}

constexpr Colour RED{255, 0, 0};
constexpr Colour BACKGROUND{0, 51, 102};

class QUOREglRenderWindowTest : public testing::Test {
protected:
    void SetUp() override {
        QString error;
        _window = QUORRenderWindowFactory::create(error);
        if (_window == nullptr) {
            GTEST_SKIP() << "no OpenGL here: " << qPrintable(error);
        }
    }

    vtkSmartPointer<vtkOpenGLRenderWindow> _window;
};

} // namespace

TEST_F(QUOREglRenderWindowTest, DrawsResizesAndDrawsAgainAfterItsEnd) {
    const vtkSmartPointer<vtkRenderer> renderer = sphereScene();
    _window->AddRenderer(renderer);
    for (const auto& [width, height] : {std::pair{300, 200}, std::pair{64, 512}, std::pair{1600, 1200}}) {
        _window->SetSize(width, height);
        _window->Render();
        EXPECT_EQ(pixel(_window, width / 2, height / 2), RED) << width;
        EXPECT_EQ(pixel(_window, 1, 1), BACKGROUND) << width;
    }
    _window->Finalize();
    _window->Render();
    EXPECT_EQ(pixel(_window, 800, 600), RED);
}

TEST_F(QUOREglRenderWindowTest, TwoWindowsLiveAndEndApart) {
    const vtkSmartPointer<vtkRenderer> renderer = sphereScene();
    _window->SetSize(50, 50);
    _window->AddRenderer(renderer);
    _window->Render();
    {
        QString error;
        const vtkSmartPointer<vtkOpenGLRenderWindow> other = QUORRenderWindowFactory::create(error);
        ASSERT_NE(other, nullptr) << qPrintable(error);
        const vtkSmartPointer<vtkRenderer> otherRenderer = sphereScene();
        other->AddRenderer(otherRenderer);
        other->SetSize(20, 20);
        other->Render();
        EXPECT_EQ(pixel(other, 10, 10), RED);
        EXPECT_FALSE(_window->IsCurrent());
    }
    renderer->SetBackground(1.0, 1.0, 1.0);
    _window->Render();
    EXPECT_EQ(pixel(_window, 1, 1), (Colour{255, 255, 255}));
    EXPECT_EQ(pixel(_window, 25, 25), RED);
}

TEST_F(QUOREglRenderWindowTest, EqualDepthIsDrawnOverAndBlended) {
    vtkSmartPointer<vtkRenderer> renderer = sphereScene();
    vtkNew<vtkActor> veil;
    auto* sphere = vtkActor::SafeDownCast(renderer->GetViewProps()->GetItemAsObject(0));
    veil->SetMapper(sphere->GetMapper());
    veil->GetProperty()->SetColor(0.0, 0.0, 1.0);
    veil->GetProperty()->SetOpacity(0.5);
    veil->GetProperty()->LightingOff();
    renderer->AddActor(veil);
    _window->AddRenderer(renderer);
    _window->SetSize(100, 100);
    _window->Render();
    const Colour mixed = pixel(_window, 50, 50);
    EXPECT_NEAR(mixed[0], 128, 2);
    EXPECT_NEAR(mixed[2], 128, 2);
}

TEST_F(QUOREglRenderWindowTest, DescribesItselfInOneLine) {
    const QString text = QUORRenderWindowFactory::describe(_window);
    EXPECT_TRUE(text.startsWith(QStringLiteral("OpenGL vendor string:"))) << qPrintable(text);
    EXPECT_TRUE(text.contains(QStringLiteral("OpenGL version string:")));
    EXPECT_FALSE(text.contains(QLatin1Char('\n')));
    EXPECT_LT(text.size(), 400);
    if (text.contains(QStringLiteral("llvmpipe"))) {
        EXPECT_FALSE(QUORRenderWindowFactory::isHardware(_window));
    }
}

TEST_F(QUOREglRenderWindowTest, NeedsNoEnvironment) {
    EXPECT_TRUE(passesAlone("QUOREglRenderWindowTest.DrawsResizes*", {}));
}

// Run by the next test in a process whose driver gives no context.
TEST(QUORNoOpenGLTest, DISABLED_SaysSoAndLives) {
    QString error;
    EXPECT_EQ(QUORRenderWindowFactory::create(error), nullptr);
    EXPECT_TRUE(error.contains(QStringLiteral("EGL"))) << qPrintable(error);
    vtkNew<QUOREglRenderWindow> window;
    window->GlobalWarningDisplayOff();
    const vtkSmartPointer<vtkRenderer> renderer = sphereScene();
    window->AddRenderer(renderer);
    window->Render();
    EXPECT_FALSE(window->SupportsOpenGL());
    EXPECT_FALSE(window->IsDirect());
}

TEST(QUORNoOpenGLTest, WithoutADriverNothingDies) {
    for (const QString& noDriver : {QStringLiteral("__EGL_VENDOR_LIBRARY_FILENAMES=/nonexistent"),
                                    QStringLiteral("MESA_GL_VERSION_OVERRIDE=2.1")}) {
        EXPECT_TRUE(passesAlone("QUORNoOpenGL*.DISABLED_*", {noDriver, QStringLiteral("DISPLAY=:4711")}))
            << qPrintable(noDriver);
    }
}
