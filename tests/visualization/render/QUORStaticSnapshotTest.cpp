// SPDX-License-Identifier: MIT
#include "QUORStaticSnapshot.h"

#include "OffscreenScene.h"

#include <vtkActor.h>
#include <vtkAssembly.h>
#include <vtkConeSource.h>
#include <vtkLight.h>
#include <vtkPlaneSource.h>
#include <vtkPolyDataMapper.h>
#include <vtkPropAssembly.h>
#include <vtkProperty.h>

#include <functional>
#include <memory>
#include <vector>

namespace {

vtkSmartPointer<vtkActor> actor(vtkAlgorithm* source, double r, double g, double b) {
    vtkNew<vtkPolyDataMapper> mapper;
    mapper->SetInputConnection(source->GetOutputPort());
    auto result = vtkSmartPointer<vtkActor>::New();
    result->SetMapper(mapper);
    result->GetProperty()->SetColor(r, g, b);
    return result;
}

/// A tilted plane as the static part, and a cone that pierces it and turns from image to image.
class QUORStaticSnapshotTest : public OffscreenScene {
protected:
    void SetUp() override {
        OffscreenScene::SetUp();
        if (IsSkipped()) {
            return;
        }
        vtkNew<vtkConeSource> cone;
        _plane = actor(_source, 0.2, 0.6, 0.3);
        _other = actor(_source, 0.6, 0.1, 0.6);
        _cone = actor(cone, 0.9, 0.3, 0.1);
        _plane->SetScale(3.0);
        _plane->RotateX(-50.0);
        _part->AddPart(_plane);
        _root->AddPart(_part);
        _statics->AddViewProp(_root);
        _statics->SetBackground(0.1, 0.2, 0.3);
        renderer->AddActor(_cone);
        renderer->ResetCamera();
        _statics->SetActiveCamera(renderer->GetActiveCamera());
        window->RemoveRenderer(renderer);
        window->AddRenderer(_statics);
        window->AddRenderer(renderer);
        window->SetSize(160, 120);
        countEvents(_statics, vtkCommand::EndEvent, _drawn);
        _snapshot = std::make_unique<QUORStaticSnapshot>(_statics, renderer);
    }

    void TearDown() override {
        _snapshot.reset();
        OffscreenScene::TearDown();
    }

    std::vector<unsigned char> image(double turn) {
        _cone->SetOrientation(0.0, turn, 20.0);
        _snapshot->prepare();
        window->Render();
        vtkNew<vtkUnsignedCharArray> data;
        const int* size = window->GetSize();
        window->GetPixelData(0, 0, size[0] - 1, size[1] - 1, 0, data, 0);
        return {data->GetPointer(0), data->GetPointer(0) + data->GetNumberOfValues()};
    }

    vtkNew<vtkRenderer> _statics;
    vtkNew<vtkPropAssembly> _root;
    vtkNew<vtkAssembly> _part;
    vtkNew<vtkPlaneSource> _source;
    vtkSmartPointer<vtkActor> _plane;
    vtkSmartPointer<vtkActor> _other;
    vtkSmartPointer<vtkActor> _cone;
    int _drawn = 0;
    std::unique_ptr<QUORStaticSnapshot> _snapshot;
};

} // namespace

TEST_F(QUORStaticSnapshotTest, CopiedImagesEqualDrawnOnes) {
    const std::vector<double> turns{0.0, 35.0, 80.0, 35.0};
    std::vector<std::vector<unsigned char>> drawn;
    for (const double turn : turns) {
        _snapshot->drop();
        drawn.push_back(image(turn));
    }
    EXPECT_NE(drawn[0], drawn[1]);
    const int before = _drawn;
    for (std::size_t i = 0; i < turns.size(); ++i) {
        EXPECT_EQ(image(turns[i]), drawn[i]) << i;
        EXPECT_TRUE(_snapshot->isValid());
    }
    EXPECT_EQ(_drawn, before) << "the static part was drawn again";
}

TEST_F(QUORStaticSnapshotTest, WhatChangesThePixelsIsDrawnAnew) {
    struct Row {
        const char* name;
        std::function<void()> change;
    };
    vtkCamera* camera = renderer->GetActiveCamera();
    vtkNew<vtkLight> light;
    _statics->AddLight(light);
    const std::vector<Row> rows{
        {"geometry", [&] { _source->SetXResolution(3), _source->Update(); }},
        {"place", [&] { _part->SetPosition(0.0, 0.0, 0.1); }},
        {"scale", [&] { _part->SetScale(1.0, 1.0, 2.0); }},
        {"colour", [&] { _plane->GetProperty()->SetColor(0.9, 0.9, 0.1); }},
        {"camera", [&] { camera->Azimuth(5.0); }},
        {"near plane", [&] { camera->SetClippingRange(camera->GetClippingRange()[0] * 1.5, 50.0); }},
        {"light", [&] { light->SetDiffuseColor(0.2, 0.2, 0.9); }},
        {"background", [&] { _statics->SetBackground(0.4, 0.2, 0.3); }},
        {"size", [&] { window->SetSize(200, 150); }},
        {"other part", [&] { _part->RemovePart(_plane), _part->AddPart(_other); }},
        {"nothing left", [&] { _other->VisibilityOff(); }},
    };
    image(10.0);
    for (const Row& row : rows) {
        image(10.0);
        const int before = _drawn;
        row.change();
        const auto fresh = image(20.0);
        EXPECT_EQ(_drawn, before + 1) << row.name;
        EXPECT_EQ(image(20.0), fresh) << row.name;
    }
}

TEST_F(QUORStaticSnapshotTest, PartsThatTakeTurnsAreDrawnOnceEach) {
    const auto show = [this](const vtkSmartPointer<vtkActor>& next) {
        _part->RemovePart(_plane);
        _part->RemovePart(_other);
        _part->AddPart(next);
        return image(15.0);
    };
    show(_plane); // brings the pipeline up to date, which is a change
    const auto plane = show(_plane);
    const auto other = show(_other);
    EXPECT_NE(plane, other);
    const int before = _drawn;
    for (int turn = 0; turn < 3; ++turn) {
        EXPECT_EQ(show(_plane), plane);
        EXPECT_EQ(show(_other), other);
    }
    EXPECT_EQ(_drawn, before);

    // More views than are kept: the first one is drawn anew, as it was.
    vtkCamera* camera = renderer->GetActiveCamera();
    const auto first = image(15.0);
    for (int view = 0; view < 20; ++view) {
        camera->Azimuth(7.0);
        image(15.0);
    }
    camera->Azimuth(-140.0);
    const int drawn = _drawn;
    EXPECT_EQ(image(15.0), first);
    EXPECT_GT(_drawn, drawn);
}
