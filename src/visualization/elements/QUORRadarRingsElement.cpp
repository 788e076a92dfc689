// SPDX-License-Identifier: MIT
#include "QUORRadarRingsElement.h"

#include "QUOR2DLayerActor.h"
#include "QUORFlatLabels.h"
#include "QUORLineActor.h"
#include "QUORUnits.h"

#include <vtkActor.h>
#include <vtkCellArray.h>
#include <vtkNew.h>
#include <vtkPoints.h>

#include <array>
#include <cmath>
#include <numbers>

namespace {

constexpr QUORElementTexts TEXTS{"QUORRadarRingsElement", "Creating new  visualization.", true, true};

constexpr std::array<double, 4> RING_FRACTIONS{1.0, 0.75, 0.5, 0.25};
constexpr int RING_POINTS = 64;
constexpr int SPOKES = 12;
/// A label of size 10000 is one fortieth of the outer radius.
constexpr double LABEL_SIZE_DIVISOR = 400000.0;
constexpr double MAXIMUM_RADIUS = 2.0e7;

vtkIdType insertAt(vtkPoints* points, double radius, double angle) {
    return points->InsertNextPoint(radius * std::cos(angle), radius * std::sin(angle), 0.0);
}

void addRing(vtkPoints* points, vtkCellArray* lines, double radius) {
    const vtkIdType first = points->GetNumberOfPoints();
    for (int k = 0; k < RING_POINTS; ++k) {
        insertAt(points, radius, k * 2.0 * std::numbers::pi / RING_POINTS);
    }
    for (int k = 0; k < RING_POINTS; ++k) {
        lines->InsertNextCell({first + k, first + (k + 1) % RING_POINTS});
    }
}

void addSpokes(vtkPoints* points, vtkCellArray* lines, double radius) {
    for (int k = 0; k < SPOKES; ++k) {
        const double angle = k * 2.0 * std::numbers::pi / SPOKES;
        const vtkIdType outer = insertAt(points, radius, angle);
        lines->InsertNextCell({outer, insertAt(points, radius * RING_FRACTIONS.back(), angle)});
    }
}

} // namespace

QUORRadarRingsElement::QUORRadarRingsElement(QUORVisualGroup* group, int key)
    : QUORStyledElement(group, key, TEXTS, "RADARRINGS") {}

vtkSmartPointer<vtkProp> QUORRadarRingsElement::makeProp() const {
    const double unit = _params->isMetricUnits() ? 1.0 : QUORUnits::KILOMETRES_PER_NAUTICAL_MILE;
    const double outer = unit * _params->getRange();
    if (!(outer > 0.0 && outer <= MAXIMUM_RADIUS)) {
        return {};
    }

    vtkNew<vtkPoints> points;
    points->SetDataTypeToDouble();
    vtkNew<vtkCellArray> lines;
    for (const double fraction : RING_FRACTIONS) {
        addRing(points, lines, outer * fraction);
    }
    addSpokes(points, lines, outer);

    auto layer = vtkSmartPointer<QUOR2DLayerActor>::New();
    layer->AddPart(
        quorMakeLineActor(points, lines, style().color("line/color"), style().number("line/width")));
    addLabels(*layer, unit);
    return layer;
}

void QUORRadarRingsElement::addLabels(QUOR2DLayerActor& layer, double unit) const {
    const double range = _params->getRange();
    const double scale = style().number("label/size") / LABEL_SIZE_DIVISOR * unit * range;
    const QString suffix = QLatin1String(_params->isMetricUnits() ? "km" : "NM");
    QUORFlatLabels labels(layer, style(), scale);
    for (const double fraction : RING_FRACTIONS) {
        const double radius = fraction * range;
        labels.setText(QString::number(static_cast<int>(radius / 1000.0)) + suffix);
        const auto [width, height] = labels.measure();
        const double y = 0.3 * height * scale;
        labels.addAt(unit * radius, y);
        labels.addAt(-unit * radius - 1.1 * width * scale, y);
    }
}
