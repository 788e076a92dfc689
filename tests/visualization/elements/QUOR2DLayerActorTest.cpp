// SPDX-License-Identifier: MIT
#include "QUOR2DLayerActor.h"

#include "OffscreenScene.h"

#include <vtkActor.h>
#include <vtkPlaneSource.h>
#include <vtkPolyDataMapper.h>
#include <vtkPropAssembly.h>
#include <vtkProperty.h>

namespace {

using Rgb = std::array<int, 3>;

/// An unlit square of side 2 round the origin at height z.
vtkSmartPointer<vtkActor> makeSquare(const Rgb& color, double z) {
    vtkNew<vtkPlaneSource> plane;
    plane->SetOrigin(-1, -1, 0);
    plane->SetPoint1(1, -1, 0);
    plane->SetPoint2(-1, 1, 0);
    vtkNew<vtkPolyDataMapper> mapper;
    mapper->SetInputConnection(plane->GetOutputPort());
    auto actor = vtkSmartPointer<vtkActor>::New();
    actor->SetMapper(mapper);
    actor->SetPosition(0, 0, z);
    actor->GetProperty()->SetColor(color[0] / 255.0, color[1] / 255.0, color[2] / 255.0);
    actor->GetProperty()->LightingOff();
    return actor;
}

constexpr Rgb RED{255, 0, 0};
constexpr Rgb GREEN{0, 255, 0};
constexpr Rgb BLUE{0, 0, 255};
constexpr Rgb YELLOW{255, 255, 0};
constexpr Rgb BLACK{0, 0, 0};

} // namespace

/// Seen from above in parallel, 40 pixels a unit; the window's middle is the origin.
class QUOR2DLayerActorTest : public OffscreenScene {
protected:
    void SetUp() override {
        OffscreenScene::SetUp();
        lookDown(5.0);
    }

    Rgb colorAt(double x, double y) {
        return pixel(SIDE / 2 + static_cast<int>(x * 40), SIDE / 2 + static_cast<int>(y * 40));
    }

    vtkNew<QUOR2DLayerActor> layer;
};

TEST_F(QUOR2DLayerActorTest, IsNeverHiddenAndHidesNothingThatFollows) {
    const auto under = makeSquare(RED, 0.0);
    const auto over = makeSquare(GREEN, -1.0);
    over->SetPosition(1.0, 0.0, -1.0);
    layer->AddPart(under);
    layer->AddPart(over);
    renderer->AddViewProp(makeSquare(BLUE, 5.0));
    renderer->AddViewProp(layer);
    // With the depth test on again, the square in front hides this one; the layer left no depth of its own.
    renderer->AddViewProp(makeSquare(YELLOW, 4.0));
    const auto deep = makeSquare(YELLOW, -5.0);
    deep->SetPosition(2.0, 0.0, -5.0);
    renderer->AddViewProp(deep);
    window->Render();
    // Parts cover each other in the order they were added, whatever lies above them.
    EXPECT_EQ(colorAt(-0.5, 0.0), RED);
    EXPECT_EQ(colorAt(0.5, 0.0), GREEN);
    EXPECT_EQ(colorAt(1.5, 0.0), YELLOW);
}

TEST_F(QUOR2DLayerActorTest, ScaleAndPositionMoveTheParts) {
    const auto square = makeSquare(RED, 0.0);
    layer->AddPart(square);
    vtkNew<vtkPropAssembly> assembly;
    for (const bool nested : {false, true}) {
        SCOPED_TRACE(nested ? "under an assembly" : "in the renderer");
        renderer->RemoveAllViewProps();
        if (nested) {
            assembly->AddPart(layer);
            renderer->AddViewProp(assembly);
        } else {
            renderer->AddViewProp(layer);
        }
        layer->SetScale(1.0, 1.0, 1.0);
        layer->SetPosition(0.0, 0.0, 0.0);
        window->Render();
        EXPECT_EQ(colorAt(0.0, 0.0), RED);

        layer->SetScale(2.0, 0.5, 1.0);
        layer->SetPosition(2.0, 3.0, 0.0);
        window->Render();
        EXPECT_EQ(colorAt(0.0, 0.0), BLACK);
        EXPECT_EQ(colorAt(0.5, 3.0), RED);
        EXPECT_EQ(colorAt(3.5, 3.3), RED);
        EXPECT_EQ(colorAt(2.0, 3.7), BLACK);
        const std::array<double, 6> expected{0.0, 4.0, 2.5, 3.5, 0.0, 0.0};
        for (std::size_t i = 0; i < expected.size(); ++i) {
            EXPECT_DOUBLE_EQ(layer->GetBounds()[i], expected[i]);
        }
    }
}

TEST_F(QUOR2DLayerActorTest, KeepsItsPartsUnmodifiedBetweenImages) {
    const auto square = makeSquare(RED, 0.0);
    layer->AddPart(square);
    layer->SetPosition(1.0, 0.0, 0.0);
    renderer->AddViewProp(layer);
    window->Render();
    const vtkMTimeType before = square->GetMTime();
    window->Render();
    EXPECT_EQ(square->GetMTime(), before);
}
