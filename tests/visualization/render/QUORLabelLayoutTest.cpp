// SPDX-License-Identifier: MIT
#include "QUORLabelLayout.h"

#include "OffscreenScene.h"
#include "QUOR2DLayerActor.h"
#include "QUORFlatLabelActor.h"
#include "QUORLandmarkLabel.h"

#include <vtkPlaneSource.h>
#include <vtkPolyDataMapper.h>
#include <vtkPropAssembly.h>
#include <vtkProperty.h>
#include <vtkTextActor.h>
#include <vtkTextProperty.h>

#include <utility>

namespace {

class QUORLabelLayoutTest : public OffscreenScene {
protected:
    void SetUp() override {
        OffscreenScene::SetUp();
        if (window) {
            lookDown(100000.0);
        }
    }

    QUORLandmarkLabel* addName(const char* text, int size, double x, double y) {
        vtkNew<QUORLandmarkLabel> label;
        label->SetText(QString::fromLatin1(text));
        label->SetSize(size);
        label->SetColor(1.0, 0.0, 0.0);
        label->SetWorldPosition(x, y, 0.0);
        _names->AddPart(label);
        return label;
    }

    void arrange(const std::vector<QUORPictureArea>& taken, bool keepsApart) {
        layout.collect({{43, 0, _names.Get()}, {42, 0, _flat.Get()}});
        layout.arrange(renderer, taken, keepsApart);
    }

    QUORLabelLayout layout;
    vtkNew<vtkPropAssembly> _names;
    vtkNew<QUOR2DLayerActor> _flat;
};

TEST_F(QUORLabelLayoutTest, TheMoreImportantNameStays) {
    auto* village = addName("Village", 6, 0.0, 0.0);
    auto* town = addName("Town", 11, 4000.0, 2000.0);
    auto* far = addName("Far", 6, -60000.0, 40000.0);
    auto* covered = addName("Covered", 11, 80000.0, -80000.0);
    const QUORPictureArea corner{0.8, 0.0, 1.0, 0.2};
    arrange({corner}, true);
    EXPECT_TRUE(village->IsLeftOut());
    EXPECT_FALSE(town->IsLeftOut());
    EXPECT_FALSE(far->IsLeftOut());
    EXPECT_TRUE(covered->IsLeftOut());

    arrange({corner}, false);
    EXPECT_FALSE(village->IsLeftOut());
    EXPECT_TRUE(covered->IsLeftOut()) << "nothing shines through the legend";
    arrange({}, false);
    EXPECT_FALSE(covered->IsLeftOut());

    renderer->AddViewProp(_names);
    covered->SetLeftOut(true);
    window->Render();
    EXPECT_EQ(pixel(360, 40)[0], 0);
    covered->SetLeftOut(false);
    window->Render();
    EXPECT_EQ(pixel(360, 40)[0], 255);
}

TEST_F(QUORLabelLayoutTest, NamesGoWithThePictureAndMarkersStaySmall) {
    auto* town = addName("Town", 11, 0.0, 0.0);
    renderer->AddViewProp(_names);
    std::vector<int> fonts;
    for (const int height : {480, 1200, 2160}) {
        window->SetSize(height * 4 / 3, height);
        lookDown(5000.0);
        window->Render();
        fonts.push_back(town->GetTextActor()->GetTextProperty()->GetFontSize());
        const double pixels = town->GetMarker()->GetScale()[0] * 1000.0 / 5000.0 * height / 2;
        EXPECT_LE(pixels, fonts.back()) << height;
    }
    EXPECT_GE(fonts[0], 10);
    EXPECT_EQ(fonts[1], 18);
    EXPECT_EQ(fonts[2], 33);
}

TEST_F(QUORLabelLayoutTest, FlatLabelsKeepClearAndTheirHaloGoesWithTheCamera) {
    vtkNew<vtkPlaneSource> letters;
    vtkNew<vtkPolyDataMapper> mapper;
    mapper->SetInputConnection(letters->GetOutputPort());
    vtkNew<QUORFlatLabelActor> halo;
    halo->SetMapper(mapper);
    halo->SetScale(15000.0, 15000.0, 1.0);
    halo->GetProperty()->SetLineWidth(3.0F);
    halo->SetHaloWidth(3.0);
    _flat->AddPart(halo);
    vtkNew<QUORFlatLabelActor> text;
    text->SetMapper(mapper);
    text->SetScale(15000.0, 15000.0, 1.0);
    _flat->AddPart(text);
    renderer->AddViewProp(_flat);
    mapper->Update();
    const QUORPictureArea middle{0.45, 0.45, 0.55, 0.55};
    arrange({middle}, false);
    EXPECT_TRUE(halo->GetVisibility());
    arrange({middle}, true);
    EXPECT_FALSE(halo->GetVisibility());
    EXPECT_FALSE(text->GetVisibility());
    arrange({{0.0, 0.0, 0.2, 0.2}}, true);
    EXPECT_TRUE(halo->GetVisibility());
    EXPECT_TRUE(text->GetVisibility());
    window->Render();
    EXPECT_FLOAT_EQ(halo->GetProperty()->GetLineWidth(), 3.0F);

    // 30 pixels long and some 7 high from there.
    renderer->GetActiveCamera()->SetPosition(0.0, -200000.0, 50000.0);
    renderer->GetActiveCamera()->SetViewUp(0.0, 0.0, 1.0);
    window->Render();
    EXPECT_LT(halo->GetProperty()->GetLineWidth(), 2.5F);
    EXPECT_GT(halo->GetProperty()->GetLineWidth(), 1.0F);
}

} // namespace
