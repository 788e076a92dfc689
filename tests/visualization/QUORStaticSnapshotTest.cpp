// SPDX-License-Identifier: MIT
#include "QUORStaticSnapshot.h"

#include "QUORRenderWindowFactory.h"

#include <vtkActor.h>
#include <vtkCallbackCommand.h>
#include <vtkCamera.h>
#include <vtkConeSource.h>
#include <vtkNew.h>
#include <vtkOpenGLRenderWindow.h>
#include <vtkPlaneSource.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>
#include <vtkRenderer.h>
#include <vtkUnsignedCharArray.h>

#include <gtest/gtest.h>

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
class QUORStaticSnapshotTest : public testing::Test {
protected:
    void SetUp() override {
        QString error;
        _window = QUORRenderWindowFactory::create(error);
        if (_window == nullptr) {
            GTEST_SKIP() << "no OpenGL here: " << qPrintable(error);
        }
        vtkNew<vtkPlaneSource> plane;
        vtkNew<vtkConeSource> cone;
        _plane = actor(plane, 0.2, 0.6, 0.3);
        _cone = actor(cone, 0.9, 0.3, 0.1);
        _plane->SetScale(3.0);
        _plane->RotateX(-50.0);
        _statics->AddActor(_plane);
        _statics->SetBackground(0.1, 0.2, 0.3);
        _rest->AddActor(_cone);
        _rest->ResetCamera();
        _statics->SetActiveCamera(_rest->GetActiveCamera());
        _window->AddRenderer(_statics);
        _window->AddRenderer(_rest);
        _window->SetSize(160, 120);
        _counter->SetClientData(&_drawn);
        _counter->SetCallback(
            [](vtkObject*, unsigned long, void* count, void*) { ++*static_cast<int*>(count); });
        _statics->AddObserver(vtkCommand::EndEvent, _counter);
        _snapshot = std::make_unique<QUORStaticSnapshot>(_statics, _rest);
    }

    void TearDown() override { _snapshot.reset(); }

    std::vector<unsigned char> image(const char* key, double turn) {
        _cone->SetOrientation(0.0, turn, 20.0);
        _snapshot->prepare(key);
        _window->Render();
        vtkNew<vtkUnsignedCharArray> data;
        const int* size = _window->GetSize();
        _window->GetPixelData(0, 0, size[0] - 1, size[1] - 1, 0, data, 0);
        return {data->GetPointer(0), data->GetPointer(0) + data->GetNumberOfValues()};
    }

    vtkSmartPointer<vtkOpenGLRenderWindow> _window;
    vtkNew<vtkRenderer> _statics;
    vtkNew<vtkRenderer> _rest;
    vtkSmartPointer<vtkActor> _plane;
    vtkSmartPointer<vtkActor> _cone;
    vtkNew<vtkCallbackCommand> _counter;
    int _drawn = 0;
    std::unique_ptr<QUORStaticSnapshot> _snapshot;
};

} // namespace

TEST_F(QUORStaticSnapshotTest, CopiedImagesEqualDrawnOnes) {
    const std::vector<double> turns{0.0, 35.0, 80.0, 35.0};
    std::vector<std::vector<unsigned char>> drawn;
    for (const double turn : turns) {
        drawn.push_back(image("", turn));
    }
    EXPECT_NE(drawn[0], drawn[1]);
    for (std::size_t i = 0; i < turns.size(); ++i) {
        EXPECT_EQ(image("plane", turns[i]), drawn[i]) << i;
        EXPECT_TRUE(_snapshot->isValid());
    }
    const int before = _drawn;
    _plane->VisibilityOff();
    EXPECT_EQ(image("plane", 80.0), drawn[2]) << "the static part was drawn again";
    EXPECT_NE(image("other", 80.0), drawn[2]) << "another key must draw anew";
    EXPECT_EQ(_drawn, before + 1);
}

TEST_F(QUORStaticSnapshotTest, AnotherSizeDropsTheCopy) {
    image("plane", 0.0);
    for (const auto& [width, height] : {std::pair{80, 60}, std::pair{200, 150}, std::pair{160, 120}}) {
        _window->SetSize(width, height);
        const auto fresh = image("", 10.0);
        image("plane", 0.0);
        EXPECT_EQ(image("plane", 10.0), fresh) << width;
    }
    _snapshot->drop();
    EXPECT_FALSE(_snapshot->isValid());
    EXPECT_EQ(image("plane", 10.0), image("plane", 10.0));
}
