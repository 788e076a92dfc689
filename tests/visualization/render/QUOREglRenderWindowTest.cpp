// SPDX-License-Identifier: MIT
#include "QUOREglRenderWindow.h"

#include "OffscreenScene.h"
#include "RenderChecks.h"

#include <vtkActor.h>
#include <vtkPolyDataMapper.h>
#include <vtkPropCollection.h>
#include <vtkProperty.h>
#include <vtkSphereSource.h>

namespace {

using Colour = std::array<int, 3>;

/// Shows a flat-coloured sphere in the middle of a coloured background.
void showSphere(vtkRenderer* renderer) {
    vtkNew<vtkSphereSource> sphere;
    vtkNew<vtkPolyDataMapper> mapper;
    mapper->SetInputConnection(sphere->GetOutputPort());
    vtkNew<vtkActor> actor;
    actor->SetMapper(mapper);
    actor->GetProperty()->SetColor(1.0, 0.0, 0.0);
    actor->GetProperty()->LightingOff();
    renderer->AddActor(actor);
    renderer->SetBackground(0.0, 0.2, 0.4);
    renderer->ResetCamera();
}

constexpr Colour RED{255, 0, 0};
constexpr Colour BACKGROUND{0, 51, 102};

class QUOREglRenderWindowTest : public OffscreenScene {
protected:
    QUOREglRenderWindowTest() { showSphere(renderer); }
};

} // namespace

TEST_F(QUOREglRenderWindowTest, DrawsResizesAndDrawsAgainAfterItsEnd) {
    for (const auto& [width, height] : {std::pair{300, 200}, std::pair{64, 512}, std::pair{1600, 1200}}) {
        window->SetSize(width, height);
        window->Render();
        EXPECT_EQ(pixel(width / 2, height / 2), RED) << width;
        EXPECT_EQ(pixel(1, 1), BACKGROUND) << width;
    }
    window->Finalize();
    window->Render();
    EXPECT_EQ(pixel(800, 600), RED);
}

TEST_F(QUOREglRenderWindowTest, TwoWindowsLiveAndEndApart) {
    window->SetSize(50, 50);
    window->Render();
    {
        QString error;
        const vtkSmartPointer<vtkOpenGLRenderWindow> other = QUORRenderWindowFactory::create(error);
        ASSERT_NE(other, nullptr) << qPrintable(error);
        const vtkNew<vtkRenderer> otherRenderer;
        showSphere(otherRenderer);
        other->AddRenderer(otherRenderer);
        other->SetSize(20, 20);
        other->Render();
        EXPECT_EQ(pixel(other, 10, 10), RED);
        EXPECT_FALSE(window->IsCurrent());
    }
    renderer->SetBackground(1.0, 1.0, 1.0);
    window->Render();
    EXPECT_EQ(pixel(1, 1), (Colour{255, 255, 255}));
    EXPECT_EQ(pixel(25, 25), RED);
}

TEST_F(QUOREglRenderWindowTest, EqualDepthIsDrawnOverAndBlended) {
    vtkNew<vtkActor> veil;
    auto* sphere = vtkActor::SafeDownCast(renderer->GetViewProps()->GetItemAsObject(0));
    veil->SetMapper(sphere->GetMapper());
    veil->GetProperty()->SetColor(0.0, 0.0, 1.0);
    veil->GetProperty()->SetOpacity(0.5);
    veil->GetProperty()->LightingOff();
    renderer->AddActor(veil);
    window->SetSize(100, 100);
    window->Render();
    const Colour mixed = pixel(50, 50);
    EXPECT_NEAR(mixed[0], 128, 2);
    EXPECT_NEAR(mixed[2], 128, 2);
}

TEST_F(QUOREglRenderWindowTest, DescribesItselfInOneLine) {
    const QString text = QUORRenderWindowFactory::describe(window);
    EXPECT_TRUE(text.startsWith(QStringLiteral("OpenGL vendor string:"))) << qPrintable(text);
    EXPECT_TRUE(text.contains(QStringLiteral("OpenGL version string:")));
    EXPECT_FALSE(text.contains(QLatin1Char('\n')));
    EXPECT_LT(text.size(), 400);
    if (text.contains(QStringLiteral("llvmpipe"))) {
        EXPECT_FALSE(QUORRenderWindowFactory::isHardware(window));
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
    const vtkNew<vtkRenderer> renderer;
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
