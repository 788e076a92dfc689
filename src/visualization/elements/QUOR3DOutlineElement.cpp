// SPDX-License-Identifier: MIT
#include "QUOR3DOutlineElement.h"

#include "QUORLineActor.h"

#include <vtkActor.h>
#include <vtkAssembly.h>
#include <vtkCellArray.h>
#include <vtkCubeSource.h>
#include <vtkNew.h>
#include <vtkPoints.h>

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
    : QUORStyledElement(group, key, TEXTS, "OUTLINE3D") {}

vtkSmartPointer<vtkProp> QUOR3DOutlineElement::makeProp() const {
    auto assembly = vtkSmartPointer<vtkAssembly>::New();
    assembly->AddPart(makeBox());
    assembly->AddPart(makeTicks());
    return assembly;
}

vtkSmartPointer<vtkActor> QUOR3DOutlineElement::makeBox() const {
    vtkNew<vtkCubeSource> cube;
    cube->SetBounds(-0.5, 0.5, -0.5, 0.5, 0.0, 1.0);
    return quorMakeLineActor(cube, style().color("line/color"), style().number("line/width"));
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
    return quorMakeLineActor(points, lines, style().color("tick/color"), style().number("tick/width"));
}
