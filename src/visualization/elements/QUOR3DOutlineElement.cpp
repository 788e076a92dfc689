// SPDX-License-Identifier: MIT
#include "QUOR3DOutlineElement.h"

#include "QUORAssert.h"
#include "QUORLineActor.h"

#include <vtkActor.h>
#include <vtkAssembly.h>
#include <vtkCellArray.h>
#include <vtkCubeSource.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkPolyDataMapper.h>
#include <vtkProperty.h>

#include <cmath>
#include <vector>

namespace {

constexpr QUORElementTexts TEXTS{"QUOR3DOutlineElement", "Creating new  visualization.", false, false};

constexpr double TICK_LENGTH = 0.015;
/// More cannot be told apart in an image.
constexpr double MAXIMUM_TICKS = 1000.0;

/// Heights of the ticks within the unit box.
std::vector<double> tickLevels(const QUORLayerParameters3dOutline& record) {
    const double altitude = record.getSiteAltitude();
    const double height = record.getDataHeight();
    const double interval = record.getTickInterval();
    const double top = altitude + height;
    std::vector<double> levels;
    if (!(height > 0.0 && interval > 0.0 && height / interval <= MAXIMUM_TICKS && std::isfinite(top))) {
        return levels;
    }
    for (double tick = std::max(0.0, std::ceil(altitude / interval)); tick * interval <= top; ++tick) {
        levels.push_back((tick * interval - altitude) / height);
    }
    return levels;
}

/// A small L at the vertical edge that stands at the corner (x, y).
void addTick(vtkPoints* points, vtkCellArray* lines, double x, double y, double z) {
    const vtkIdType corner = points->InsertNextPoint(x, y, z);
    const vtkIdType alongX = points->InsertNextPoint(x - std::copysign(TICK_LENGTH, x), y, z);
    const vtkIdType alongY = points->InsertNextPoint(x, y - std::copysign(TICK_LENGTH, y), z);
    lines->InsertNextCell({corner, alongX});
    lines->InsertNextCell({corner, alongY});
}

} // namespace

QUOR3DOutlineElement::QUOR3DOutlineElement(QUORVisualGroup* group, int key)
    : QUORTypedVisualElement(group, key, TEXTS), _style("OUTLINE3D") {}

void QUOR3DOutlineElement::invalidate() {
    const QUORLogScope scope("QUOR3DOutlineElement::invalidate");
    _params.reset();
    _prop = nullptr;
}

void QUOR3DOutlineElement::loadStyle(bool night) {
    const QUORLogScope scope("QUOR3DOutlineElement::loadStyle");
    _style.load(night);
}

void QUOR3DOutlineElement::rebuild(const QUORAbortFlag& /*abort*/) {
    createVTK();
}

void QUOR3DOutlineElement::createVTK() {
    const QUORLogScope scope("QUOR3DOutlineElement::createVTK");
    QUOR_ASSERT(_params);
    loadStyle(false);
    auto assembly = vtkSmartPointer<vtkAssembly>::New();
    assembly->AddPart(makeBox());
    assembly->AddPart(makeTicks());
    _prop = assembly;
}

vtkSmartPointer<vtkActor> QUOR3DOutlineElement::makeBox() const {
    vtkNew<vtkCubeSource> cube;
    cube->SetBounds(-0.5, 0.5, -0.5, 0.5, 0.0, 1.0);
    vtkNew<vtkPolyDataMapper> mapper;
    mapper->SetInputConnection(cube->GetOutputPort());
    auto box = vtkSmartPointer<vtkActor>::New();
    box->SetMapper(mapper);
    const QUORStyleGroup::Color& color = _style.color("line/color");
    vtkProperty* property = box->GetProperty();
    property->SetColor(color[0], color[1], color[2]);
    property->SetLineWidth(static_cast<float>(_style.number("line/width")));
    property->SetOpacity(1.0);
    property->SetRepresentationToWireframe();
    property->LightingOff();
    return box;
}

vtkSmartPointer<vtkActor> QUOR3DOutlineElement::makeTicks() const {
    vtkNew<vtkPoints> points;
    points->SetDataTypeToDouble();
    vtkNew<vtkCellArray> lines;
    for (const double z : tickLevels(*_params)) {
        for (const double x : {-0.5, 0.5}) {
            for (const double y : {-0.5, 0.5}) {
                addTick(points, lines, x, y, z);
            }
        }
    }
    return quorMakeLineActor(points, lines, _style.color("tick/color"), _style.number("tick/width"));
}
